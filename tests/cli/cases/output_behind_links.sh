# A link stays a link also where the file that it names is yet to be made, and the rejects know it.
run() { printf '1,A,,[],x' | cvt2 parse -m Order -f toy --json "$@"; echo "exit $?"; }
mkdir there
ln -s there/next link
ln -s ../made there/next
run -o link --rejects made
run -o link
ln -s nowhere/file astray
run -o astray
ln -s loop loop
run -o loop
stat -c '%N' ./* there/*
cat made
