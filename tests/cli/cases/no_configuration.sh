# Exit code 78: no configuration, none there, none in it, one that does not load.
run() { printf '1,A,,[],x' | cvt2 parse -m Order -f toy "$@"; echo "exit $?"; }
config=$CVT2_CONFIG
unset CVT2_CONFIG
run
run -c missing
mkdir -p empty/All
run -c empty
touch file
run -c file
run -c "$config/All/root.xml"
sed -i 's/psName="toy"/psName="tox"/' "$config/All/root.xml"
run -c "$config" 2>&1 | sed 's/tox.so: .*/tox.so: .../'
