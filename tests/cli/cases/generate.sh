# JSON lines into messages: numbers, null, blank lines, a name by -m, base64.
cat >in <<'JSON'
{"message":"Order","fields":{"Note":"last","Id":7,"Customer":{"City":null}}}

{"fields":{"Items":[{"Code":"A","Colours":["red",5]},{}],"Note":{"base64":"/wAB"}}}
JSON
cvt2 generate -m Order -t toy in | od -An -c
