# A path that leads nowhere is told as such: a loop of links, a name that is too long.
printf '1,A,,[],x' >good
ln -s loop loop
long=$(printf 'x%.0s' $(seq 300))
run() { cvt2 parse -m Order -f toy "$@" 2>&1 | sed "s/$long/LONG/g"; echo "exit ${PIPESTATUS[0]}"; }
for path in loop/file "$long"; do
  run "$path"
  run -c "$path" good
  run -o "$path" good
  run --rejects "$path" good
  run --rejects rejects "$path"
done
ls -A
