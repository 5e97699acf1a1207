// w2_xml_pugixml.cpp: the order's XML document as another one: pugixml, and a mapping written by hand.
#include "issued.h"
#include "w2_order.h"

namespace {

using namespace bench;

char *putLine(char *to, const pugi::xml_node &item, size_t number) {
  to = putInteger(put(to, R"(<Line no=")"), number);
  to = putXml(put(to, R"(" sku=")"), childText(item, "sku"), kXmlAttribute);
  to = putXml(put(to, R"(" qty=")"), childText(item, "qty"), kXmlAttribute);
  to = putXml(put(to, R"("><Desc>)"), childText(item, "desc"));
  to = putXml(put(to, "</Desc><Price>"), childText(item, "price"));
  return put(to, "</Price></Line>");
}

char *putLines(char *to, const pugi::xml_node &items) {
  const size_t count = countItems(items);
  to = putInteger(put(to, R"(<Lines count=")"), count);
  if (count == 0) return put(to, R"("/>)");
  to = put(to, R"(">)");
  size_t number = 0;
  for (pugi::xml_node item = items.child("item"); item; item = item.next_sibling("item")) {
    to = putLine(to, item, ++number);
  }
  return put(to, "</Lines>");
}

char *putOrder(char *to, const pugi::xml_node &order) {
  to = put(to, R"(<?xml version="1.0" encoding="UTF-8"?><PurchaseOrder id=")");
  to = putXml(to, childText(order, "orderId"), kXmlAttribute);
  to = putIssued(put(to, R"(" issued=")"), childText(order, "date"), childText(order, "time"));
  to = putXml(put(to, R"("><Buyer no=")"), childText(order, "custNo"), kXmlAttribute);
  to = putXml(put(to, R"(">)"), childText(order, "custName"));
  to = putXml(put(to, "</Buyer><ShipTo>"), childText(order, "address"));
  to = put(to, "</ShipTo>");
  if (const std::string_view remark = childText(order, "remark"); !remark.empty()) {
    to = put(putXml(put(to, "<Note>"), remark), "</Note>");
  }
  to = putXml(put(to, R"(<Total currency=")"), childText(order, "currency"), kXmlAttribute);
  to = putXml(put(to, R"(">)"), childText(order, "amount"));
  to = putLines(put(to, "</Total>"), order.child("items"));
  return put(to, "</PurchaseOrder>\n");
}

void convert(std::string_view input, Output &output) {
  eachOrder(input, [&](const pugi::xml_node &order, size_t size) {
    output.stop(putOrder(output.room(512 + 6 * size), order));
  });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 3, convert); });
}
