# Empty fields, groups and loops, on demand.
printf '7,,,[],' | cvt2 parse -m Order -f toy
printf '7,,,[],' | cvt2 parse -m Order -f toy --all
printf '7,,,[A,,[;];],' | cvt2 parse -m Order -f toy --all --json
