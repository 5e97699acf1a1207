# A failed run leaves the old output file as it was, and nothing else.
echo old >out
printf '1,A,,[],x\n2,B\n' | cvt2 parse -m Order -f toy --framing line -o out --rejects bad
echo "exit $?"
cat out bad
ls -A
printf '1,A,,[],x\n2,B\n' | cvt2 parse -m Order -f toy --framing line -o new
echo "exit $?"
ls -A
