#include "compile_field.h"

#include <cstring>

#include "field.h"
#include "kit/fault.h"
#include "kit/plain_digits.h"

namespace cvt::fix {

using kit::Charset;
using kit::Misconfigured;
using kit::NumberFill;
using kit::NumberForm;
using kit::NumberSign;
using kit::quoted;

namespace {

constexpr int kMaxNumberBytes = 64;
constexpr size_t kMaxLength = 100000000;
constexpr size_t kMaxCharacter = 4;            // bytes of a set for one of UTF-8, at most
constexpr size_t kKeptPads = kMaxNumberBytes;  // of a value in its field; a number is kept whole
constexpr char kNoCharacter = '\xFF';          // stands in no text of UTF-8

NumberForm formOf(FieldType type) {
  switch (type) {
    case FieldType::Zoned:
      return NumberForm::ZonedEbcdic;
    case FieldType::ZonedAscii:
      return NumberForm::ZonedAscii;
    case FieldType::ZonedOverpunch:
      return NumberForm::ZonedTranslated;
    case FieldType::Packed:
      return NumberForm::Packed;
    case FieldType::Bcd:
      return NumberForm::Bcd;
    case FieldType::Binary:
      return NumberForm::BinaryBig;
    case FieldType::BinaryLittle:
      return NumberForm::BinaryLittle;
    case FieldType::Text:
    case FieldType::Raw:
    case FieldType::End:
    case FieldType::Number:
      break;
  }
  return NumberForm::Text;
}

class FieldCompiler {
 public:
  FieldCompiler(const char *name, const FixField &record, const FixMsg &settings, const std::string &path)
      : m_record(record), m_settings(settings), m_path(path) {
    m_plan.name = name;
  }

  FieldPlan run() {
    m_plan.type = static_cast<FieldType>(int{m_record.nType});
    const char *charset = m_record.psCharset;
    m_plan.charset = findCharset(charset == nullptr ? m_settings.psCharset : charset, m_path, &m_record);
    m_plan.controlKept = or_(m_record.nControl, m_settings.nControl) == kControlKept;
    m_plan.cut = m_record.nOverflow == kOverflowCut;
    checkApplicable();
    compileLengthBy();
    compileLength();
    compilePad();
    if (m_plan.isNumber()) compileNumber();
    compileBlank();
    compileValues();
    if (m_record.nPosition != 0) compilePosition();
    m_plan.checked = !m_plan.blankAllowed || !m_plan.allowed.empty();
    return std::move(m_plan);
  }

 private:
  [[noreturn]] void refuse(const std::string &expected, const std::string &found,
                           const std::string &advice) const {
    throw Misconfigured(m_path, &m_record, expected, found, advice);
  }

  static int or_(int own, int general) { return own == kNotGiven ? general : own; }

  bool is(FieldType type) const { return m_plan.type == type; }

  // Settings that mean nothing for the type.
  void checkApplicable() const {
    if (!m_plan.isNumber() && (m_record.nDecimals != 0 || m_record.nSign != 0)) {
      refuse("nDecimals and psSign on numbers only", "them on a text", "Write psType, or remove them");
    }
    if (!is(FieldType::Number) && (m_record.nPoint != 0 || m_record.nPlus != 0)) {
      refuse("nPoint and psPlus with psType number", "them with another type", "Remove them");
    }
    if (!is(FieldType::Text) && (m_record.nOverflow != kOverflowError || m_record.nControl != kNotGiven)) {
      refuse("psOverflow and psControl on texts only", "them on another type", "Remove them");
    }
    if (m_plan.isNumber() && !is(FieldType::Number) &&
        (m_record.nPad != kNotGiven || m_record.nAlign != kNotGiven)) {
      refuse("psPad and psAlign on texts and psType number", "them on digits that fill the field",
             "Remove them");
    }
    if (!is(FieldType::Text) && !is(FieldType::Number) && m_record.psCharset != nullptr) {
      refuse("psCharset on texts and psType number", "it on bytes that are no characters", "Remove it");
    }
    if (is(FieldType::Number) && !m_plan.charset->containsAscii() && !m_plan.charset->oneByte()) {
      refuse("a character set with one byte a digit", m_plan.charset->name(), "Write another psCharset");
    }
  }

  // A field of no fixed length has the bytes that it has: none of them is a pad.
  void compileLengthBy() {
    const bool field = m_record.psLenField != nullptr;
    const bool mark = m_record.nEnd != kNotGiven;
    const bool rest = m_record.nRest != 0;
    m_plan.optional = m_record.nOptional != 0;
    if (m_plan.optional && m_record.nTag != 0) refuse("a tag that is always there", "nOptional on it", "");
    if (!field && !mark && !rest) return;
    if (int{field} + int{mark} + int{rest} != 1) {
      refuse("one of psLenField, psEnd and nRest", "several", "Remove the others");
    }
    if (m_plan.isNumber()) {
      refuse("a fixed length on a number", "psLenField, psEnd or nRest", "Write nLen, or psType text or raw");
    }
    if (m_record.psConst != nullptr || m_record.nTag != 0) {
      refuse("psConst and nTag on fields of a fixed length", "them with psLenField, psEnd or nRest",
             "Remove them");
    }
    if (m_record.nPad != kNotGiven || m_record.nAlign != kNotGiven || m_record.nUnit == kChars) {
      refuse("psPad, psAlign and psUnit chars on fields of a fixed length",
             "them with psLenField, psEnd or nRest", "Remove them");
    }
    m_plan.lengthBy = field ? Length::Field : mark ? Length::Mark : Length::Rest;
    if (mark) m_plan.mark = padByte(m_record.nEnd, m_plan.charset, m_path, &m_record);
  }

  void compileLength() {
    m_plan.length = static_cast<size_t>(int{m_record.nLen});
    if (m_plan.lengthBy != Length::Fixed) {
      if (m_plan.length == 0) m_plan.length = kMaxLength;
      return;
    }
    const bool text = is(FieldType::Text);
    m_plan.chars = text && or_(m_record.nUnit, m_settings.nUnit) == kChars && !m_plan.charset->oneByte();
    if (m_plan.length != 0) return;
    const char *constant = m_record.psConst;
    if (constant == nullptr || *constant == '\0' || m_plan.isNumber()) {
      refuse("nLen", "no length", "Write nLen=\"...\"");
    }
    const std::string value = constant;
    m_plan.chars = false;
    std::string bytes(m_plan.charset->decodedRoom(value.size()) * 4, '\0');
    const bool raw = is(FieldType::Raw);
    const kit::Converted made =
        m_plan.charset->encode(value.data(), value.size(), bytes.data(), bytes.size());
    if (!raw && made.damage != kit::Damage::None) {
      refuse(std::string(kit::damageText(made.damage)) + " of " + m_plan.charset->name(),
             "psConst " + quoted(value), "");
    }
    m_plan.length = raw ? value.size() : made.written;
  }

  void compilePad() {
    if (m_plan.lengthBy != Length::Fixed) {
      m_plan.trims = false;
      return;
    }
    m_plan.right = m_record.nAlign == kNotGiven ? is(FieldType::Number) : m_record.nAlign == kRight;
    m_plan.trims = !is(FieldType::Raw) || m_record.nPad != kNotGiven;
    if (is(FieldType::Number) || (m_plan.isNumber() && is(FieldType::Zoned))) {
      m_plan.blank = is(FieldType::Zoned) ? '\x40' : padByte(' ', m_plan.charset, m_path, &m_record);
    }
    if (m_plan.isNumber()) return;
    const int pad = or_(m_record.nPad, ' ');
    m_plan.rawPad = pad >= kit::kRawByte || is(FieldType::Raw);
    m_plan.pad =
        is(FieldType::Raw) ? static_cast<char>(pad) : padByte(pad, m_plan.charset, m_path, &m_record);
    m_plan.padText = m_plan.rawPad && is(FieldType::Text) ? characterOf(m_plan.pad) : static_cast<char>(pad);
  }

  // What the byte is inside a decoded text, where it is one of ASCII.
  char characterOf(char byte) const {
    char text[16];
    const kit::Converted made = m_plan.charset->decode(&byte, 1, text, sizeof text);
    return made.damage == kit::Damage::None && made.written == 1 ? text[0] : kNoCharacter;
  }

  void compileNumber() {
    kit::NumberSpec &spec = m_plan.number;
    spec.form = formOf(m_plan.type);
    spec.sign = static_cast<NumberSign>(int{m_record.nSign});
    spec.decimals = m_record.nDecimals;
    spec.point = m_record.nPoint != 0;
    spec.plusBlank = m_record.nPlus != 0;
    spec.lenient = m_settings.nLenient != 0;
    if (is(FieldType::Number)) compileFill(spec);
    if (is(FieldType::Bcd) && spec.sign == NumberSign::Trailing) {
      refuse("psSign none or leading", "trailing on bcd", "Use packed, or remove psSign");
    }
    if (spec.sign == NumberSign::Leading &&
        (is(FieldType::Packed) || is(FieldType::Binary) || is(FieldType::BinaryLittle))) {
      refuse("psSign none or trailing", "leading", "Write psSign=\"trailing\" for a signed number");
    }
    if (m_plan.length > kMaxNumberBytes || kit::digitsOf(spec, m_plan.length) == 0) {
      refuse("nLen, nDecimals and psSign that the type can have (at most 31 digits, binary at most 8 bytes)",
             "nLen " + std::to_string(m_plan.length) + " with " + std::to_string(spec.decimals) + " decimals",
             "");
    }
    m_plan.plainDigits = is(FieldType::Number) && kit::isPlainDigits(spec) && m_plan.charset->containsAscii();
  }

  void compileFill(kit::NumberSpec &spec) const {
    const int pad = or_(m_record.nPad, '0');
    if (pad != '0' && pad != ' ') refuse("psPad 0 or a blank on a number", "another pad", "");
    if (pad == '0' && !m_plan.right) {
      refuse("psAlign right for a number filled with zeros", "left",
             "Write psPad=\" \" for a left-aligned number");
    }
    spec.fill = pad == '0'     ? NumberFill::Zeros
                : m_plan.right ? NumberFill::BlankLeft
                               : NumberFill::BlankRight;
  }

  void compileBlank() {
    const bool byDefault =
        !m_plan.isNumber() && m_record.psDefault == nullptr && m_record.nPosition == 0 && !listLacksBlank();
    m_plan.blankAllowed = m_record.nBlank == kNotGiven ? byDefault : m_record.nBlank == kBlankAllowed;
    if (is(FieldType::Raw) && !m_plan.trims && m_plan.lengthBy == Length::Fixed) m_plan.blankAllowed = false;
    if (!m_plan.blankAllowed || !m_plan.isNumber()) return;
    if (!is(FieldType::Number) && !is(FieldType::Zoned)) {
      refuse("psBlank refused", "allowed on a type whose blanks are digits",
             "Only number and zoned can tell blanks from a number");
    }
  }

  bool listLacksBlank() const {
    if (m_record.psValues == nullptr) return false;
    const std::string list = "|" + std::string(m_record.psValues) + "|";
    return list.find("||") == std::string::npos;
  }

  void compileValues() {
    const bool constant = m_record.psConst != nullptr;
    const bool fallback = m_record.psDefault != nullptr;
    const bool list = m_record.psValues != nullptr;
    if (constant && (fallback || list)) {
      refuse("psConst alone", "psConst with psDefault or psValues", "Remove one of them");
    }
    if (m_record.nTag != 0 && !constant && !list) {
      refuse("psConst or psValues on a tag", "neither", "Write the tag's value");
    }
    if (list) compileList();
    if (fallback) compileDefault();
    if (constant) compileConstant();
    if (m_record.nTag != 0) compileTag();
  }

  void compileTag() {
    if (m_plan.chars) refuse("a tag whose length is counted in bytes", "one counted in characters", "");
    if (m_plan.constant) addTag(m_plan.bytes, m_plan.value);
    for (const std::string &one : m_plan.allowed) addTag(fieldBytes(m_plan, one, m_path, &m_record), one);
  }

  void addTag(const FieldBytes &bytes, const std::string &value) {
    m_plan.tags.push_back(bytes);
    if (value.empty()) m_plan.blankTag = true;
  }

  void compileList() {
    for (const std::string &item : listOf(m_record.psValues)) {
      m_plan.allowed.push_back(item.empty() ? item : asRead(item));
    }
  }

  void compileDefault() {
    if (m_plan.blankAllowed) {
      refuse("psDefault or psBlank allowed", "both", "A blank field would not come back as it was");
    }
    m_plan.value = asRead(m_record.psDefault);
    m_plan.hasDefault = true;
    // A lenient message reads a blank field; it is written with its default.
    if (m_settings.nLenient != 0 && !m_plan.isNumber()) m_plan.blankAllowed = true;
  }

  void compileConstant() {
    const bool blank = *static_cast<const char *>(m_record.psConst) == '\0';
    if (blank && m_plan.isNumber())
      refuse("a number", "an empty psConst", "Write psType text for a blank field");
    if (blank) m_plan.blankAllowed = true;
    m_plan.bytes = fieldBytes(m_plan, m_record.psConst, m_path, &m_record);
    m_plan.value = asRead(m_record.psConst);
    m_plan.constant = true;
  }

  void compilePosition() {
    const bool own = !m_plan.constant && !m_plan.hasDefault && m_plan.allowed.empty() && !m_plan.cut &&
                     !m_plan.optional && m_plan.lengthBy == Length::Fixed && m_plan.number.decimals == 0;
    if (!own) {
      refuse("nPosition on a text or a whole number of fixed length, and nothing else", "it with another use",
             "Remove psConst, psValues, psDefault, psOverflow, nOptional, nDecimals, or nPosition");
    }
    m_plan.position = true;
  }

  std::string asRead(const std::string &value) const {
    return definedValue(m_plan, value, m_path, &m_record);
  }

  const FixField &m_record;
  const FixMsg &m_settings;
  const std::string &m_path;
  FieldPlan m_plan;
};

}  // namespace

const Charset *findCharset(const char *name, const std::string &path, const void *record) {
  const Charset *charset = Charset::find(name);
  if (charset != nullptr) return charset;
  throw Misconfigured(path, record, "a character set that iconv knows", "psCharset " + quoted(name),
                      "iconv -l lists them");
}

char padByte(int pad, const Charset *charset, const std::string &path, const void *record) {
  if (pad >= kit::kRawByte) return static_cast<char>(pad - kit::kRawByte);
  const char c = static_cast<char>(pad);
  char bytes[16];
  const kit::Converted made = charset->encode(&c, 1, bytes, sizeof bytes);
  if (made.damage == kit::Damage::None && made.written == 1) return bytes[0];
  throw Misconfigured(path, record, "a character set in which the pad is one byte", charset->name(),
                      "Write psPad as 0xNN");
}

FieldPlan compileField(const char *name, const FixField &record, const FixMsg &settings,
                       const std::string &path) {
  return FieldCompiler(name, record, settings, path).run();
}

std::vector<std::string> listOf(const char *text) {
  const std::string list = text;
  std::vector<std::string> items;
  for (size_t from = 0; from <= list.size();) {
    const size_t bar = std::min(list.find('|', from), list.size());
    items.push_back(list.substr(from, bar - from));
    from = bar + 1;
  }
  return items;
}

std::string definedValue(const FieldPlan &field, const std::string &value, const std::string &path,
                         const void *record) {
  fieldBytes(field, value, path, record);
  char number[kit::kCanonicalRoom];
  return std::string(valueAsRead(field, value, number));
}

FieldBytes fieldBytes(const FieldPlan &field, const std::string &value, const std::string &path,
                      const void *record) {
  const size_t room = value.size() * kMaxCharacter + kKeptPads;
  FieldPlan strict = field;
  strict.cut = false;
  strict.allowed.clear();
  if (field.trims) strict.length = std::min(field.length, room);
  std::string bytes(2 * room, '\0');
  kit::Output out(bytes.data(), 0, bytes.size());
  try {
    field.lengthBy == Length::Fixed ? writeField(strict, value, out) : writeVariable(strict, value, out);
  } catch (const kit::Fault &fault) {
    throw Misconfigured(path, record, "values that the field can have", quoted(value), fault.text());
  }
  bytes.resize(out.offset());
  const size_t pads = field.length - strict.length;
  return {std::move(bytes), field.right ? pads : 0, field.right ? 0 : pads, field.pad};
}

}  // namespace cvt::fix
