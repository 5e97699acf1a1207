#include "compile_field.h"

#include <algorithm>

#include "content.h"
#include "cvt_memory.h"
#include "cvt_string.h"
#include "frame.h"
#include "kit/fault.h"
#include "tlv.h"

namespace cvt::iso8583 {

using kit::Charset;
using kit::Misconfigured;

namespace {

[[noreturn]] void refuse(const Place &place, const std::string &expected, const std::string &found,
                         const std::string &advice = {}) {
  throw Misconfigured(place.path, place.record, expected, found, advice);
}

int orElse(int own, int general) {
  return own == kNotGiven ? general : own;
}

// A character that is one byte in the character set.
char byteOf(char c, const Charset &charset, const Place &place) {
  char bytes[16];
  const kit::Converted made = charset.encode(&c, 1, bytes, sizeof bytes);
  if (made.damage == kit::Damage::None && made.written == 1) return bytes[0];
  refuse(place, "a character set in which " + std::string(1, c) + " is one byte", charset.name());
}

// --- Lengths

struct LengthText {
  int nLen;
  int nPrefix;
  int nPrefixCoding;
  int nMinLen;
  int nMaxLen;
};

void compilePrefix(const LengthText &text, const Charset &charset, const Place &place, Frame &frame) {
  frame.digits = static_cast<size_t>(text.nPrefix);
  frame.coding = static_cast<PrefixCoding>(orElse(text.nPrefixCoding, place.settings.nPrefixCoding));
  frame.bytes = frame.digits == 0 ? 0 : prefixBytes(frame.coding, frame.digits);
  if (frame.digits != 0 && frame.coding == PrefixCoding::Text) frame.zero = byteOf('0', charset, place);
}

void compileLength(const LengthText &text, bool inTag, const Place &place, Frame &frame) {
  frame.fixed = text.nLen != 0;
  if (frame.fixed && (text.nMinLen != 0 || text.nMaxLen != 0)) {
    refuse(place, "nLen, or nMinLen and nMaxLen", "both");
  }
  if (inTag && frame.digits != 0)
    refuse(place, "no psPrefix beside psTag", "one", "The length is that of BER");
  if (!inTag && frame.fixed == (frame.digits != 0)) {
    refuse(place, "nLen or psPrefix", frame.fixed ? "both" : "none",
           "Write nLen=\"...\" for a fixed length, or psPrefix=\"LL\"");
  }
  frame.least = static_cast<size_t>(frame.fixed ? text.nLen : text.nMinLen);
  frame.most = static_cast<size_t>(frame.fixed ? text.nLen : text.nMaxLen);
  if (frame.most == 0) {
    frame.most = frame.digits == 0 ? size_t{kMaxLength} : prefixLimit(frame.coding, frame.digits);
  }
  if (frame.least > frame.most) refuse(place, "nMaxLen at least nMinLen", "less");
}

// --- Fields

class FieldCompiler {
 public:
  FieldCompiler(const IsoField &record, bool inTag, const Place &place, Element &element)
      : m_record(record),
        m_inTag(inTag),
        m_place(place),
        m_content(element.content),
        m_frame(element.frame) {}

  void run() {
    m_content.type = static_cast<Type>(int{m_record.nType});
    m_content.charset =
        findCharset(m_record.psCharset == nullptr ? m_place.settings.psCharset : m_record.psCharset, m_place);
    m_content.ascii = m_content.charset->containsAscii();
    compileCoding();
    compileFrame();
    compileFill();
    compileDate();
  }

 private:
  bool is(Type type) const { return m_content.type == type; }
  bool is(Coding coding) const { return m_content.coding == coding; }
  bool numeric() const { return is(Type::N) || is(Type::Z) || is(Type::Xn); }

  void compileCoding() {
    const int general = numeric()     ? int{m_place.settings.nNumeric}
                        : is(Type::B) ? 2 + m_place.settings.nBinary
                                      : 0;
    m_content.coding = static_cast<Coding>(orElse(m_record.nCoding, general));
    const bool bytes = is(Coding::Binary) || is(Coding::Hex);
    if (bytes != is(Type::B) || (is(Coding::Bcd) && !numeric())) {
      refuse(m_place, "psCoding text or bcd for n, z and x+n, binary or hex for b, text for others",
             std::string(kCodingWords[static_cast<size_t>(m_content.coding)]) + " with " +
                 kTypeWords[static_cast<size_t>(m_content.type)]);
    }
    m_content.bits = m_record.nShown == static_cast<int>(Shown::Bits);
    if (m_record.nShown != kNotGiven && !is(Type::B)) refuse(m_place, "psValue with type b only", "another");
    if (is(Coding::Hex)) byteOf('F', *m_content.charset, m_place);
    if (is(Coding::Bcd) && is(Type::Xn)) byteOf('C', *m_content.charset, m_place);
  }

  void compileFrame() {
    const LengthText text{m_record.nLen, m_record.nPrefix, m_record.nPrefixCoding, m_record.nMinLen,
                          m_record.nMaxLen};
    compilePrefix(text, *m_content.charset, m_place, m_frame);
    compileLength(text, m_inTag, m_place, m_frame);
    const int byDefault = static_cast<int>(is(Coding::Bcd) ? Counts::Digits : Counts::Bytes);
    m_frame.countsBytes = orElse(m_record.nCounts, byDefault) == static_cast<int>(Counts::Bytes);
    if (m_record.nCounts != kNotGiven && m_frame.digits == 0) {
      refuse(m_place, "psCounts with psPrefix", "no prefix", "Remove psCounts");
    }
    if (m_record.nMaxLen == 0 && m_frame.digits != 0) largestByPrefix();
    checkLargest();
  }

  // The longest content whose count the prefix can say.
  void largestByPrefix() {
    if (is(Coding::Bcd) && m_frame.countsBytes) m_frame.most *= 2;
    if (is(Coding::Hex) && !m_frame.countsBytes) m_frame.most /= 2;
  }

  // The prefix must be able to say the largest length.
  void checkLargest() const {
    if (m_frame.digits == 0) return;
    const size_t limit = prefixLimit(m_frame.coding, m_frame.digits);
    const size_t counted = is(Coding::Bcd) && m_frame.countsBytes    ? wireBytes(m_content, m_frame.most)
                           : is(Coding::Hex) && !m_frame.countsBytes ? 2 * m_frame.most
                                                                     : m_frame.most;
    if (counted <= limit) return;
    refuse(m_place, "nMaxLen that the prefix can say, at most " + std::to_string(limit),
           std::to_string(counted), "Write a longer psPrefix");
  }

  void compileFill() {
    const bool text = is(Coding::Text) && fillableText();
    if (!text && !is(Coding::Bcd) && (m_record.nPad != kNotGiven || m_record.nAlign != kNotGiven)) {
      refuse(m_place, "psPad and psAlign on texts and on bcd digits", "them on another type", "Remove them");
    }
    if (m_record.nTrim != 0 && (!m_frame.fixed || !(text || is(Type::N)))) {
      refuse(m_place, "nTrim on a text or number of fixed length", "it on another field", "Remove it");
    }
    m_content.trim = m_record.nTrim != 0;
    m_content.right =
        orElse(m_record.nAlign, static_cast<int>(numeric() && !is(Type::Z) ? Align::Right : Align::Left)) ==
        static_cast<int>(Align::Right);
    if (is(Coding::Bcd)) return compileHalfByte();
    if (is(Coding::Text)) compilePad();
  }

  bool fillableText() const { return !numeric() && !is(Type::B); }

  void compileHalfByte() {
    const int pad = orElse(m_record.nPad, '0');
    if (pad != '0' && pad != 'F') refuse(m_place, "psPad 0 or F beside bcd digits", "another");
    m_content.pad = static_cast<char>(pad);
  }

  void compilePad() {
    const int pad = is(Type::N) ? '0' : orElse(m_record.nPad, ' ');
    m_content.rawPad = pad >= kit::kRawByte;
    m_content.pad = static_cast<char>(pad);
    if (m_content.rawPad && !m_content.trim) {
      refuse(m_place, "nTrim with a psPad that is a byte", "none", "Write nTrim=\"1\"");
    }
    if (!m_frame.fixed) return;
    m_content.padByte =
        m_content.rawPad ? static_cast<char>(pad) : byteOf(m_content.pad, *m_content.charset, m_place);
  }

  void compileDate() {
    if (m_record.psDate == nullptr) return;
    Date date;
    const bool known = date.compile(static_cast<const char *>(m_record.psDate));
    const bool fits = m_frame.least <= date.length() && date.length() <= m_frame.most;
    if (!known || !fits || !is(Type::N) || m_content.trim) {
      refuse(m_place, "psDate of YYYY YY MM DD hh mm ss on digits of that length, without nTrim",
             "psDate " + kit::quoted(static_cast<const char *>(m_record.psDate)));
    }
    m_content.date = date;
  }

  const IsoField &m_record;
  const bool m_inTag;
  const Place &m_place;
  Content &m_content;
  Frame &m_frame;
};

// Memory of a message that is not there.
struct Scratch {
  const MemPort node = cvtMemNewNode();
  Scratch() = default;
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;
  ~Scratch() { cvtMemDelNode(node); }
};

// The value that is read where that text was written, in the memory of the configuration.
const char *readBack(const Element &element, std::string_view text) {
  std::string room(2 * element.frame.most + 4 * text.size() + 16, '\0');
  kit::Output out(room.data(), 0, room.size());
  const size_t length = writeContent(element, text, out);
  const std::string_view bytes(room.data(), out.offset());
  const Scratch scratch;
  kit::Store store(scratch.node);
  std::string value(readContent(element, bytes, countsOnlyBytes(element) ? kUnknown : length, 0, store));
  return cvtStrDup(value.data());
}

const char *compileText(const Element &element, const char *text, const Place &place) {
  if (text == nullptr) return nullptr;
  try {
    return readBack(element, text);
  } catch (const kit::Fault &fault) {
    refuse(place, "a value that the field can have", kit::quoted(std::string(text)), fault.text());
  }
}

}  // namespace

const Charset *findCharset(const char *name, const Place &place) {
  const Charset *charset = Charset::find(name);
  if (charset != nullptr) return charset;
  refuse(place, "a character set that iconv knows", "psCharset " + kit::quoted(name), "iconv -l lists them");
}

uint32_t compileTag(const char *text, const Place &place) {
  const uint32_t tag = tagOf(text);
  if (tag != 0) return tag;
  refuse(place, "a tag of BER-TLV, 1 to 4 bytes, in hexadecimal digits", "psTag " + kit::quoted(text),
         "The first byte of a longer one ends in 1F, the next ones but the last have the highest bit set");
}

void compileField(const IsoField &record, bool inTag, const Place &place, Element &element) {
  FieldCompiler(record, inTag, place, element).run();
}

void compileGroup(const IsoGroup &record, bool inTag, const Place &place, Element &element) {
  const Charset *charset = findCharset(place.settings.psCharset, place);
  const LengthText text{record.nLen, record.nPrefix, record.nPrefixCoding, 0, record.nMaxLen};
  element.content.type = Type::B;
  element.content.coding = Coding::Binary;
  element.content.charset = charset;
  compilePrefix(text, *charset, place, element.frame);
  compileLength(text, inTag, place, element.frame);
  if (element.frame.digits == 0) return;
  const size_t limit = prefixLimit(element.frame.coding, element.frame.digits);
  if (element.frame.most > limit) {
    refuse(place, "nMaxLen that the prefix can say, at most " + std::to_string(limit),
           std::to_string(element.frame.most), "Write a longer psPrefix");
  }
}

void checkSubfields(const Element &group, const Place &place) {
  size_t least = 0;
  size_t most = 0;
  for (const Element &member : group.inside->members) {
    least += member.frame.bytes + wireBytes(member.content, member.frame.least);
    most += member.frame.bytes + wireBytes(member.content, member.frame.most);
  }
  const Frame &frame = group.frame;
  const bool many = least > frame.most;
  if (!many && (!frame.fixed || most >= frame.most)) return;
  refuse(place,
         "subfields of " + std::string(frame.fixed ? "" : "at most ") + std::to_string(frame.most) + " bytes",
         many ? "at least " + std::to_string(least) : "at most " + std::to_string(most),
         frame.fixed ? "See nLen" : "See nMaxLen");
}

Plain plainOf(const Element &field) {
  const Content &content = field.content;
  const bool same = field.frame.fixed && content.coding == Coding::Text && content.ascii && !content.trim &&
                    field.constant == nullptr;
  if (!same) return Plain::No;
  return content.type == Type::N ? Plain::Digits : content.type == Type::Ans ? Plain::Printable : Plain::No;
}

void compileTexts(const Place &place, Element &element) {
  compileText(element, element.fallback, place);
  element.saidConstant = element.constant;
  element.constant = compileText(element, element.constant, place);
}

}  // namespace cvt::iso8583
