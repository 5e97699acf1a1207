# A configuration that does not load: the cause first, the trail with -v.
run() { printf '1,A,,[],x' | cvt2 parse -m Order -f toy "$@"; echo "exit $?"; }
sed -i 's/psName="Buyer"/psName="Byer"/' "$CVT2_CONFIG/Cvt/OrderToInvoice.xml"
run
run -v
