# A wrong command line: exit code 2 and what to write instead.
run() { cvt2 bench -m Order -f toy "$@" </dev/null; echo "exit $?"; }
run
run -t tox
run -t invoice --seconds 0
run -t invoice --seconds soon
run -t invoice --messages 0
run -t invoice --framing words
run -t invoice -o out
