# A reader that goes away is an I/O failure, and the files being written aside go too.
{ seq 1 100000 | sed 's/$/,A,,[],xxxxxxxxxxxxxxxxxxxx/' |
    cvt2 parse -m Order -f toy --framing line --json --rejects bad; echo "exit $?" >&2; } | head -n 1
ls -A
