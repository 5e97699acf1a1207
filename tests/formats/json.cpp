// The plug-in json under the suite.
#include "plugins.h"

namespace formats {

namespace {

class JsonFormat : public Format {
 public:
  std::string name() const override { return "json"; }

 protected:
  std::string messageRecord(const std::string &) const override {
    return "<JsonMsg __ID=\"pInfo\" nWhole=\"0\"/>";
  }
  std::string fieldRecord(const Item &field) const override {
    if (field.kind == Item::Kind::Constant) {
      return std::string("<JsonField __ID=\"pInfo\" psConst=\"") + kConstant + "\"/>";
    }
    const std::string type = field.kind == Item::Kind::Text ? "text" : "number";
    return "<JsonField __ID=\"pInfo\" psType=\"" + type + "\" nMaxLen=\"" + std::to_string(field.most) +
           "\"/>";
  }
  std::string groupRecord(const Item &) const override { return ""; }
  std::string loopRecord(const Item &loop) const override {
    return "<JsonLoop __ID=\"ptInfo\" nMax=\"" + std::to_string(loop.most) + "\"/>";
  }
};

}  // namespace

const Format &json() {
  static const JsonFormat format;
  return format;
}

}  // namespace formats
