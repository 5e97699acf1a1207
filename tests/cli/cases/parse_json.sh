# One line of JSON a message; bytes that are not UTF-8 in base64.
printf '7,Acme,Rome,[A,1,[red;blue;];],\xff\x00\x01\n8,J\xc3\xbcrg,"\\\x01,[],\xed\xa0\x80\n' |
  cvt2 parse -m Order -f toy --framing line --json
printf '7,Acme,Rome,[A,1,[red;blue;];],\xff\x00\x01' | cvt2 parse -m Order -f toy
