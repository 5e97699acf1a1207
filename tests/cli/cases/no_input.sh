# Inputs that cannot be read are found before any work is done.
printf '1,A,,[],x' >order
mkdir directory
run() { cvt2 parse -m Order -f toy -o out "$@"; echo "exit $?"; }
run order missing
run order directory
ls -A
