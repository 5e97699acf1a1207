#include <charconv>

#include "content.h"
#include "frame.h"
#include "kit/fault.h"
#include "reader.h"
#include "walk.h"

namespace cvt::iso8583 {

using kit::Fault;
using kit::List;
using kit::quoted;

namespace {

class Parser {
 public:
  Parser(const Plan &plan, kit::ParseCall &call)
      : m_plan(plan),
        m_call(call),
        m_in(call.buffer, call.buffer + call.from, call.buffer + call.length),
        m_reader(call) {}

  void run() {
    List list(m_call.values, m_plan.slots);
    for (const Element &field : m_plan.opening) m_reader.field(field, m_in, list);
    m_bitmapOffset = m_in.offset();
    readBitmaps();
    for (size_t k = 0; k < m_count && !m_rest; ++k) word(k, list);
    putBitmaps(list);
    m_call.path.field(nullptr);
    checkMandatory();
    checkEnd();
    m_call.end = m_in.offset();
  }

 private:
  // --- Bitmaps

  void readBitmaps() {
    readBitmap(0);
    if (!m_plan.flagged) {
      for (int k = 1; k < m_plan.bitmaps; ++k) readBitmap(static_cast<size_t>(k));
      return;
    }
    if ((m_bits.words[0] & m_plan.flags(0)) != 0) readFurther(1);
    if (!m_plan.thirdInside && m_count == 2 && (m_bits.words[1] & m_plan.flags(1)) != 0) readFurther(2);
  }

  void readBitmap(size_t k) {
    m_call.path.field(nullptr);
    const size_t offset = m_in.offset();
    if (m_plan.bitmapCoding == BitmapCoding::Binary) {
      m_bits.words[k] = readBinary(m_in.take(8).data());
    } else {
      const std::string_view digits = m_in.take(16);
      const int wrong = readHex(digits.data(), {m_plan.hexZero, m_plan.hexA}, m_bits.words[k]);
      if (wrong >= 0) {
        throw Fault(offset + static_cast<size_t>(wrong), "a bitmap of 16 hexadecimal digits",
                    quoted(digits.data(), digits.size()), "See psBitmap");
      }
    }
    m_count = k + 1;
  }

  // One that says nothing would not come back, unless a field remembers that it was there.
  void readFurther(size_t k) {
    const size_t offset = m_in.offset();
    readBitmap(k);
    if (m_bits.words[k] != 0 || m_plan.shown[k] || m_plan.shown[k - 1]) return;
    throw Fault(offset, "a further bitmap with a bit that is set", "none",
                "A field of psKind bitmap allows it");
  }

  void putBitmaps(List &list) {
    for (const BitmapField &field : m_plan.bitmapFields) {
      const size_t first = field.which < 0 ? 0 : static_cast<size_t>(field.which);
      const size_t last = field.which < 0 ? m_count : first + 1;
      if (first >= m_count) continue;
      const size_t each = field.bits ? kBitmapBits : 16;
      char *const text = m_call.store.take(each * (last - first));
      for (size_t k = first; k < last; ++k) {
        char *const at = text + each * (k - first);
        if (field.bits) {
          writeBits(m_bits.words[k], at);
        } else {
          writeHex(m_bits.words[k], {'0', 'A'}, at);
        }
      }
      list.put(field.slot, text, each * (last - first));
    }
  }

  // --- Data elements

  // Those that bitmap k tells of.
  void word(size_t k, List &list) {
    if (k == 1 && m_plan.thirdInside && (m_bits.words[1] & m_plan.flags(1)) != 0) readFurther(2);
    const int base = static_cast<int>(k * kBitmapBits);
    uint64_t told = m_bits.words[k] & ~m_plan.flags(k);
    const uint64_t unknown = told & ~m_plan.defined.words[k];
    const int stop = unknown == 0 ? 0 : base + std::countl_zero(unknown) + 1;
    if (stop != 0 && m_plan.restSlot < 0) refuseUnknown(stop);
    if (stop != 0) told &= ~(2 * Bits::mask(stop) - 1);
    forEachBit(told, base, [&](int number) { m_reader.element(m_plan.element(number), m_in, list); });
    if (stop != 0) rest(stop, list);
  }

  [[noreturn]] void refuseUnknown(int number) const {
    m_call.path.field(nullptr);
    throw Fault(m_bitmapOffset, "bits of data elements that the definition has",
                "that of data element " + std::to_string(number),
                "Define it, or a field of psKind rest for what begins with an unknown one");
  }

  // Data elements from number `first` on: their numbers, a colon, and the bytes up to the end.
  void rest(int first, List &list) {
    m_rest = true;
    m_call.path.field(m_plan.restNode);
    checkSize(m_in.left());
    const std::string_view bytes = m_in.take(m_in.left());
    const size_t room = size_t{4} * kMaxNumber + 2 * bytes.size();
    char *const text = m_call.store.take(room);
    char *at = text;
    for (size_t k = 0; k < m_count; ++k) {
      const uint64_t told = m_bits.words[k] & ~m_plan.flags(k);
      forEachBit(told, static_cast<int>(k * kBitmapBits), [&](int number) {
        if (number < first) return;
        if (at != text) *at++ = ',';
        at = std::to_chars(at, at + 3, number).ptr;
      });
    }
    *at++ = ':';
    bytesToHex(bytes, at);
    const auto length = static_cast<size_t>(at - text) + 2 * bytes.size();
    m_call.store.trim(text, room, length);
    list.put(m_plan.restSlot, text, length);
  }

  // --- The whole

  void checkMandatory() const {
    const int missing = m_plan.mandatory.without(m_bits).first();
    if (missing == 0) return;
    m_call.path.field(m_plan.element(missing).node);
    throw Fault(m_bitmapOffset, "data element " + std::to_string(missing), "none", "It is mandatory");
  }

  void checkSize(size_t more) const {
    const size_t size = m_in.offset() - m_call.from + more;
    if (size <= m_plan.maxLength) return;
    throw Fault(m_call.from, "a message of at most " + std::to_string(m_plan.maxLength) + " bytes",
                std::to_string(size), "See nMaxLen of IsoMsg");
  }

  void checkEnd() const {
    checkSize(0);
    if (!m_plan.whole || m_in.atEnd()) return;
    throw Fault(m_in.offset(), "the end of the message", quoted(m_in.at(), m_in.left()),
                "Remove what follows, or set nWhole to 0");
  }

  const Plan &m_plan;
  kit::ParseCall &m_call;
  Input m_in;
  Reader m_reader;
  Bits m_bits;
  size_t m_count = 0;  // bitmaps that are there
  size_t m_bitmapOffset = 0;
  bool m_rest = false;
};

}  // namespace

void parse(const Plan &plan, kit::ParseCall &call) {
  Parser(plan, call).run();
}

}  // namespace cvt::iso8583
