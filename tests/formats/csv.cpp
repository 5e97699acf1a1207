// The plug-in csv under the suite: an order is one line, its loops are counted lists of fields in it.
#include "plugins.h"

namespace formats {

namespace {

class Csv : public Format {
 public:
  std::string name() const override { return "csv"; }
  std::vector<std::string> charsets() const override {
    return {"UTF-8", "ISO-8859-1", "windows-1252", "GB18030"};
  }

 protected:
  std::string messageRecord(const std::string &charset) const override {
    const std::string ends = " psLastLineEnd=\"required\"";
    if (charset.empty()) return "<CsvMsg __ID=\"pInfo\" nWhole=\"0\"" + ends + "/>";
    return "<CsvMsg __ID=\"pInfo\" psCharset=\"" + charset + "\"" + ends + "/>";
  }
  std::string fieldRecord(const Item &field) const override {
    if (field.kind == Item::Kind::Constant) {
      return std::string("<CsvField __ID=\"pInfo\" psConst=\"") + kConstant + "\"/>";
    }
    return "<CsvField __ID=\"pInfo\" nMaxLen=\"" + std::to_string(field.most) + "\"/>";
  }
  std::string groupRecord(const Item &) const override { return ""; }
  std::string loopRecord(const Item &loop) const override {
    return "<CsvLoop __ID=\"ptInfo\" nMax=\"" + std::to_string(loop.most) + "\"/>";
  }
};

}  // namespace

const Format &csv() {
  static const Csv format;
  return format;
}

}  // namespace formats
