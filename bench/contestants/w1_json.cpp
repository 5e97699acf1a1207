// w1_json.cpp: the fixed-length order as JSON, written by hand.
#include "order_record.h"

namespace {

using namespace bench;

// One order: the names take less than 200 bytes and 36 an item, a text grows at most two times.
constexpr size_t most(size_t size) {
  return 512 + 4 * size;
}

char *putItems(char *to, const OrderRecord &order) {
  for (size_t i = 0; i < order.count; ++i) {
    if (i > 0) *to++ = ',';
    to = putJson(put(to, R"({"sku":)"), order.sku(i));
    to = putJson(put(to, R"(,"desc":)"), order.goods(i));
    to = putNumber(put(to, R"(,"qty":)"), order.quantity(i), 0);
    to = putNumber(put(to, R"(,"price":)"), order.price(i), 2);
    *to++ = '}';
  }
  return to;
}

char *putOrder(char *to, const OrderRecord &order) {
  to = putJson(put(to, R"({"msgType":)"), order.type());
  to = putJson(put(to, R"(,"orderId":)"), order.id());
  to = put(put(to, R"(,"date":")"), order.date());
  to = put(put(to, R"(","time":")"), order.time());
  to = putNumber(put(to, R"(","custNo":)"), order.customer(), 0);
  to = putJson(put(to, R"(,"custName":)"), order.name());
  to = putJson(put(to, R"(,"currency":)"), order.currency());
  to = putNumber(put(to, R"(,"amount":)"), order.amount(), 2);
  to = putJson(put(to, R"(,"address":)"), order.address());
  to = putJson(put(to, R"(,"remark":)"), order.remark());
  to = putItems(put(to, R"(,"items":[)"), order);
  return put(to, "]}\n");
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
