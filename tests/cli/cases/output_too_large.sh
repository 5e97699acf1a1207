# A message beyond --max-output.
printf '1234567890,A,,[],x' | cvt2 convert -m Order -f toy -t invoice --max-output 10
