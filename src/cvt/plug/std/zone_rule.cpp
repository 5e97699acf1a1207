#include "zone_rule.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>

namespace cvt::functions {

namespace {
constexpr int64_t kDay = 86400;

// From that time on, the offset is another.
struct Point {
  int64_t at;
  int offset;
};

int64_t firstDay(int year) {
  using namespace std::chrono;
  return sys_days{std::chrono::year{year} / January / 1}.time_since_epoch().count();
}
}  // namespace

// Walks over the text; each part says whether it was there.
class ZoneRule::Reader {
 public:
  explicit Reader(std::string_view text) : m_text(text) {}

  bool atEnd() const { return m_text.empty(); }

  bool skip(char c) {
    if (!m_text.starts_with(c)) return false;
    m_text.remove_prefix(1);
    return true;
  }

  // "CET" or "<+0330>"; what it says is of no use here.
  bool name() {
    const bool quoted = skip('<');
    size_t length = 0;
    const auto belongs = [quoted](char c) {
      const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
      return letter || (quoted && ((c >= '0' && c <= '9') || c == '+' || c == '-'));
    };
    while (length < m_text.size() && belongs(m_text[length])) ++length;
    m_text.remove_prefix(length);
    return length >= 3 && (!quoted || skip('>'));
  }

  bool number(int most, int &result) {
    size_t length = 0;
    int value = 0;
    for (; length < 3 && length < m_text.size(); ++length) {
      const char c = m_text[length];
      if (c < '0' || c > '9') break;
      value = value * 10 + (c - '0');
    }
    m_text.remove_prefix(length);
    result = value;
    return length > 0 && value <= most;
  }

  // "-1", "+5:30", "167:59:59".
  bool time(int mostHours, int &seconds) {
    const bool negative = skip('-');
    if (!negative) skip('+');
    int hours = 0;
    int minutes = 0;
    int rest = 0;
    if (!number(mostHours, hours)) return false;
    if (skip(':') && !number(59, minutes)) return false;
    if (skip(':') && !number(59, rest)) return false;
    seconds = (hours * 60 + minutes) * 60 + rest;
    if (negative) seconds = -seconds;
    return true;
  }

  bool change(Change &change) {
    if (!skip(',') || !day(change)) return false;
    return !skip('/') || time(167, change.time);
  }

 private:
  bool day(Change &change) {
    if (skip('M')) {
      change.kind = Change::Kind::Month;
      return number(12, change.month) && change.month > 0 && skip('.') && number(5, change.week) &&
             change.week > 0 && skip('.') && number(6, change.day);
    }
    const bool julian = skip('J');
    change.kind = julian ? Change::Kind::Julian : Change::Kind::Plain;
    return number(365, change.day) && (!julian || change.day > 0);
  }

  std::string_view m_text;
};

std::optional<ZoneRule> ZoneRule::read(std::string_view text) {
  ZoneRule rule;
  Reader reader(text);
  if (!reader.name() || !reader.time(24, rule.m_standard)) return {};
  rule.m_standard = -rule.m_standard;  // the text counts hours west of UTC
  if (reader.atEnd()) return rule;
  rule.m_hasSummer = true;
  rule.m_summer = rule.m_standard + 3600;
  if (!reader.name()) return {};
  if (reader.time(24, rule.m_summer)) rule.m_summer = -rule.m_summer;
  if (!reader.change(rule.m_toSummer) || !reader.change(rule.m_toStandard) || !reader.atEnd()) return {};
  return rule;
}

int64_t ZoneRule::Change::inYear(int year) const {
  using namespace std::chrono;
  const std::chrono::year y{year};
  if (kind == Kind::Month) {
    const std::chrono::month m{static_cast<unsigned>(month)};
    const weekday wanted{static_cast<unsigned>(day)};
    const sys_days found =
        week == 5 ? sys_days{y / m / wanted[last]} : sys_days{y / m / wanted[static_cast<unsigned>(week)]};
    return found.time_since_epoch().count() * kDay + time;
  }
  const bool leapDayBefore = kind == Kind::Julian && y.is_leap() && day >= 60;
  const int after = kind == Kind::Julian ? day - 1 + (leapDayBefore ? 1 : 0) : day;
  return (firstDay(year) + after) * kDay + time;
}

ZoneSpan ZoneRule::spanAt(int64_t utc) const {
  if (!m_hasSummer) {
    return {std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max(), m_standard};
  }
  using namespace std::chrono;
  const year_month_day date{sys_days{days{static_cast<int>(utc / kDay)}}};
  // The changes of this year and its neighbours, in their order.
  std::array<Point, 6> points;
  size_t count = 0;
  const int middle{date.year()};
  for (const int number : {middle - 1, middle, middle + 1}) {
    points[count++] = {m_toSummer.inYear(number) - m_standard, m_summer};
    points[count++] = {m_toStandard.inYear(number) - m_summer, m_standard};
  }
  const auto earlier = [](const Point &a, const Point &b) { return a.at < b.at; };
  for (auto point = points.begin(); point != points.end(); ++point) {
    std::rotate(std::upper_bound(points.begin(), point, *point, earlier), point, point + 1);
  }
  const Point *const next = std::upper_bound(points.data() + 1, points.data() + points.size() - 1, utc,
                                             [](int64_t t, const Point &point) { return t < point.at; });
  const Point &since = *(next - 1);
  return {since.at, next->at, since.offset};
}

}  // namespace cvt::functions
