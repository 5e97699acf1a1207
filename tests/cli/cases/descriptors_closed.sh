# A descriptor that is closed is not given to a file: nothing but messages comes into the output, and what cannot be
# read or written fails.
printf 'XYZ123' >bad
printf '1,A,,[],x' >good
run() { cvt2 parse -m Order -f toy "$@"; echo "exit $?" >>exits; }
run -k -o out bad good 2>&-
cat out
run --rejects rejects good 1>&-
run -o never <&-
run -o out good <&- >&- 2>&-
cat exits
cat out
ls
