# Several inputs, one of them standard input; the rate at the end.
printf '1,A,,[],\n2,B,,[],\n' >first
printf '3,C,,[],\n4,D,,[],' | cvt2 convert -m Order -f toy -t invoice --framing line first -
