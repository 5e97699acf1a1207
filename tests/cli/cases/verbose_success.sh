# -v tells of a single message too, -vv adds the library's trace, control characters shown.
printf '7,Acme,\007,[],x' | cvt2 parse -v -m Order -f toy
printf '7,Acme,\007,[],x' | cvt2 parse -vv -m Order -f toy 2>&1 | grep 'parse \[Order'
