# A signal ends the run as a failure does: nothing half-written stays.
mkfifo in
cvt2 parse -m Order -f toy --framing line -o out --rejects bad in &
pid=$!
exec 3>in
printf '1,A,,[],x\n' >&3
for _ in $(seq 100); do
  [ "$(find . -name '.out.*' | wc -l)" = 1 ] && break
  sleep 0.05
done
find . -name '.*.*' | wc -l
kill -TERM $pid
wait $pid 2>/dev/null
echo "exit $?"
ls -A
