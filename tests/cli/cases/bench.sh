# The figures vary, the counts and the form do not: an order, and a real file of the examples.
examples=$(dirname "$0")/../../../examples
shape() {
  sed -E 's#[0-9.]+ (s|MB|MB/s|messages/s|in a second|ns)\b#N \1#g; /^(parse|convert|generate|release|whole|on the CPU)/s/ +[0-9.]+/ N/g'
}
printf '1,A,,[],x\n2,B,,[],y\n' >orders
cvt2 bench -m Order -f toy -t invoice --framing line --messages 500 orders - <orders | shape
cvt2 bench -c "$examples/nacha" -m NachaFile -f nacha -t pain --messages 20 "$examples"/nacha/data/iat-debit.ach | shape
ls
