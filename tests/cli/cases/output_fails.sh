# Output that cannot be written is an I/O failure.
run() { printf '1,A,,[],x' | cvt2 parse -m Order -f toy "$@"; }
run -o no/such/directory
echo "exit $?"
run -o /dev/full
echo "exit $?"
run >/dev/full
echo "exit $?"
