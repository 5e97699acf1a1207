# An example runs again into the folder that its first run has filled.
demo=$(dirname "$0")/../../../examples/bai2/demo.sh
"$demo" --quiet out; echo "exit $?"
"$demo" --quiet out; echo "exit $?"
