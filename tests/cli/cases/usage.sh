# A wrong command line: exit code 2 and what to write instead.
run() { cvt2 "$@" </dev/null; echo "exit $?"; }
run
run frobnicate
run parse
run parse -f
run parse -f toy -m Order --framing rec=0
run parse -f toy -m Order --framing words
run convert -f toy -t invoice --out-framing words
run convert -f toy -t invoice --max-output 3G
run parse -f tox -m Order
run parse -f invoice -m Order
run convert -f toy -t named -m Order
run parse -f toy -m Ordr
run parse -f toy -m Order --bogus
