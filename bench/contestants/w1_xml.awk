# w1_xml.awk INPUT > OUTPUT: the fixed-length order as XML.
function trimmed(text) { sub(/ +$/, "", text); return text }
function escaped(text) {
  text = trimmed(text)
  if (text ~ /[&<>]/) { gsub(/&/, "\\&amp;", text); gsub(/</, "\\&lt;", text); gsub(/>/, "\\&gt;", text) }
  return text
}
function number(digits) { sub(/^0+/, "", digits); return digits == "" ? "0" : digits }
function decimal(digits) {
  return number(substr(digits, 1, length(digits) - 2)) "." substr(digits, length(digits) - 1)
}
{
  items = ""
  count = substr($0, 199, 2) + 0
  if (length($0) != 200 + 40 * count) { print "line " NR ": wrong length" > "/dev/stderr"; exit 1 }
  for (i = 0; i < count; ++i) {
    at = 201 + 40 * i
    items = items "<item><sku>" escaped(substr($0, at, 12)) "</sku><desc>" escaped(substr($0, at + 12, 14)) \
      "</desc><qty>" number(substr($0, at + 26, 6)) "</qty><price>" decimal(substr($0, at + 32, 8)) "</price></item>"
  }
  print "<?xml version=\"1.0\" encoding=\"UTF-8\"?><order><msgType>" escaped(substr($0, 1, 8)) \
    "</msgType><orderId>" escaped(substr($0, 9, 16)) "</orderId><date>" substr($0, 25, 8) "</date><time>" \
    substr($0, 33, 6) "</time><custNo>" number(substr($0, 39, 10)) "</custNo><custName>" \
    escaped(substr($0, 49, 40)) "</custName><currency>" trimmed(substr($0, 89, 3)) "</currency><amount>" \
    decimal(substr($0, 92, 15)) "</amount><address>" escaped(substr($0, 107, 60)) "</address><remark>" \
    escaped(substr($0, 167, 32)) "</remark><items>" items "</items></order>"
}
