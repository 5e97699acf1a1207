# The tree: groups, loops in loops, a loop of plain values, empty fields left out.
printf '7,Acme,Rome,[A,1,[red;blue;];B,,[];],say "hi"\tnow' | cvt2 parse -m Order -f toy
