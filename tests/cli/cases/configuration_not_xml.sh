# A configuration file that is no XML: the line names that file and the line in it.
run() { printf '1,A,,[],x' | cvt2 parse -m Order -f toy; echo "exit $?"; }
for file in Def/Order.xml Cvt/OrderToInvoice.xml All/root.xml; do
  cp "$CVT2_CONFIG/$file" kept
  sed -i '0,/="/s//=<"/' "$CVT2_CONFIG/$file"
  run
  : >"$CVT2_CONFIG/$file"
  run
  cp kept "$CVT2_CONFIG/$file"
done
