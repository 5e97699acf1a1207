// w1_xml.cpp: the fixed-length order as XML, written by hand.
#include "order_record.h"

namespace {

using namespace bench;

// One order: the names take less than 400 bytes and 80 an item, a text grows at most six times.
constexpr size_t most(size_t size) {
  return 512 + 6 * size + 3 * size;
}

char *putItems(char *to, const OrderRecord &order) {
  for (size_t i = 0; i < order.count; ++i) {
    to = putXml(put(to, "<item><sku>"), order.sku(i));
    to = putXml(put(to, "</sku><desc>"), order.goods(i));
    to = putNumber(put(to, "</desc><qty>"), order.quantity(i), 0);
    to = putNumber(put(to, "</qty><price>"), order.price(i), 2);
    to = put(to, "</price></item>");
  }
  return to;
}

char *putOrder(char *to, const OrderRecord &order) {
  to = put(to, R"(<?xml version="1.0" encoding="UTF-8"?><order><msgType>)");
  to = putXml(to, order.type());
  to = putXml(put(to, "</msgType><orderId>"), order.id());
  to = put(put(to, "</orderId><date>"), order.date());
  to = put(put(to, "</date><time>"), order.time());
  to = putNumber(put(to, "</time><custNo>"), order.customer(), 0);
  to = putXml(put(to, "</custNo><custName>"), order.name());
  to = putXml(put(to, "</custName><currency>"), order.currency());
  to = putNumber(put(to, "</currency><amount>"), order.amount(), 2);
  to = putXml(put(to, "</amount><address>"), order.address());
  to = putXml(put(to, "</address><remark>"), order.remark());
  to = putItems(put(to, "</remark><items>"), order);
  return put(to, "</items></order>\n");
}

void convert(std::string_view input, Output &output) {
  eachLine(input, [&](std::string_view line) {
    output.stop(putOrder(output.room(most(line.size())), OrderRecord(line)));
  });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 3, convert); });
}
