# Every framing, in and out.
order='7,Acme,Rome,[A,1,[];],n'
printf '%s\n%s\n' "$order" "8,B,,[],m" >lines
cvt2 parse -m Order -f toy --framing line --json lines >json 2>/dev/null
for kind in len2 len4 lenascii4; do
  cvt2 generate -t toy --out-framing $kind json -o framed 2>/dev/null
  od -An -c framed
  cvt2 parse -m Order -f toy --framing $kind --json framed 2>/dev/null | cmp - json && echo "$kind same"
done
printf '%s%s' "$order" "$order" | cvt2 parse -m Order -f toy --framing rec=${#order} --json 2>/dev/null | wc -l
printf '%s\r\n' "$order" | cvt2 parse -m Order -f toy --framing line | tail -n 1
head -n 1 json | cvt2 generate -t toy --out-framing rec=${#order}
