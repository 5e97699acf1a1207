# A pipeline that begins with a converter gets the filled message as its source.
echo '{"message":"Order","fields":{"Id":7,"Customer":{"Name":"Acme"},"Items":[{"Code":"A"}]}}' |
  cvt2 generate -t invoice
