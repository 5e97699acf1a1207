# A signal that is ignored when the command starts stays ignored, as under nohup.
mkfifo in
(trap '' HUP; exec cvt2 parse -m Order -f toy --framing line -o out in) &
pid=$!
exec 3>in
printf '1,A,,[],x\n' >&3
for _ in $(seq 100); do
  [ "$(find . -name '.out.*' | wc -l)" = 1 ] && break
  sleep 0.05
done
kill -HUP $pid
printf '2,B,,[],y\n' >&3
exec 3>&-
wait $pid 2>/dev/null
echo "exit $?"
grep Id out
