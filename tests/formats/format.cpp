#include "format.h"

namespace formats {

std::string Format::chain(const Items &items, const std::string &id) const {
  std::string s;
  for (const Item &item : items) {
    if (item.kind == Item::Kind::Count && !countsLoops()) continue;
    s += node(item, s.empty() ? id : "ptNextNode");
  }
  return s;
}

std::string Format::node(const Item &item, const std::string &id) const {
  using Kind = Item::Kind;
  const bool isLoop = item.kind == Kind::Loop;
  const bool isField = item.members.empty();
  const std::string record = isField ? fieldRecord(item) : groupRecord(item);
  std::string s = "<Message __ID=\"" + id + "\" psNodeName=\"" + item.name + "\">";
  if (!record.empty()) s += "<FormatAttr __ID=\"ptFormAttr\">" + record + "</FormatAttr>";
  s += std::string("<StructAttr __ID=\"ptStructAttr\"") + (isLoop ? " nType=\"1\">" : ">");
  if (isLoop) {
    const std::string count =
        item.count.empty() || !countsLoops() ? "" : " psLoopNumName=\"" + item.count + "\"";
    s += "<LoopType __ID=\"pInfo\"" + count + ">" + loopRecord(item) + "</LoopType>";
  }
  return s + chain(item.members, "ptChildNode") + "</StructAttr></Message>\n";
}

std::string Format::definition(const std::string &message, const Items &items,
                               const std::string &charset) const {
  const std::string root = name();
  Items placed = items;
  for (size_t i = 0; i < placed.size(); ++i) placed[i].place = static_cast<int>(i) + 1;
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + root + "><Msg psMsgName=\"" + message + "\">" +
         messageRecord(charset) + "\n" + chain(placed, "ptHead") + "</Msg></" + root + ">\n";
}

}  // namespace formats
