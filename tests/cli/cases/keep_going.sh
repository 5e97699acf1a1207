# --keep-going goes on, --rejects keeps the bytes framed as they were, the exit code says that some were refused.
printf '1,A,,[],x\r\n2,B\r\n3,C,,[],z\n4' >orders
cvt2 convert -m Order -f toy -t invoice --framing line --keep-going --rejects bad -o good orders
echo "exit $?"
cat good
od -An -c bad
ls -A
