# The file of the rejects is neither an input nor the output: nothing of them is lost.
printf '1,A,,[],x\n' >orders
cvt2 parse -m Order -f toy --framing line --rejects ./orders orders; echo "exit $?"
cvt2 parse -m Order -f toy --framing line --rejects ./out -o out orders; echo "exit $?"
ln -s orders link
cvt2 parse -m Order -f toy --framing line --rejects link -o out orders; echo "exit $?"
cat orders; ls
