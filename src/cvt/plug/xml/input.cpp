#include "input.h"

#include <strings.h>

#include "kit/fault.h"
#include "space.h"

namespace cvt::xml {

namespace {

constexpr const char *kNative[] = {"UTF-8", "UTF-16", "ISO-8859-1", "US-ASCII"};

// No declaration is longer: a version, an encoding's name and "standalone".
constexpr size_t kLongestDeclaration = 512;

bool same(std::string_view a, std::string_view b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// A byte order mark, or the zero byte of UTF-16 next to "<": the parser needs no help.
bool tellsItself(std::string_view raw) {
  if (raw.starts_with("\xEF\xBB\xBF") || raw.starts_with("\xFE\xFF") || raw.starts_with("\xFF\xFE"))
    return true;
  return raw.size() >= 2 && (raw[0] == '\0' || raw[1] == '\0');
}

// Whether an XML declaration comes first. The name of an instruction may begin alike: <?xml-stylesheet ...?>
bool isDeclared(std::string_view raw) {
  static constexpr std::string_view kOpen = "<?xml";
  return raw.starts_with(kOpen) && raw.size() > kOpen.size() && blank(raw[kOpen.size()]);
}

// The encoding that the XML declaration names; empty when it names none, or none that can be made out, which
// the parser will complain about.
std::string_view declared(std::string_view raw, size_t from) {
  if (!isDeclared(raw)) return {};
  const std::string_view head = raw.substr(0, kLongestDeclaration);
  const size_t length = head.find("?>");
  if (length == std::string_view::npos && raw.size() > head.size()) {
    throw kit::Fault(from, "an XML declaration of at most " + std::to_string(kLongestDeclaration) + " bytes",
                     "a longer one",
                     "Shorten it: what it says of the encoding must be known before all else");
  }
  const std::string_view declaration = head.substr(0, length);
  size_t at = declaration.find("encoding");
  if (at == std::string_view::npos || !blank(declaration[at - 1])) return {};
  at += std::string_view("encoding").size();
  while (at < declaration.size() && (blank(declaration[at]) || declaration[at] == '=')) ++at;
  if (at >= declaration.size() || (declaration[at] != '"' && declaration[at] != '\'')) return {};
  const size_t end = declaration.find(declaration[at], at + 1);
  return end == std::string_view::npos ? std::string_view() : declaration.substr(at + 1, end - at - 1);
}

const char *nativeName(std::string_view name) {
  for (const char *known : kNative) {
    if (same(known, name)) return known;
  }
  return nullptr;
}

std::string knownNames(const Plan &plan) {
  std::string all;
  for (const char *known : kNative) all += (all.empty() ? "" : ", ") + std::string(known);
  for (const InputEncoding &known : plan.encodings) {
    if (nativeName(known.name) == nullptr) all += ", " + known.name;
  }
  return all;
}

Input convert(const InputEncoding &encoding, std::string_view raw, size_t from, std::string &room) {
  const size_t need = encoding.charset->decodedRoom(raw.size());
  if (room.size() < need) room.resize(need);
  const kit::Converted done = encoding.charset->decode(raw.data(), raw.size(), room.data(), room.size());
  if (done.damage != kit::Damage::None) {
    const std::string_view bad = raw.substr(done.read, 4);
    throw kit::Fault(from + done.read, kit::damageText(done.damage) + (" in " + encoding.name),
                     kit::quoted(bad.data(), bad.size()), "Declare the encoding that the document is in");
  }
  return {{room.data(), done.written}, "UTF-8", raw, encoding.charset};
}

}  // namespace

bool Input::mayBeUtf8() const {
  return encoding == nullptr || same(encoding, "UTF-8");
}

size_t Input::rawOffset(size_t offset) const {
  if (convertedFrom == nullptr) return offset;
  std::string part(offset, '\0');
  return convertedFrom->decode(raw.data(), raw.size(), part.data(), offset).read;
}

Input openInput(const Plan &plan, std::string_view raw, size_t from, std::string &room) {
  if (tellsItself(raw)) return {raw, nullptr, raw, nullptr};
  const std::string_view said = declared(raw, from);
  const std::string_view name = said.empty() ? std::string_view(plan.encoding) : said;
  const char *native = nativeName(name);
  if (native != nullptr) return {raw, said.empty() ? native : nullptr, raw, nullptr};
  for (const InputEncoding &known : plan.encodings) {
    if (same(known.name, name)) return convert(known, raw, from, room);
  }
  throw kit::Fault(from + static_cast<size_t>(name.data() - raw.data()),
                   "an encoding out of " + knownNames(plan), kit::quoted(name.data(), name.size()),
                   "Add it to psInputEncodings of XmlMsg");
}

}  // namespace cvt::xml
