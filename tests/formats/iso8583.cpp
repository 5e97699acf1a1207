// The plug-in iso8583 under the suite: the order's constant is the message type, its other outermost nodes
// are data elements, and what is in them are subfields.
#include "plugins.h"

namespace formats {

namespace {

class Iso8583 : public Format {
 public:
  std::string name() const override { return "iso8583"; }
  std::vector<std::string> charsets() const override { return {"ISO-8859-1", "windows-1252", "IBM037"}; }

  bool countsLoops() const override { return false; }

 protected:
  std::string messageRecord(const std::string &charset) const override {
    return "<IsoMsg __ID=\"pInfo\"" + (charset.empty() ? "" : " psCharset=\"" + charset + "\"") + "/>";
  }
  std::string fieldRecord(const Item &field) const override {
    if (field.kind == Item::Kind::Constant) {
      return std::string("<IsoField __ID=\"pInfo\" psKind=\"mti\" psConst=\"") + kConstant + "\"/>";
    }
    const std::string type = field.kind == Item::Kind::Text ? "ans" : "n";
    return "<IsoField __ID=\"pInfo\" psType=\"" + type + "\" psPrefix=\"LL\" nMaxLen=\"" +
           std::to_string(field.most) + "\"" + number(field) + "/>";
  }
  std::string groupRecord(const Item &group) const override {
    return "<IsoGroup __ID=\"pInfo\" psPrefix=\"LLLL\"" + number(group) + "/>";
  }
  std::string loopRecord(const Item &loop) const override {
    return "<IsoLoop __ID=\"ptInfo\" nMax=\"" + std::to_string(loop.most) + "\"/>";
  }

 private:
  // The first node is the message type; data element 1 is the second bitmap.
  static std::string number(const Item &item) {
    return item.place == 0 ? "" : " nNumber=\"" + std::to_string(item.place) + "\"";
  }
};

}  // namespace

const Format &iso8583() {
  static const Iso8583 format;
  return format;
}

}  // namespace formats
