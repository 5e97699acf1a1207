// w2_fixed_pugixml.cpp: the order's XML document as a fixed-length record: pugixml, and a mapping written by hand.
#include "w2_order.h"

namespace {

using namespace bench;

constexpr size_t kHead = 200, kItem = 40, kMaxItems = 99;

char *putDigits(char *to, std::string_view digits, size_t width) {
  needDigits(digits);
  needLength(digits, width, width);
  return put(to, digits);
}

char *putItem(char *to, const pugi::xml_node &item) {
  to = putPadded(to, childText(item, "sku"), 12);
  to = putPadded(to, childText(item, "desc"), 14);
  to = putFilled(to, childText(item, "qty"), 6);
  return putCents(to, childText(item, "price"), 8);
}

char *putCount(char *to, size_t count) {
  *to++ = static_cast<char>('0' + count / 10);
  *to++ = static_cast<char>('0' + count % 10);
  return to;
}

char *putOrder(char *to, const pugi::xml_node &order, const pugi::xml_node &items, size_t count) {
  to = putPadded(to, childText(order, "msgType"), 8);
  to = putPadded(to, childText(order, "orderId"), 16);
  to = putDigits(to, childText(order, "date"), 8);
  to = putDigits(to, childText(order, "time"), 6);
  to = putFilled(to, childText(order, "custNo"), 10);
  to = putPadded(to, childText(order, "custName"), 40);
  to = putPadded(to, childText(order, "currency"), 3);
  to = putCents(to, childText(order, "amount"), 15);
  to = putPadded(to, childText(order, "address"), 60);
  to = putPadded(to, childText(order, "remark"), 32);
  to = putCount(to, count);
  for (pugi::xml_node item = items.child("item"); item; item = item.next_sibling("item"))
    to = putItem(to, item);
  *to++ = '\n';
  return to;
}

void convert(std::string_view input, Output &output) {
  eachOrder(input, [&](const pugi::xml_node &order, size_t) {
    const pugi::xml_node items = order.child("items");
    const size_t count = countItems(items);
    if (count > kMaxItems) throw Failure("more items than two digits can say");
    output.stop(putOrder(output.room(kHead + kItem * count + 1), order, items, count));
  });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 2, convert); });
}
