cvt2 --version | sed 's/[0-9.]*$/<VERSION>/'
cvt2 --help
for verb in convert parse generate bench; do
  echo "--- $verb"
  cvt2 $verb --help
done
