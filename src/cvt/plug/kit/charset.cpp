#include "charset.h"

#include <iconv.h>
#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "bytes.h"
#include "utf8.h"

namespace cvt::kit {

namespace {

const char *const kUtf8 = "UTF-8";
const char *const kCodes = "UTF-32LE";
constexpr size_t kCodeSize = 4;

// More codes than one byte of any set is.
constexpr size_t kCodesRoom = 16 * kCodeSize;

// Of a text that is read back, at a time; and what a set may keep back for a character that may follow.
constexpr size_t kPart = 512;
constexpr size_t kKeptRoom = 16;

bool namesUtf8(const char *name) {
  return strcasecmp(name, "UTF-8") == 0 || strcasecmp(name, "UTF8") == 0;
}

}  // namespace

// One direction of iconv.
class Charset::Converter {
 public:
  Converter(const char *to, const char *from) : m_to(to), m_from(from), m_iconv(iconv_open(to, from)) {
    m_keepsOrder = ok() && keepsOrder();
  }
  ~Converter() {
    if (ok()) iconv_close(m_iconv);
  }
  Converter(const Converter &) = delete;
  Converter &operator=(const Converter &) = delete;

  bool ok() const { return m_iconv != reinterpret_cast<iconv_t>(-1); }

  // One whole text. With `close`, the output ends in the initial shift state.
  Converted run(const char *in, size_t n, char *out, size_t room, bool close = true) const {
    reset();
    Converted result = step(in, n, out, room);
    if (close && (result.damage == Damage::None || result.damage == Damage::NoRoom)) {
      const Converted end = finish(out + result.written, room - result.written);
      result.written += end.written;
      if (end.damage != Damage::None) result.damage = end.damage;
    }
    return result;
  }

  // What was kept back for a character that may follow, and the way to the initial shift state.
  Converted finish(char *out, size_t room) const {
    char *target = out;
    size_t space = room;
    const size_t status = iconv(m_iconv, nullptr, nullptr, &target, &space);
    return {0, room - space, status == static_cast<size_t>(-1) ? Damage::Cut : Damage::None};
  }

  void reset() const {
    if (!m_keepsOrder) {
      iconv(m_iconv, nullptr, nullptr, nullptr, nullptr);
      return;
    }
    iconv_close(m_iconv);
    m_iconv = iconv_open(m_to.c_str(), m_from.c_str());
  }

  // Goes on where the last step ended.
  Converted step(const char *in, size_t n, char *out, size_t room) const {
    char *source = const_cast<char *>(in);
    char *target = out;
    size_t left = n;
    size_t space = room;
    const size_t status = iconv(m_iconv, &source, &left, &target, &space);
    Damage damage = Damage::None;
    if (status == static_cast<size_t>(-1)) {
      damage = errno == E2BIG ? Damage::NoRoom : errno == EINVAL ? Damage::Cut : Damage::Invalid;
    } else if (status > 0) {
      damage = Damage::Unmappable;  // something was replaced
    }
    return {n - left, room - space, damage};
  }

 private:
  // Whether a text's byte order mark holds for the texts after it, too: iconv leaves the order as it is when it begins
  // anew. Sets without marks read these bytes alike, or not at all, each time.
  bool keepsOrder() const {
    using namespace std::string_view_literals;
    constexpr std::string_view kLittle[] = {
        "\xFF\xFE"
        "A\0"sv,
        "\xFF\xFE\0\0A\0\0\0"sv};
    constexpr std::string_view kBig[] = {"\xFE\xFF\0A"sv, "\0\0\xFE\xFF\0\0\0A"sv};
    const auto read = [this](std::string_view text) {
      char out[64];
      return std::string(out, run(text.data(), text.size(), out, sizeof out).written);
    };
    for (size_t i = 0; i < std::size(kLittle); ++i) {
      const std::string before = read(kLittle[i]);
      read(kBig[i]);
      if (read(kLittle[i]) != before) return true;
    }
    return false;
  }

  std::string m_to;
  std::string m_from;
  mutable iconv_t m_iconv;
  bool m_keepsOrder = false;  // then each text needs a descriptor of its own
};

// A set of one byte a character.
struct Charset::Table {
  struct Entry {
    unsigned char length;  // of the UTF-8 form; 0: no such character
    char bytes[4];
  };

  Entry decode[256] = {};
  short encodeLow[256];                                        // code below 256: the byte, -1 none
  std::vector<std::pair<uint32_t, unsigned char>> encodeHigh;  // sorted by code
  size_t longest = 1;

  Table() { std::fill(std::begin(encodeLow), std::end(encodeLow), static_cast<short>(-1)); }

  // The first byte of a character is the one it is written with.
  void add(unsigned char byte, const char *code) {
    uint32_t value;
    std::memcpy(&value, code, sizeof value);
    Entry &entry = decode[byte];
    entry.length = static_cast<unsigned char>(putUtf8(value, entry.bytes));
    longest = std::max<size_t>(longest, entry.length);
    if (value >= 256) {
      encodeHigh.emplace_back(value, byte);
    } else if (encodeLow[value] < 0) {
      encodeLow[value] = byte;
    }
  }

  int byteOf(uint32_t code) const {
    if (code < 256) return encodeLow[code];
    const auto it = std::lower_bound(encodeHigh.begin(), encodeHigh.end(),
                                     std::pair<uint32_t, unsigned char>(code, '\0'));
    return it != encodeHigh.end() && it->first == code ? it->second : -1;
  }
};

const char *damageText(Damage damage) {
  switch (damage) {
    case Damage::None:
      return "nothing";
    case Damage::Invalid:
      return "valid characters";
    case Damage::Cut:
      return "a whole character";
    case Damage::Unmappable:
      return "characters that the set has";
    case Damage::NoRoom:
      return "room for all characters";
  }
  return "";
}

const Charset *Charset::find(const char *name) {
  static std::map<std::string, std::unique_ptr<Charset>> known;
  const std::string key = name == nullptr ? kUtf8 : name;
  const auto it = known.find(key);
  if (it != known.end()) return it->second.get();
  // A slash would ask iconv for replacement characters.
  if (key.empty() || key.find('/') != std::string::npos) return nullptr;
  std::unique_ptr<Charset> set(new Charset(key.c_str()));
  if (!set->open()) return nullptr;
  return known.emplace(key, std::move(set)).first->second.get();
}

Charset::Charset(const char *name) : m_name(name) {}
Charset::~Charset() = default;

bool Charset::open() {
  if (namesUtf8(m_name.c_str())) {
    m_kind = Kind::Utf8;
    m_ascii = true;
    return true;
  }
  m_toUtf8 = std::make_unique<Converter>(kUtf8, m_name.c_str());
  m_fromUtf8 = std::make_unique<Converter>(m_name.c_str(), kUtf8);
  m_toCodes = std::make_unique<Converter>(kCodes, m_name.c_str());
  if (!m_toUtf8->ok() || !m_fromUtf8->ok() || !m_toCodes->ok()) return false;
  classify();
  if (m_kind == Kind::Iconv && !hasAllOfUnicode())
    m_back = std::make_unique<Converter>(kUtf8, m_name.c_str());
  m_shifts = m_kind == Kind::Iconv && hasShifts();
  return m_back == nullptr || m_back->ok();
}

void Charset::classify() {
  auto table = std::make_unique<Table>();
  bool oneByte = true;
  m_ascii = true;
  for (unsigned i = 0; i < 256; ++i) {
    const char byte = static_cast<char>(i);
    char code[kCodesRoom];
    const Converted closed = m_toCodes->run(&byte, 1, code, sizeof code);
    m_mostOfByte = std::max(m_mostOfByte, closed.written / kCodeSize);
    const bool same = closed.damage == Damage::None && closed.written == kCodeSize && code[0] == byte;
    if (i < 0x80 && !same) m_ascii = false;
    // A set that keeps a byte back, for a character or an accent that may follow, is none of one byte a
    // character.
    const Converted open = m_toCodes->run(&byte, 1, code, sizeof code, false);
    if (open.damage == Damage::Invalid) continue;
    if (open.damage == Damage::None && open.written == kCodeSize) {
      table->add(static_cast<unsigned char>(i), code);
    } else {
      oneByte = false;
    }
  }
  if (!oneByte) return;
  std::stable_sort(table->encodeHigh.begin(), table->encodeHigh.end());
  m_table = std::move(table);
  m_kind = Kind::Table;
}

// Only sets that are made for it have Unicode's last character.
bool Charset::hasAllOfUnicode() const {
  const std::string_view last = "\U0010FFFD";
  char bytes[32];
  return m_fromUtf8->run(last.data(), last.size(), bytes, sizeof bytes).damage == Damage::None;
}

// Every set with shift states has this character, and has to return from it.
bool Charset::hasShifts() const {
  const std::string_view sun = "\u65E5";
  char bytes[32];
  const size_t open = m_fromUtf8->run(sun.data(), sun.size(), bytes, sizeof bytes, false).written;
  return m_fromUtf8->run(sun.data(), sun.size(), bytes, sizeof bytes).written > open;
}

size_t Charset::decodedRoom(size_t n) const {
  if (m_kind == Kind::Utf8) return n;
  return m_kind == Kind::Table ? n * m_table->longest : n * m_mostOfByte * 4 + 16;
}

Converted Charset::decode(const char *in, size_t n, char *out, size_t room) const {
  if (m_ascii && n <= room && isAscii(in, n)) {
    if (n != 0) std::memcpy(out, in, n);
    return {n, n, Damage::None};
  }
  if (m_kind == Kind::Iconv) return m_toUtf8->run(in, n, out, room);
  if (m_kind == Kind::Utf8) {
    Converted checked = checkUtf8(in, n);
    if (checked.read > room) checked = {cutUtf8(in, checked.read, room), 0, Damage::NoRoom};
    if (checked.read != 0) std::memcpy(out, in, checked.read);
    return {checked.read, checked.read, checked.damage};
  }
  size_t written = 0;
  for (size_t i = 0; i < n; ++i) {
    const Table::Entry &entry = m_table->decode[static_cast<unsigned char>(in[i])];
    if (entry.length == 0) return {i, written, Damage::Invalid};
    if (entry.length > room - written) return {i, written, Damage::NoRoom};
    std::memcpy(out + written, entry.bytes, entry.length);
    written += entry.length;
  }
  return {n, written, Damage::None};
}

Converted Charset::encode(const char *in, size_t n, char *out, size_t room) const {
  if (m_ascii && n <= room && isAscii(in, n)) {
    if (n != 0) std::memcpy(out, in, n);
    return {n, n, Damage::None};
  }
  if (m_kind == Kind::Utf8) {
    Converted checked = checkUtf8(in, n);
    if (checked.read > room) checked = {cutUtf8(in, checked.read, room), 0, Damage::NoRoom};
    if (checked.read != 0) std::memcpy(out, in, checked.read);
    return {checked.read, checked.read, checked.damage};
  }
  if (m_kind == Kind::Table) return encodeByTable(in, n, out, room);
  const Converted result = encodeByIconv(in, n, out, room);
  if (m_back == nullptr) return result;
  const size_t same = comesBack(in, result.read, out, result.written);
  if (same == result.read) return result;
  const Converted before = encodeByIconv(in, same, out, room);
  return before.damage == Damage::None ? Converted{same, before.written, Damage::Unmappable} : before;
}

Converted Charset::encodeByIconv(const char *in, size_t n, char *out, size_t room) const {
  const Converted checked = checkUtf8(in, n);
  Converted result = m_fromUtf8->run(in, checked.read, out, room);
  // A text that was cut for room must still have room for the sequence that closes it.
  for (size_t less = 1; result.damage == Damage::Cut && less <= kShiftRoom && less <= room; ++less) {
    result = m_fromUtf8->run(in, checked.read, out, room - less);
    if (result.damage == Damage::None) result.damage = Damage::NoRoom;
  }
  if (result.damage == Damage::Invalid) result.damage = Damage::Unmappable;
  return result.damage == Damage::None ? Converted{result.read, result.written, checked.damage} : result;
}

Converted Charset::encodeByTable(const char *in, size_t n, char *out, size_t room) const {
  size_t read = 0;
  size_t written = 0;
  while (read < n) {
    const Utf8Char next = utf8Char(in + read, n - read);
    if (next.length <= 0) return {read, written, next.length == 0 ? Damage::Invalid : Damage::Cut};
    const int byte = m_table->byteOf(next.code);
    if (byte < 0) return {read, written, Damage::Unmappable};
    if (written == room) return {read, written, Damage::NoRoom};
    out[written++] = static_cast<char>(byte);
    read += static_cast<size_t>(next.length);
  }
  return {read, written, Damage::None};
}

// How much of a text comes back from its bytes, up to the end of a character.
size_t Charset::comesBack(const char *in, size_t n, const char *bytes, size_t size) const {
  char part[kPart + kKeptRoom];
  size_t same = 0;
  m_back->reset();
  for (bool more = true; more;) {
    Converted back = m_back->step(bytes, size, part, kPart);
    bytes += back.read;
    size -= back.read;
    more = back.damage == Damage::NoRoom;
    if (!more) back.written += m_back->finish(part + back.written, sizeof part - back.written).written;
    const size_t some = std::min(back.written, n - same);
    const auto equal = static_cast<size_t>(std::mismatch(part, part + some, in + same).first - part);
    same += equal;
    if (equal < some) break;
  }
  return cutUtf8(in, n, same);
}

Converted Charset::measure(const char *in, size_t n, size_t characters) const {
  if (m_kind == Kind::Table) {
    const size_t seen = std::min(n, characters);
    return {seen, seen, seen < characters ? Damage::Cut : Damage::None};
  }
  size_t read = 0;
  size_t seen = 0;
  if (m_kind == Kind::Utf8) {
    for (; seen < characters; ++seen) {
      if (read == n) return {read, seen, Damage::Cut};
      const Utf8Char next = utf8Char(in + read, n - read);
      if (next.length <= 0) return {read, seen, next.length == 0 ? Damage::Invalid : Damage::Cut};
      read += static_cast<size_t>(next.length);
    }
    return {read, seen, Damage::None};
  }
  char codes[256 * kCodeSize];
  m_toCodes->reset();
  while (seen < characters) {
    const size_t room = std::min<size_t>(characters - seen, 256) * kCodeSize;
    const Converted part = m_toCodes->step(in + read, n - read, codes, room);
    read += part.read;
    seen += part.written / kCodeSize;
    if (part.damage == Damage::NoRoom || seen == characters) continue;
    return {read, seen, part.damage == Damage::None ? Damage::Cut : part.damage};
  }
  return {read + (m_shifts ? closing(in, read, n) : 0), seen, Damage::None};
}

// How many of the n bytes stand behind the text to return to the initial shift state, in which the next text begins.
size_t Charset::closing(const char *in, size_t text, size_t n) const {
  char sequence[kShiftRoom];
  const size_t length = closingSequence(in, text, sequence);
  // What the set writes to close a text may begin with the last bits of its last character, which were read.
  for (size_t before = 0; before < length && before <= text; ++before) {
    const size_t behind = length - before;
    if (behind <= n - text && std::memcmp(in + text - before, sequence, length) == 0) return behind;
  }
  return 0;
}

// What the set writes behind the text to return there: none, when it is there.
size_t Charset::closingSequence(const char *in, size_t n, char (&sequence)[kShiftRoom]) const {
  char part[kPart];
  char written[kPart * kShiftRoom];
  m_toUtf8->reset();
  m_fromUtf8->reset();
  for (bool more = true; more;) {
    const Converted read = m_toUtf8->step(in, n, part, sizeof part);
    m_fromUtf8->step(part, read.written, written, sizeof written);
    in += read.read;
    n -= read.read;
    more = read.damage == Damage::NoRoom;
  }
  return m_fromUtf8->finish(sequence, sizeof sequence).written;
}

size_t Charset::countUtf8(const char *in, size_t n) {
  size_t count = 0;
  for (size_t i = 0; i < n; ++i) count += (static_cast<unsigned char>(in[i]) & 0xC0) != 0x80 ? 1 : 0;
  return count;
}

size_t Charset::cutUtf8(const char *in, size_t n, size_t limit) {
  if (n <= limit) return n;
  while (limit > 0 && (static_cast<unsigned char>(in[limit]) & 0xC0) == 0x80) --limit;
  return limit;
}

bool Charset::ascii(const char *in, size_t n) {
  return isAscii(in, n);
}

Converted Charset::checkUtf8(const char *in, size_t n) {
  if (isAscii(in, n)) return {n, n, Damage::None};
  size_t read = 0;
  while (read < n) {
    const Utf8Char next = utf8Char(in + read, n - read);
    if (next.length <= 0) return {read, read, next.length == 0 ? Damage::Invalid : Damage::Cut};
    read += static_cast<size_t>(next.length);
  }
  return {read, read, Damage::None};
}

}  // namespace cvt::kit
