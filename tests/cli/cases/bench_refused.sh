# Refused messages end the run, or are counted and left out; without any message there is nothing to measure.
printf '1,A,,[],x\n2,B\n3,C,,[],z\n' >orders
printf '2,B\n' >bad
: >empty
run() { cvt2 bench -m Order -f toy -t invoice --framing line --messages 10 "$@" >out; echo "exit $?"; head -n 1 out; }
run orders
run -k orders
run -k bad
run empty
run orders missing
