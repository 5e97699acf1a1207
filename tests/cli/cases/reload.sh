# A configuration that changes while the command runs is read again between two messages.
sed -i 's/<AllInfo>$/<AllInfo nReload="1">/' "$CVT2_CONFIG/All/root.xml"
touch -d '1 hour ago' "$CVT2_CONFIG/All/root.xml"
mkfifo in
cvt2 parse -vv -m Order -f toy --framing line in >out 2>trace &
exec 3>in
printf '1,A,,[],x\n' >&3
for _ in $(seq 200); do
  grep -q 'parse \[Order:toy\]' trace && break
  sleep 0.05
done
sed -i 's/psNodeName="Note"/psNodeName="Remark"/' "$CVT2_CONFIG/Def/Order.xml"
touch "$CVT2_CONFIG/All/root.xml"
printf '2,B,,[],y\n' >&3
exec 3>&-
wait $!
echo "exit $?"
cat out
