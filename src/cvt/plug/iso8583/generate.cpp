#include <algorithm>
#include <charconv>

#include "kit/fault.h"
#include "others.h"
#include "presence.h"
#include "walk.h"
#include "writer.h"

namespace cvt::iso8583 {

using kit::Fault;
using kit::List;
using kit::quoted;

namespace {

std::string shown(std::string_view text) {
  return quoted(text.data(), text.size());
}

class Generator {
 public:
  Generator(const Plan &plan, kit::GenerateCall &call)
      : m_plan(plan), m_call(call), m_out(call.out), m_writer(call), m_list(call.values, plan.slots) {}

  void run() {
    const size_t from = m_out.offset();
    for (const Element &field : m_plan.opening) m_writer.field(field, m_list);
    if (m_plan.restSlot >= 0) readRest();
    readBitmapFields();
    decide();
    checkFlags();
    bitmaps();
    for (size_t k = 0; k < kMaxBitmaps; ++k) elements(k);
    m_out.put(m_restBytes);
    if (m_out.offset() - from <= m_plan.maxLength) return;
    throw Fault(from, "a message of at most " + std::to_string(m_plan.maxLength) + " bytes",
                std::to_string(m_out.offset() - from), "See nMaxLen of IsoMsg");
  }

 private:
  // --- What the message says of its bitmaps

  // A value of psKind rest: numbers with commas, a colon, the bytes in hexadecimal digits.
  void readRest() {
    const std::string_view value = m_list.get(m_plan.restSlot);
    if (value.empty()) return;
    m_call.path.field(m_plan.restNode);
    const size_t colon = value.find(':');
    if (colon == std::string_view::npos || !readRestNumbers(value.substr(0, colon))) {
      throw Fault(Fault::kHere,
                  "numbers of data elements, ascending, with commas, a colon, hexadecimal digits",
                  shown(value));
    }
    m_restFirst = m_restBits.first();
    if (m_plan.defined.has(m_restFirst)) {
      throw Fault(Fault::kHere, "a first data element that the definition does not have",
                  std::to_string(m_restFirst), "Give the value to its field");
    }
    kit::Store store(m_call.memory);
    m_restBytes = hexToBytes(value.substr(colon + 1), store);
  }

  // False: these are no ascending numbers of data elements.
  bool readRestNumbers(std::string_view numbers) {
    const char *at = numbers.data();
    const char *const end = at + numbers.size();
    for (int last = 0;;) {
      int number = 0;
      const auto read = std::from_chars(at, end, number);
      const bool element = read.ec == std::errc() && number > last &&
                           number <= m_plan.bitmaps * static_cast<int>(kBitmapBits) && !m_plan.isFlag(number);
      if (!element) return false;
      m_restBits.set(number);
      if (read.ptr == end) return true;
      if (*read.ptr != ',') return false;
      at = read.ptr + 1;
      last = number;
    }
  }

  void readBitmapFields() {
    for (const BitmapField &field : m_plan.bitmapFields) {
      const std::string_view value = m_list.get(field.slot);
      if (!value.empty()) readBitmapField(field, value);
    }
    for (size_t k = 0; k + 1 < kMaxBitmaps; ++k) {
      if (m_isTold[k] && (m_told.words[k] & m_plan.flags(k)) != 0) m_count = std::max(m_count, k + 2);
    }
  }

  void readBitmapField(const BitmapField &field, std::string_view value) {
    m_call.path.field(field.node);
    const size_t each = field.bits ? kBitmapBits : 16;
    const size_t first = field.which < 0 ? 0 : static_cast<size_t>(field.which);
    const size_t most = field.which < 0 ? static_cast<size_t>(m_plan.bitmaps) : 1;
    const size_t count = value.size() / each;
    bool good = count * each == value.size() && count <= most;
    for (size_t k = 0; good && k < count; ++k) {
      good = valueToWord(value.substr(k * each, each), field.bits, m_told.words[first + k]);
    }
    if (!good) {
      throw Fault(Fault::kHere,
                  "a bitmap of " + std::to_string(each) + (field.bits ? " bits" : " hexadecimal digits"),
                  shown(value));
    }
    const size_t end = field.which < 0 ? kMaxBitmaps : first + 1;
    for (size_t k = first; k < end; ++k) m_isTold[k] = true;
    m_count = std::max(m_count, first + count);
  }

  // --- Which data elements there are

  void decide() {
    for (const Presence &one : m_plan.presences) {
      if (given(one)) {
        m_given.set(one.number);
      } else if (one.always && !m_isTold[Bits::word(one.number)]) {
        m_bits.set(one.number);
      }
    }
    for (size_t k = 0; k < kMaxBitmaps; ++k) m_bits.words[k] |= m_given.words[k];
    for (size_t k = 0; k < kMaxBitmaps; ++k) {
      if (m_restFirst != 0) beside(k);
      if (m_isTold[k]) agree(k);
    }
    const int missing = m_plan.mandatory.without(m_bits).first();
    if (missing != 0) refuse(missing, "a value", "none", "The field is mandatory");
  }

  bool given(const Presence &one) const {
    if (one.group) return groupGiven(m_plan.element(one.number), m_list);
    return !m_list.empty(one.slot) || (one.keepsGiven && m_list.given(one.slot));
  }

  // What the rest has nobody else has, and nothing stands behind its first number.
  void beside(size_t k) {
    const int base = static_cast<int>(k * kBitmapBits);
    forEachBit(m_bits.words[k], base, [&](int number) {
      if (number < m_restFirst) return;
      if (m_given.has(number)) {
        refuse(number,
               "no value behind data element " + std::to_string(m_restFirst) + ", where the rest begins",
               "one", "");
      }
      m_bits.clear(number);
    });
    m_bits.words[k] |= m_restBits.words[k];
    m_given.words[k] |= m_restBits.words[k];
  }

  // The bits of a bitmap field decide, and must not contradict the values.
  void agree(size_t k) {
    const uint64_t told = m_told.words[k] & ~m_plan.flags(k);
    const int base = static_cast<int>(k * kBitmapBits);
    const uint64_t without = m_given.words[k] & ~told;
    if (without != 0) {
      refuse(base + std::countl_zero(without) + 1, "no value, as its bit in the bitmap says", "one",
             "Set the bit, or leave the bitmap's value empty: it is then made from the values");
    }
    const uint64_t unknown = told & ~m_plan.defined.words[k] & ~m_restBits.words[k];
    if (unknown != 0) {
      refuse(0, "bits of data elements that the definition has",
             "that of data element " + std::to_string(base + std::countl_zero(unknown) + 1), "");
    }
    if (m_restFirst != 0) noneBehindRest(told & ~m_restBits.words[k], base);
    m_bits.words[k] = told;
  }

  void noneBehindRest(uint64_t bits, int base) const {
    forEachBit(bits, base, [&](int number) {
      if (number < m_restFirst) return;
      refuse(number,
             "no bit behind data element " + std::to_string(m_restFirst) +
                 ", where the rest begins, but those that the rest names",
             "one", "Leave the bitmap's value empty: it is then made from the values");
    });
  }

  [[noreturn]] void refuse(int number, const std::string &expected, const std::string &found,
                           const char *advice) const {
    const bool known = number != 0 && m_plan.defined.has(number);
    m_call.path.field(known ? m_plan.element(number).node : nullptr);
    throw Fault(Fault::kHere, expected, found, advice);
  }

  // How many bitmaps there are, and that their flags say so.
  void checkFlags() {
    for (size_t k = 0; k < kMaxBitmaps; ++k) {
      if (m_bits.words[k] != 0) m_count = std::max(m_count, k + 1);
    }
    if (!m_plan.flagged) m_count = static_cast<size_t>(m_plan.bitmaps);
    m_count = std::max(m_count, size_t{1});
    for (size_t k = 0; k + 1 < m_count; ++k) {
      if (m_isTold[k] && m_plan.flags(k) != 0 && (m_told.words[k] & m_plan.flags(k)) == 0) {
        refuse(0, "bit " + std::to_string(k * kBitmapBits + 1) + " of the bitmap, since another one follows",
               "a bitmap without it", "Leave the bitmap's value empty: it is then made from the values");
      }
      m_bits.words[k] |= m_plan.flags(k);
    }
  }

  // --- Writing

  void bitmaps() {
    m_call.path.field(nullptr);
    const size_t here = m_plan.thirdInside ? std::min(m_count, size_t{2}) : m_count;
    for (size_t k = 0; k < here; ++k) bitmap(k);
  }

  void bitmap(size_t k) {
    if (m_plan.bitmapCoding == BitmapCoding::Binary) {
      writeBinary(m_bits.words[k], m_out.reserve(8));
    } else {
      writeHex(m_bits.words[k], {m_plan.hexZero, m_plan.hexA}, m_out.reserve(16));
    }
  }

  void elements(size_t k) {
    if (k == 1 && m_plan.thirdInside && m_count == 3) {
      m_call.path.field(nullptr);
      bitmap(2);
    }
    const uint64_t word = m_bits.words[k] & m_plan.defined.words[k] & ~m_restBits.words[k];
    forEachBit(word, static_cast<int>(k * kBitmapBits),
               [&](int number) { m_writer.element(m_plan.element(number), m_list); });
  }

  const Plan &m_plan;
  kit::GenerateCall &m_call;
  kit::Output &m_out;
  Writer m_writer;
  const List m_list;

  Bits m_bits;      // those that are written
  Bits m_given;     // those that have a value
  Bits m_told;      // as bitmap fields say
  Bits m_restBits;  // those that the rest has
  std::array<bool, kMaxBitmaps> m_isTold{};
  size_t m_count = 0;  // bitmaps
  int m_restFirst = 0;
  std::string_view m_restBytes;
};

}  // namespace

void generate(const Plan &plan, kit::GenerateCall &call) {
  Generator(plan, call).run();
}

}  // namespace cvt::iso8583
