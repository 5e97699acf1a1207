#include "zone.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <map>
#include <memory>

namespace cvt::functions {

namespace {

constexpr int64_t kBeginning = std::numeric_limits<int64_t>::min();
constexpr int64_t kEnd = std::numeric_limits<int64_t>::max();
constexpr size_t kMaxFile = 1 << 16;  // the largest zone has some 4000 bytes
constexpr size_t kMaxName = 64;
constexpr int64_t kMostOffset = int64_t{26} * 3600;  // RFC 8536 wants less
constexpr int64_t kMostTime = int64_t{1} << 60;

std::string &directory() {
  static std::string s_directory = "/usr/share/zoneinfo";
  return s_directory;
}

// Names of files below the directory, and of nothing else: no dot, no empty part.
bool isName(std::string_view name) {
  if (name.empty() || name.size() > kMaxName) return false;
  char before = '/';
  for (const char c : name) {
    const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                       c == '_' || c == '+' || c == '-';
    if (!plain && (c != '/' || before == '/')) return false;
    before = c;
  }
  return before != '/';
}

std::string fileOf(std::string_view name) {
  std::string path = directory();
  path.append("/").append(name);
  std::ifstream in(path, std::ios::binary);
  std::string bytes(kMaxFile + 1, '\0');
  in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(in.gcount()));
  return bytes.size() > kMaxFile ? std::string() : bytes;
}

struct ByName {
  std::map<std::string, std::unique_ptr<Zone>, std::less<>> zones;
  const std::pair<const std::string, std::unique_ptr<Zone>> *last = nullptr;  // what was asked for last
};

ByName &known() {
  static ByName s_known;
  return s_known;
}

}  // namespace

void Zone::setDirectory(std::string_view name) {
  if (directory() == name) return;
  directory() = name;
  known() = {};
}

const Zone *Zone::find(std::string_view name) {
  ByName &all = known();
  if (all.last != nullptr && all.last->first == name) return all.last->second.get();
  auto at = all.zones.find(name);
  if (at == all.zones.end()) {
    std::optional<Zone> zone = isName(name) ? read(fileOf(name)) : std::nullopt;
    if (!zone) return nullptr;
    at = all.zones.emplace(name, std::make_unique<Zone>(*std::move(zone))).first;
  }
  all.last = &*at;
  return at->second.get();
}

// Walks over a file: a header and a block with times of 32 bits, the same with times of 64, a rule.
class Zone::Reader {
 public:
  explicit Reader(std::string_view file) : m_left(file) {}

  bool read(Zone &zone) {
    if (!header() || !skipBlock()) return false;
    return header() && spans(zone) && rule(zone);
  }

 private:
  static constexpr size_t kHeader = 44;
  enum Count { kUtIndicators, kStdIndicators, kLeapSeconds, kTimes, kTypes, kCharacters, kCounts };

  bool take(size_t length, std::string_view &part) {
    if (m_left.size() < length) return false;
    part = m_left.substr(0, length);
    m_left.remove_prefix(length);
    return true;
  }

  static int64_t number(std::string_view bytes) {
    uint64_t value = static_cast<unsigned char>(bytes[0]) >= 0x80 ? ~uint64_t{0} : 0;
    for (const char c : bytes) value = value << 8 | static_cast<unsigned char>(c);
    return static_cast<int64_t>(value);
  }

  bool header() {
    std::string_view bytes;
    if (!take(kHeader, bytes) || !bytes.starts_with("TZif") || bytes[4] < '2') return false;
    for (size_t i = 0; i < kCounts; ++i) {
      const int64_t count = number(bytes.substr(20 + 4 * i, 4));
      if (count < 0 || count > static_cast<int64_t>(kMaxFile)) return false;
      m_counts[i] = static_cast<size_t>(count);
    }
    return m_counts[kLeapSeconds] == 0;
  }

  bool skipBlock() {
    std::string_view block;
    return take(m_counts[kTimes] * 5 + m_counts[kTypes] * 6 + m_counts[kCharacters] +
                    m_counts[kStdIndicators] + m_counts[kUtIndicators],
                block);
  }

  bool spans(Zone &zone) {
    std::string_view times;
    std::string_view typeOf;
    std::string_view types;
    std::string_view rest;
    if (!take(m_counts[kTimes] * 8, times) || !take(m_counts[kTimes], typeOf) ||
        !take(m_counts[kTypes] * 6, types) ||
        !take(m_counts[kCharacters] + m_counts[kStdIndicators] + m_counts[kUtIndicators], rest)) {
      return false;
    }
    if (m_counts[kTypes] == 0) return false;
    const auto offset = [&](size_t type) { return static_cast<int>(number(types.substr(type * 6, 4))); };
    for (size_t type = 0; type < m_counts[kTypes]; ++type) {
      if (offset(type) <= -kMostOffset || offset(type) >= kMostOffset) return false;
    }
    zone.m_spans.reserve(m_counts[kTimes] + 1);
    zone.m_spans.push_back({kBeginning, kEnd, offset(0)});
    for (size_t i = 0; i < m_counts[kTimes]; ++i) {
      const int64_t time = number(times.substr(i * 8, 8));
      const auto type = static_cast<unsigned char>(typeOf[i]);
      if (type >= m_counts[kTypes] || time <= zone.m_spans.back().begin) return false;
      if (time < -kMostTime || time > kMostTime) return false;
      zone.m_spans.back().end = time;
      zone.m_spans.push_back({time, kEnd, offset(type)});
    }
    return true;
  }

  bool rule(Zone &zone) {
    if (m_left.size() < 2 || m_left.front() != '\n' || m_left.back() != '\n') return false;
    const std::string_view text = m_left.substr(1, m_left.size() - 2);
    if (text.empty()) return true;
    zone.m_rule = ZoneRule::read(text);
    return zone.m_rule.has_value();
  }

  std::string_view m_left;
  std::array<size_t, kCounts> m_counts{};
};

std::optional<Zone> Zone::read(std::string_view file) {
  Zone zone;
  return Reader(file).read(zone) ? std::optional<Zone>(std::move(zone)) : std::nullopt;
}

ZoneSpan Zone::spanAt(int64_t utc) const {
  const auto next = std::upper_bound(m_spans.begin() + 1, m_spans.end(), utc,
                                     [](int64_t time, const ZoneSpan &span) { return time < span.begin; });
  const ZoneSpan &span = *(next - 1);
  if (next != m_spans.end() || !m_rule) return span;
  ZoneSpan later = m_rule->spanAt(utc);
  later.begin = std::max(later.begin, span.begin);
  return later;
}

int64_t Zone::utcOf(int64_t local) const {
  // Wherever the local time may be: the first span that has it, else the one before the change that skips it.
  std::optional<int64_t> skipped;
  ZoneSpan span = spanAt(local - kMostOffset);
  int64_t before = local - span.offset;
  for (;;) {
    const int64_t utc = local - span.offset;
    if (utc >= span.begin && utc < span.end) return utc;
    if (utc < span.begin && !skipped) skipped = before;
    if (span.end > local + kMostOffset) return skipped.value_or(utc);
    before = utc;
    span = spanAt(span.end);
  }
}

}  // namespace cvt::functions
