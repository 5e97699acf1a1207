# -c goes before CVT2_CONFIG, whatever the verb.
for verb in 'convert -f toy -t invoice' 'parse -f toy' 'generate -t toy' 'bench -f toy -t invoice'; do
  cvt2 $verb -m Order -c missing; echo "exit $?"
done
config=$CVT2_CONFIG
export CVT2_CONFIG=absent
printf '1,A,,[],x' | cvt2 parse -m Order -f toy -c "$config"; echo "exit $?"
printf '1,A,,[],x' | cvt2 parse -m Order -f toy; echo "exit $?"
printf '1,A,,[],x' | cvt2 parse -m Order -f toy -c ''; echo "exit $?"
