# A blank line between JSON lines is no message: it is skipped and not counted, but has its number.
printf '\n{"message":"Order","fields":{"Id":"1","Note":"x"}}\n \t\r\n{"message":"Order","fields":{"Idd":"2"}}\n\n' |
  cvt2 generate -t toy --keep-going -v 2>err
echo "exit $?"
grep -E 'record|messages' err
