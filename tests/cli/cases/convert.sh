# Through a converter, from a file into a file.
printf '7,Acme,Rome,[A,1,[red;blue;];B,2,[];],note' >order
cvt2 convert -m Order -f toy -t invoice order -o invoice && cat invoice && echo && ls -A
