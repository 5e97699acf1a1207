// The plug-in xml under the suite.
#include "plugins.h"

namespace formats {

namespace {

class Xml : public Format {
 public:
  std::string name() const override { return "xml"; }
  std::vector<std::string> charsets() const override {
    return {"UTF-8", "ISO-8859-1", "windows-1252", "GB18030"};
  }
  bool endsByItself() const override { return false; }

 protected:
  std::string messageRecord(const std::string &charset) const override {
    return "<XmlMsg __ID=\"pInfo\"" + (charset.empty() ? "" : " psEncoding=\"" + charset + "\"") + "/>";
  }
  std::string fieldRecord(const Item &field) const override {
    if (field.kind == Item::Kind::Constant) {
      return std::string("<XmlField __ID=\"pInfo\" psConst=\"") + kConstant + "\"/>";
    }
    return "<XmlField __ID=\"pInfo\" nMaxLen=\"" + std::to_string(field.most) + "\"/>";
  }
  std::string groupRecord(const Item &) const override { return ""; }
  std::string loopRecord(const Item &loop) const override {
    return "<XmlLoop __ID=\"ptInfo\" nMax=\"" + std::to_string(loop.most) + "\"/>";
  }
};

}  // namespace

const Format &xml() {
  static const Xml format;
  return format;
}

}  // namespace formats
