# Bytes of a frame that the message does not take are an error, with and without -m.
printf '7,Acme,Rome,[],note,more' | cvt2 parse -m Order -f toy
echo "exit $?"
printf 'Ping,7,8\nPing,7,8;\377 and so on, much longer than is shown here\n' | cvt2 convert -f named -t invoice --framing line -k
echo "exit $?"
printf 'Ping,7,8\nPing,7,8;\377 and so on, much longer than is shown here\n' | cvt2 parse -f named --framing line -k --json
echo "exit $?"
