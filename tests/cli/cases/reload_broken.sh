# When it does not load any more, the run ends with a configuration failure.
sed -i 's/<AllInfo>$/<AllInfo nReload="1">/' "$CVT2_CONFIG/All/root.xml"
touch -d '1 hour ago' "$CVT2_CONFIG/All/root.xml"
mkfifo in
cvt2 parse -vv -m Order -f toy --framing line --keep-going in -o out 2>trace &
exec 3>in
printf '1,A,,[],x\n' >&3
for _ in $(seq 200); do
  grep -q 'parse \[Order:toy\]' trace && break
  sleep 0.05
done
echo '<toy>' >"$CVT2_CONFIG/Def/Order.xml"
touch "$CVT2_CONFIG/All/root.xml"
printf '2,B,,[],y\n' >&3
exec 3>&-
wait $!
echo "exit $?"
grep 'does not load' trace
ls -A
