# A link in the path of the configuration leads where it leads elsewhere; one that is a root file keeps its place.
run() { printf '1,A,,[],x' | cvt2 parse -m Order -f toy --json "$@"; echo "exit $?"; }
mkdir -p deep/inner other/All
mv "$CVT2_CONFIG" deep/conf
unset CVT2_CONFIG
ln -s deep/inner link
run -c link/../conf
run -c link/../conf/
run -c link/../conf/All/root.xml
run -c deep/conf/All/../All//root.xml
ln -s deep/conf conf
run -c conf
run -c conf/All/..
(cd deep/conf && run -c . && cd All && run -c .. && run -c root.xml && run -c ./root.xml)
mv deep/conf/[!A]* other
mv deep/conf/All/root.xml shared.xml
ln -s ../../shared.xml other/All/root.xml
run -c other/All/root.xml
