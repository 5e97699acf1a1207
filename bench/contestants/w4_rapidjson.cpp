// w4_rapidjson.cpp: JSON lines with other names and a nested list: RapidJSON, and a mapping written by hand. Numbers
// keep their text.
#include <rapidjson/document.h>
#include <rapidjson/writer.h>

#include "issued.h"

namespace {

using namespace bench;
using rapidjson::Value;

constexpr unsigned kParse = rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseValidateEncodingFlag;

// What the writer writes to.
class Stream {
 public:
  using Ch = char;
  explicit Stream(char *at) : m_at(at) {}
  void Put(char c) { *m_at++ = c; }
  void Flush() {}
  char *at() const { return m_at; }

 private:
  char *m_at;
};

using Writer = rapidjson::Writer<Stream>;

const Value &member(const Value &object, const char *name) {
  const auto found = object.FindMember(name);
  if (found == object.MemberEnd()) throw Failure(std::string("no member ") + name);
  return found->value;
}

std::string_view text(const Value &object, const char *name) {
  const Value &value = member(object, name);
  if (!value.IsString()) throw Failure(std::string(name) + " is no text");
  return {value.GetString(), value.GetStringLength()};
}

void key(Writer &writer, std::string_view name) {
  writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void putText(Writer &writer, std::string_view name, std::string_view value) {
  key(writer, name);
  writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

// The parser gives numbers as their text, and texts too: the first character tells them apart.
void putNumberOf(Writer &writer, std::string_view name, std::string_view value) {
  if (value.empty() || (!isDigit(value.front()) && value.front() != '-')) throw Failure("expected a number");
  key(writer, name);
  writer.RawValue(value.data(), value.size(), rapidjson::kNumberType);
}

void putItem(Writer &writer, const Value &item, size_t number) {
  if (!item.IsObject()) throw Failure("an item is no object");
  writer.StartObject();
  key(writer, "no");
  writer.Uint64(number);
  putText(writer, "sku", text(item, "sku"));
  putNumberOf(writer, "qty", text(item, "qty"));
  putText(writer, "desc", text(item, "desc"));
  putNumberOf(writer, "price", text(item, "price"));
  writer.EndObject();
}

void putItems(Writer &writer, const Value &items) {
  if (!items.IsArray()) throw Failure("items is no array");
  key(writer, "lines");
  writer.StartArray();
  size_t number = 0;
  for (const Value &item : items.GetArray()) putItem(writer, item, ++number);
  writer.EndArray();
}

void putOrder(Writer &writer, const Value &order) {
  char issued[19];
  putIssued(issued, text(order, "date"), text(order, "time"));
  writer.StartObject();
  putText(writer, "id", text(order, "orderId"));
  putText(writer, "issued", {issued, sizeof issued});
  key(writer, "buyer");
  writer.StartObject();
  putNumberOf(writer, "no", text(order, "custNo"));
  putText(writer, "name", text(order, "custName"));
  writer.EndObject();
  putText(writer, "shipTo", text(order, "address"));
  if (const std::string_view remark = text(order, "remark"); !remark.empty()) putText(writer, "note", remark);
  key(writer, "total");
  writer.StartObject();
  putText(writer, "currency", text(order, "currency"));
  putNumberOf(writer, "amount", text(order, "amount"));
  writer.EndObject();
  putItems(writer, member(order, "items"));
  writer.EndObject();
}

void convert(std::string_view input, Output &output) {
  std::string memory(1 << 16, 0);
  eachLine(input, [&](std::string_view line) {
    rapidjson::MemoryPoolAllocator<> pool(memory.data(), memory.size());
    rapidjson::Document document(&pool);
    document.Parse<kParse>(line.data(), line.size());
    if (document.HasParseError() || !document.IsObject()) throw Failure("a line is no JSON object");
    Stream stream(output.room(512 + 6 * line.size()));
    Writer writer(stream);
    putOrder(writer, document);
    stream.Put('\n');
    output.stop(stream.at());
  });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 3, convert); });
}
