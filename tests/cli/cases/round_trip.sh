# parse --json and generate give the same bytes.
printf '7,Acme,Rome,[A,1,[red;blue;];B,2,[];],\xff\xfe\n8,\xe2\x82\xac,,[],\n' >orders
cvt2 parse -m Order -f toy --framing line --json orders | cvt2 generate -t toy >again
cmp orders again && echo same
printf 'Ping,7,8' | cvt2 parse -f named --json | cvt2 generate -t toy --out-framing none
