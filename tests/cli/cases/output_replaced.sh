# A finished run replaces the file, keeps its mode, and a link stays a link.
echo old >target && chmod 640 target && ln -s target link
printf '1,A,,[],x' | cvt2 parse -m Order -f toy --json -o link
stat -c '%N %a' link target
cat target
umask 027
printf '1,A,,[],x' | cvt2 parse -m Order -f toy --json -o fresh
stat -c '%n %a' fresh
