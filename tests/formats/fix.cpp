// The plug-in fix under the suite.
#include "plugins.h"

namespace formats {

namespace {

class Fix : public Format {
 public:
  std::string name() const override { return "fix"; }
  std::vector<std::string> charsets() const override {
    return {"UTF-8", "ISO-8859-1", "windows-1252", "GB18030", "IBM037"};
  }

 protected:
  std::string messageRecord(const std::string &charset) const override {
    return "<FixMsg __ID=\"pInfo\" psUnit=\"chars\"" +
           (charset.empty() ? "" : " psCharset=\"" + charset + "\"") + "/>";
  }
  std::string fieldRecord(const Item &field) const override {
    if (field.kind == Item::Kind::Constant) {
      return std::string("<FixField __ID=\"pInfo\" nLen=\"4\" psConst=\"") + kConstant + "\"/>";
    }
    const std::string type =
        field.kind == Item::Kind::Text || field.kind == Item::Kind::Loop ? "text" : "number";
    return "<FixField __ID=\"pInfo\" psType=\"" + type + "\" nLen=\"" + std::to_string(field.most) + "\"/>";
  }
  std::string groupRecord(const Item &) const override { return ""; }
  std::string loopRecord(const Item &loop) const override {
    return "<FixLoop __ID=\"ptInfo\" nMax=\"" + std::to_string(loop.most) + "\"/>";
  }
};

}  // namespace

const Format &fix() {
  static const Fix format;
  return format;
}

}  // namespace formats
