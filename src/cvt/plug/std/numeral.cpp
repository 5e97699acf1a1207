#include "numeral.h"

#include <algorithm>

namespace cvt::functions {

namespace {

constexpr size_t kWhole = kit::Fault::kHere;
constexpr size_t kGroup = 3;  // digits between two separators

struct Wrong {
  size_t at;
  const char *expected;
  const char *found;
  const char *advice;
};

// Walks over a number. What does not belong there is kept, and nothing is read behind it.
class Scanner {
 public:
  Scanner(std::string_view text, const Marks &marks) : m_text(text), m_marks(marks) {}

  // implied: decimals without a point before them.
  bool read(Decimal &number, int implied = 0) {
    blanks();
    if (m_at == m_text.size()) {
      wrong({kWhole, "a number", m_text.empty() ? "an empty value" : "nothing but blanks",
             "Fill the field, or leave the rule out for an empty one with Case"});
      return false;
    }
    const bool signInFront = here('-') || here('+');
    bool negative = skip('-');
    if (!negative) skip('+');
    whole();
    if (m_marks.point != 0 && skip(m_marks.point)) decimals();
    if (m_marks.signBehind && !signInFront && !skip('+')) negative = skip('-');
    blanks();
    if (m_at < m_text.size()) expect("the end of the number");
    if (m_wrong.expected != nullptr) return false;
    number = Decimal(negative, {m_digits, m_count}, m_decimals + implied);
    return true;
  }

  const Wrong &wrong() const { return m_wrong; }

 private:
  bool here(char c) const { return m_at < m_text.size() && m_text[m_at] == c; }
  bool isDigit(size_t at) const { return at < m_text.size() && m_text[at] >= '0' && m_text[at] <= '9'; }
  bool hereDigit() const { return isDigit(m_at); }
  bool hereGroup() const { return here(m_marks.group) && isDigit(m_at + 1); }
  bool skip(char c) {
    if (!here(c)) return false;
    ++m_at;
    return true;
  }
  void blanks() {
    while (skip(' ')) continue;
  }

  // Zeros in front of a number do not count.
  void digit() {
    const char c = m_text[m_at];
    if (c != '0' || m_count > 0 || m_decimals > 0) {
      if (m_count == sizeof m_digits) return wrong({m_at, "a number of at most 100 digits", "one more", ""});
      m_digits[m_count++] = c;
    }
    ++m_at;
  }

  // Separators stand before every third digit from the point, or nowhere.
  void whole() {
    const size_t begin = m_at;
    if (!hereDigit()) expect("a digit");
    while (hereDigit()) digit();
    if (m_marks.group == 0 || !hereGroup()) return;
    if (m_at - begin > kGroup) expect("no separator behind more than three digits");
    while (hereGroup()) {
      const size_t group = ++m_at;
      while (hereDigit() && m_at - group < kGroup) digit();
      if (m_at - group < kGroup) expect("three digits behind a separator");
    }
  }

  void decimals() {
    if (!hereDigit()) expect("a digit");
    for (; hereDigit(); digit()) ++m_decimals;
  }

  void expect(const char *what) {
    wrong({m_at, what, m_at < m_text.size() ? "another character" : "the end",
           m_marks.signBehind
               ? "Numbers are digits, a sign at one of their ends, and the point and separators of the call"
               : "Numbers look like 7, -0.50 and +12; parseNumber reads other ways of writing them"});
  }
  void wrong(const Wrong &what) {
    if (m_wrong.expected == nullptr) m_wrong = what;
    m_text = {};
  }

  std::string_view m_text;
  Marks m_marks;
  size_t m_at = 0;
  char m_digits[Decimal::kMaxDigits] = {};
  size_t m_count = 0;
  int m_decimals = 0;
  Wrong m_wrong{};
};

char signOf(const Decimal &number, SignStyle style) {
  if (number.isNegative()) return '-';
  return style == SignStyle::Leading || style == SignStyle::Trailing ? '+' : '\0';
}

}  // namespace

bool readNumber(std::string_view text, const Marks &marks, Decimal &number) {
  return Scanner(text, marks).read(number);
}

Decimal number(kit::Call &call, int argument, const Marks &marks, int implied) {
  Decimal result;
  Scanner scanner(call.text(argument), marks);
  if (!scanner.read(result, implied)) {
    const Wrong &wrong = scanner.wrong();
    call.refuse(argument, wrong.at, wrong.expected, wrong.found, wrong.advice);
  }
  return result;
}

void answer(kit::Call &call, const Decimal &number, const Style &style) {
  char digits[Decimal::kTextRoom];
  const size_t count = number.digits(digits);
  const auto decimals = static_cast<size_t>(number.decimals());
  const size_t whole = count - decimals;
  const char sign = signOf(number, style.sign);
  if (sign != '\0' && style.sign == SignStyle::Unsigned) {
    call.refuse(0, kWhole, "a number that is not negative", "a negative one");
  }
  const size_t length = (sign != '\0' ? 1 : 0) + count + (whole - 1) / kGroup * style.group.size() +
                        (decimals > 0 ? style.point.size() : 0);
  if (style.width > 0 && length > style.width) {
    call.refuse(0, kWhole, "a number that fits the width", "a longer one");
  }
  const bool behind = style.sign == SignStyle::Trailing || style.sign == SignStyle::TrailingMinus;
  char *out = call.result(std::max(length, style.width));
  if (sign != '\0' && !behind) *out++ = sign;
  if (style.width > length) out = std::fill_n(out, style.width - length, '0');
  for (size_t i = 0; i < count; ++i) {
    const bool separated = i > 0 && i < whole && (whole - i) % kGroup == 0;
    if (separated) out = std::copy(style.group.begin(), style.group.end(), out);
    if (i == whole) out = std::copy(style.point.begin(), style.point.end(), out);
    *out++ = digits[i];
  }
  if (sign != '\0' && behind) *out = sign;
}

// What a calculation could not do. The argument is the one to look at.
void check(kit::Call &call, Trouble trouble, int argument) {
  switch (trouble) {
    case Trouble::None:
      return;
    case Trouble::TooManyDigits:
      call.refuse(argument, kWhole, "a result of at most 100 digits", "more");
    case Trouble::NotExact:
      call.refuse(argument, kWhole, "a result with no more decimals than wanted", "more",
                  "Name a rounding, such as half-up or half-even");
    case Trouble::DivisionByZero:
      call.refuse(argument, kWhole, "a divisor", "zero", "Leave the rule out for a zero with Case");
  }
}

int word(kit::Call &call, int argument, std::span<const std::string_view> words, int otherwise) {
  if (!call.has(argument)) return otherwise;
  const auto found = std::find(words.begin(), words.end(), call.text(argument));
  if (found != words.end()) return static_cast<int>(found - words.begin());
  std::string list;
  for (const std::string_view &known : words) {
    list += &known == &words.front() ? "" : &known == &words.back() ? " or " : ", ";
    list += known;
  }
  call.refuse(argument, kWhole, list, "another word");
}

}  // namespace cvt::functions
