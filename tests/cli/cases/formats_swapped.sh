# A generate chain that does not convert, and a parse chain that names no message: the line says what to write.
printf '1,A,,[],x' | cvt2 convert -m Order -f toy -t toy; echo "exit $?"
printf '1,A,,[],x' | cvt2 parse -f toy; echo "exit $?"
