# JSON that does not fit the definition: the line names the field and what to write.
cat >in <<'JSON'
{"message":"Order","fields":{"Idd":"7"}}
{"message":"Order","fields":{"Id":["7"]}}
{"message":"Order","fields":{"Id":1.5}}
{"message":"Order","fields":{"Id":true}}
{"message":"Order","fields":{"Id":{"base64":"?"}}}
{"message":"Order","fields":{"Id":{"hex":"00"}}}
{"message":"Order","fields":{"Customer":"Acme"}}
{"message":"Order","fields":{"Items":[{"Code":"A"},{"Qty":{"x":1}}]}}
{"message":"Order","fields":{"Items":{"Code":"A"}}}
{"message":"Order","fields":{"Items":[{"Colours":["red",["blue"]]}]}}
{"message":"Order","fields":{"Note":"a,b"}}
{"message":"Order","fields":[]}
{"message":"Order"}
{"message":7,"fields":{}}
{"message":"Order","fields":{},"more":1}
{"message":"Nothing","fields":{}}
{"fields":{}}
[]
{"message":"Order","fields":{"Id":"7","Id":"8"}}
{"message":"Order","fields":{"Items":[{"Code":"A"},{"Code":"B","Colours":[],"Code":"C"}]}}
{"message":"Order","fields":{"Id":{"base64":"","base64":""}}}
{"message":"Order","message":"Order","fields":{}}
{"message":"Order","fields":{"Id":"7"},"fields":{}}
{"message":"Order\u0000s","fields":{}}
{"message":
JSON
cvt2 generate -t toy --keep-going in
