// sql.cpp: values as pieces of an SQL statement, which the rule joins with nothing between them.
#include <algorithm>
#include <cstring>

#include "topics.h"

namespace cvt::functions {

using namespace std::literals;

namespace {

constexpr size_t kWhole = kit::Fault::kHere;

void sqlQuote(kit::Call &call) {
  const std::string_view text = call.text(0);
  if (const size_t zero = text.find('\0'); zero != text.npos) {
    call.refuse(0, zero, "no zero byte", "one",
                "A statement ends at a zero byte: take it off, or write the value in hexadecimal digits");
  }
  const auto quotes = static_cast<size_t>(std::count(text.begin(), text.end(), '\''));
  char *out = call.result(text.size() + quotes + 2);
  *out++ = '\'';
  for (const char c : text) {
    if (c == '\'') *out++ = '\'';
    *out++ = c;
  }
  *out = '\'';
}

// Walks over a number; what does not belong there is refused.
class Number {
 public:
  explicit Number(kit::Call &call) : m_call(call), m_text(call.text(0)) {}

  void blanks() {
    while (skip(" ")) continue;
  }
  bool skip(std::string_view characters) {
    const bool here = m_at < m_text.size() && characters.find(m_text[m_at]) != characters.npos;
    if (here) ++m_at;
    return here;
  }
  void digits() {
    if (!skip(kDigits)) refuse("a digit");
    while (skip(kDigits)) continue;
  }
  void end() {
    if (m_at < m_text.size()) refuse("the end of the number");
  }

  bool atEnd() const { return m_at == m_text.size(); }
  std::string_view text() const { return m_text; }

 private:
  static constexpr std::string_view kDigits = "0123456789";

  [[noreturn]] void refuse(const char *expected) {
    m_call.refuse(0, m_at, expected, m_at < m_text.size() ? "another character" : "the end",
                  "Numbers look like 7, -0.50 and 1.5e-3; sqlQuote takes any text");
  }

  kit::Call &m_call;
  std::string_view m_text;
  size_t m_at = 0;
};

// A sign gets a blank in front: "a -" and "-1" joined would begin a comment, which hides the rest of the
// statement.
void sqlNumber(kit::Call &call) {
  Number number(call);
  number.blanks();
  if (number.atEnd()) {
    call.refuse(0, kWhole, "a number", number.text().empty() ? "an empty value" : "nothing but blanks",
                "Fill the field, or leave the rule out for an empty one with Case");
  }
  const bool sign = number.skip("+-");
  number.digits();
  if (number.skip(".")) number.digits();
  if (number.skip("eE")) {
    number.skip("+-");
    number.digits();
  }
  number.blanks();
  number.end();

  const std::string_view text = number.text();
  const size_t room = sign && text[0] != ' ' ? 1 : 0;
  char *out = call.result(room + text.size());
  std::fill_n(out, room, ' ');
  std::memcpy(out + room, text.data(), text.size());
}

// clang-format off
#define NUMBERS "Numbers look like 7, -0.50 and 1.5e-3; sqlQuote takes any text."

constexpr kit::FunctionRow kFunctions[] = {
    {"sqlQuote",
     {{"text", "any bytes but zero"}}, 1, 1, sqlQuote,
     "the text as a literal: in single quotes, each one inside doubled",
     {{{"Smith"}, "'Smith'"},
      {{"O'Brien"}, "'O''Brien'"},
      {{"''"}, "''''''"},
      {{"C:\\temp"}, "'C:\\temp'"},
      {{""}, "''"}},
     {{{"ab\0cd"sv}, "Arg[1] Len[5] Offset[2]: expected no zero byte, found one. A statement ends at a zero byte: "
                     "take it off, or write the value in hexadecimal digits."}}},

    {"sqlNumber",
     {{"number", "an optional sign, digits, an optional point with digits, an optional exponent; blanks around"}},
     1, 1, sqlNumber,
     "the number as it is, with a blank in front of a sign",
     {{{"42"}, "42"},
      {{"0000001050"}, "0000001050"},
      {{"-0.50"}, " -0.50"},
      {{"+7"}, " +7"},
      {{"1.5e-3"}, "1.5e-3"},
      {{"   12.00"}, "   12.00"}},
     {{{""}, "Arg[1] Len[0]: expected a number, found an empty value. Fill the field, or leave the rule out for "
             "an empty one with Case."},
      {{"   "}, "Arg[1] Len[3]: expected a number, found nothing but blanks. Fill the field, or leave the rule "
                "out for an empty one with Case."},
      {{"1,5"}, "Arg[1] Len[3] Offset[1]: expected the end of the number, found another character. " NUMBERS},
      {{".5"}, "Arg[1] Len[2] Offset[0]: expected a digit, found another character. " NUMBERS},
      {{"12."}, "Arg[1] Len[3] Offset[3]: expected a digit, found the end. " NUMBERS}}},
};

#undef NUMBERS
// clang-format on

}  // namespace

constinit const kit::Topic kSql = kit::topic<kFunctions>(
    "SQL statements",
    "Values as pieces of a statement, which an SQL rule joins with nothing between them. What a message "
    "brings goes through one of these; [the plug-in's manual](../src/cvt/plug/std/README.md#sql-statements) "
    "says why.");

}  // namespace cvt::functions
