# A stream that is not framed as told ends the input; what was read before stands.
run() { cvt2 parse -m Order -f toy --json "$@"; echo "exit $?"; }
printf '0009' | run --framing lenascii4
printf '00091,A,,[],00' | run --framing lenascii4
printf '00091,A,,[],12a4rest' | run --framing lenascii4 --rejects bad
cat bad && echo
printf '\0' | run --framing len2
printf '\377\377\377\377x' | run --framing len4
printf '1,A,,[],2' | run --framing rec=8
