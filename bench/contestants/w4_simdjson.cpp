// w4_simdjson.cpp: JSON lines with other names and a nested list: simdjson's on-demand interface, which checks what it
// is asked for, and a mapping written by hand. Numbers keep their text.
#include <simdjson.h>

#include "issued.h"

namespace {

using namespace bench;
using simdjson::ondemand::object;
using simdjson::ondemand::value;

// A member that must be there, of an object whose members come in any order.
value member(object &from, std::string_view name) {
  value found;
  if (from[name].get(found) != simdjson::SUCCESS) throw Failure("no member " + std::string(name));
  return found;
}

std::string_view text(object &from, std::string_view name) {
  std::string_view out;
  if (member(from, name).get_string().get(out) != simdjson::SUCCESS)
    throw Failure(std::string(name) + " is no text");
  return out;
}

// The number is parsed, so that what is none is refused, and its text is kept.
std::string_view number(object &from, std::string_view name) {
  value found = member(from, name);
  const std::string_view token = trimmed(found.raw_json_token());
  double parsed = 0;
  if (found.get_double().get(parsed) != simdjson::SUCCESS) throw Failure(std::string(name) + " is no number");
  return token;
}

// Texts may hold any character of Unicode: the parser has checked them.
char *putText(char *to, std::string_view name, std::string_view text) {
  return putJson(put(to, name), text, kJsonUtf8);
}

char *putItem(char *to, object item, size_t no) {
  const std::string_view sku = text(item, "sku"), goods = text(item, "desc");
  const std::string_view quantity = number(item, "qty"), price = number(item, "price");
  to = putInteger(put(to, R"({"no":)"), no);
  to = putText(to, R"(,"sku":)", sku);
  to = put(put(to, R"(,"qty":)"), quantity);
  to = putText(to, R"(,"desc":)", goods);
  to = put(put(to, R"(,"price":)"), price);
  *to++ = '}';
  return to;
}

char *putItems(char *to, object &order) {
  simdjson::ondemand::array items;
  if (member(order, "items").get_array().get(items) != simdjson::SUCCESS) throw Failure("items is no array");
  size_t no = 0;
  for (auto element : items) {
    object item;
    if (element.get_object().get(item) != simdjson::SUCCESS) throw Failure("an item is no object");
    if (no > 0) *to++ = ',';
    to = putItem(to, item, ++no);
  }
  return to;
}

char *putOrder(char *to, object &order) {
  const std::string_view id = text(order, "orderId"), date = text(order, "date"), time = text(order, "time");
  const std::string_view customer = number(order, "custNo"), name = text(order, "custName");
  const std::string_view currency = text(order, "currency"), amount = number(order, "amount");
  const std::string_view address = text(order, "address"), remark = text(order, "remark");
  to = putText(to, R"({"id":)", id);
  to = putIssued(put(to, R"(,"issued":")"), date, time);
  to = put(put(to, R"(","buyer":{"no":)"), customer);
  to = putText(to, R"(,"name":)", name);
  to = putText(to, R"(},"shipTo":)", address);
  if (!remark.empty()) to = putText(to, R"(,"note":)", remark);
  to = putText(to, R"(,"total":{"currency":)", currency);
  to = put(put(to, R"(,"amount":)"), amount);
  to = putItems(put(to, R"(},"lines":[)"), order);
  return put(to, "]}\n");
}

void convert(std::string_view input, Output &output) {
  simdjson::ondemand::parser parser;
  const char *const end = input.data() + input.size() + kPadding;
  eachLine(input, [&](std::string_view line) {
    const auto capacity = static_cast<size_t>(end - line.data());
    simdjson::ondemand::document document;
    object order;
    if (parser.iterate(line.data(), line.size(), capacity).get(document) != simdjson::SUCCESS ||
        document.get_object().get(order) != simdjson::SUCCESS) {
      throw Failure("a line is no JSON object");
    }
    output.stop(putOrder(output.room(512 + 3 * line.size()), order));
  });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 3, convert); });
}
