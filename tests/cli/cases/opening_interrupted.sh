# A signal also ends a run that waits for the other end of a named pipe.
mkfifo pipe
printf '1,A,,[],x' >good
# Whether the process sleeps and has a handler of SIGTERM: then it is opening the pipe.
waits() { grep -q '^State:.S' /proc/$1/status && grep -q '^SigCgt:.*[4-7c-f]...$' /proc/$1/status; }
ended() {
  cvt2 parse -m Order -f toy "$@" &
  pid=$!
  for _ in $(seq 200); do
    waits $pid && break
    sleep 0.05
  done
  waits $pid && echo waits
  kill -TERM $pid
  wait $pid 2>/dev/null
  echo "exit $?"
}
ended pipe
ended -o pipe good
