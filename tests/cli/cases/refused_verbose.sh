# -v shows the trail behind the cause.
printf '2,B,,[A,1,[];C]' | cvt2 parse -v -m Order -f toy
