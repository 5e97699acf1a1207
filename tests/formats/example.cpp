// The plug-in example under the suite.
#include "plugins.h"

namespace formats {

namespace {

class Example : public Format {
 public:
  std::string name() const override { return "example"; }

 protected:
  std::string messageRecord(const std::string &) const override { return "<ExampleMsg __ID=\"pInfo\"/>"; }
  std::string fieldRecord(const Item &field) const override {
    if (field.kind == Item::Kind::Constant) {
      return std::string("<ExampleField __ID=\"pInfo\" psConst=\"") + kConstant + "\"/>";
    }
    return "<ExampleField __ID=\"pInfo\" nMaxLen=\"" + std::to_string(field.most) + "\"/>";
  }
  std::string groupRecord(const Item &) const override { return ""; }
  std::string loopRecord(const Item &loop) const override {
    return "<ExampleLoop __ID=\"ptInfo\" nMax=\"" + std::to_string(loop.most) + "\"/>";
  }
};

}  // namespace

const Format &example() {
  static const Example format;
  return format;
}

}  // namespace formats
