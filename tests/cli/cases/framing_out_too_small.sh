# A message that its output framing cannot carry.
line='{"message":"Order","fields":{"Id":"1234567890"}}'
echo "$line" | cvt2 generate -t toy --out-framing rec=5
echo "exit $?"
printf '{"message":"Order","fields":{"Id":"%0*d"}}' 10001 0 | cvt2 generate -t toy --out-framing lenascii4
echo "exit $?"
