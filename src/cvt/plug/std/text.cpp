// text.cpp: texts cut, joined, filled up and searched. Positions and lengths are characters of UTF-8.
#include <bitset>
#include <cstring>

#include "characters.h"
#include "kit/utf8.h"
#include "topics.h"

namespace cvt::functions {

namespace {

constexpr size_t kWhole = kit::Fault::kHere;
constexpr std::string_view kBlanks = " \t\r\n";

// Where the part begins for the first time, from there on; npos when it is nowhere. In time that is in proportion to
// the lengths, whoever wrote the text and the part. REQUIRES: from is in the text or its end.
size_t find(std::string_view text, std::string_view part, size_t from = 0) {
  if (text.size() - from < part.size()) return text.npos;
  const void *const found = memmem(text.data() + from, text.size() - from, part.data(), part.size());
  return found == nullptr ? text.npos : static_cast<size_t>(static_cast<const char *>(found) - text.data());
}

// --- Joining ------------------------------------------------------------------------------------------------

char *put(char *out, std::string_view text) {
  if (!text.empty()) std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

void concat(kit::Call &call) {
  size_t length = 0;
  for (int i = 0; i < call.count(); ++i) length += call.text(i).size();
  char *out = call.result(length);
  for (int i = 0; i < call.count(); ++i) out = put(out, call.text(i));
}

void repeat(kit::Call &call) {
  const std::string_view text = call.text(0);
  const auto count = static_cast<size_t>(call.number(1, 0, kMostCharacters));
  char *out = call.result(text.size() * count);
  if (text.empty()) return;
  for (size_t i = 0; i < count; ++i) out = put(out, text);
}

// --- Cutting ------------------------------------------------------------------------------------------------

size_t lengthAt(kit::Call &call, int argument) {
  return static_cast<size_t>(call.number(argument, 0, kMostCharacters));
}

void substr(kit::Call &call) {
  std::string_view text = call.utf8(0);
  const int from = call.number(1, -kMostCharacters, kMostCharacters);
  if (from == 0) {
    call.refuse(1, kWhole, "a position from 1, or from -1 at the end", "0",
                "The first character has number 1");
  }
  text.remove_prefix(from > 0 ? bytesOf(text, static_cast<size_t>(from - 1))
                              : bytesBeforeLast(text, static_cast<size_t>(-from)));
  call.answer(call.has(2) ? text.substr(0, bytesOf(text, lengthAt(call, 2))) : text);
}

void left(kit::Call &call) {
  const std::string_view text = call.utf8(0);
  call.answer(text.substr(0, bytesOf(text, lengthAt(call, 1))));
}

void right(kit::Call &call) {
  const std::string_view text = call.utf8(0);
  call.answer(text.substr(bytesBeforeLast(text, lengthAt(call, 1))));
}

int partsOf(std::string_view text, std::string_view separator) {
  int parts = 1;
  for (size_t at = 0; (at = find(text, separator, at)) != text.npos; at += separator.size()) ++parts;
  return parts;
}

// The part with that number, from 1 in front or from -1 at the end; empty when there is none. Parts are those that
// are found from the front, also when they are counted from the end.
std::string_view partOf(std::string_view text, std::string_view separator, int number) {
  if (number < 0) number += partsOf(text, separator) + 1;
  if (number < 1) return {};
  for (; number > 1; --number) {
    const size_t at = find(text, separator);
    if (at == text.npos) return {};
    text.remove_prefix(at + separator.size());
  }
  return text.substr(0, find(text, separator));
}

std::string_view notEmpty(kit::Call &call, int argument, const char *what) {
  const std::string_view text = call.utf8(argument);
  if (text.empty()) call.refuse(argument, kWhole, what, "an empty one", "Write at least one character");
  return text;
}

void splitPart(kit::Call &call) {
  const std::string_view text = call.utf8(0);
  const std::string_view separator = notEmpty(call, 1, "a separator");
  const int number = call.number(2, -kMostCharacters, kMostCharacters);
  if (number == 0) {
    call.refuse(2, kWhole, "a number from 1, or from -1 at the end", "0", "The first part has number 1");
  }
  call.answer(partOf(text, separator, number));
}

// --- Trimming and padding -----------------------------------------------------------------------------------

enum Side { kFront = 1, kBack = 2 };

uint32_t codeOf(std::string_view character) {
  return kit::utf8Char(character.data(), character.size()).code;
}

// The characters of a text, as long as this lives; there is one at a time. A bit for each that Unicode has: a text may
// have as many.
class CharacterSet {
 public:
  explicit CharacterSet(std::string_view text) : m_text(text) { mark(true); }
  ~CharacterSet() { mark(false); }
  CharacterSet(const CharacterSet &) = delete;
  CharacterSet &operator=(const CharacterSet &) = delete;

  bool has(std::string_view character) const { return s_marked[codeOf(character)]; }

 private:
  void mark(bool there) {
    for (std::string_view rest = m_text; !rest.empty(); rest.remove_prefix(bytesOf(rest, 1))) {
      s_marked[codeOf(rest)] = there;
    }
  }

  inline static std::bitset<0x110000> s_marked;
  std::string_view m_text;
};

void trimSides(kit::Call &call, int sides) {
  std::string_view text = call.utf8(0);
  const CharacterSet set(call.has(1) ? notEmpty(call, 1, "characters to take off") : kBlanks);
  while ((sides & kFront) != 0 && !text.empty()) {
    const size_t length = bytesOf(text, 1);
    if (!set.has(text.substr(0, length))) break;
    text.remove_prefix(length);
  }
  while ((sides & kBack) != 0 && !text.empty()) {
    const size_t rest = bytesBeforeLast(text, 1);
    if (!set.has(text.substr(rest))) break;
    text = text.substr(0, rest);
  }
  call.answer(text);
}

void trim(kit::Call &call) {
  trimSides(call, kFront | kBack);
}
void trimLeft(kit::Call &call) {
  trimSides(call, kFront);
}
void trimRight(kit::Call &call) {
  trimSides(call, kBack);
}

void pad(kit::Call &call, Side side) {
  const std::string_view text = call.utf8(0);
  const size_t length = lengthAt(call, 1);
  const std::string_view filler = call.has(2) ? call.utf8(2) : std::string_view(" ");
  if (characters(filler) != 1) {
    call.refuse(2, kWhole, "one character", filler.empty() ? "none" : "more",
                "It is what the text is filled up with");
  }
  const size_t has = characters(text);
  const size_t missing = length > has ? length - has : 0;
  char *out = call.result(text.size() + missing * filler.size());
  if (side == kBack) out = put(out, text);
  for (size_t i = 0; i < missing; ++i) out = put(out, filler);
  if (side == kFront) put(out, text);
}

void padLeft(kit::Call &call) {
  pad(call, kFront);
}
void padRight(kit::Call &call) {
  pad(call, kBack);
}

// --- Searching ----------------------------------------------------------------------------------------------

void length(kit::Call &call) {
  call.answer(characters(call.utf8(0)));
}

void indexOf(kit::Call &call) {
  const std::string_view text = call.utf8(0);
  const std::string_view part = notEmpty(call, 1, "a text to look for");
  const int from = call.has(2) ? call.number(2, 1, kMostCharacters) : 1;
  const size_t at = find(text, part, bytesOf(text, static_cast<size_t>(from - 1)));
  call.answer(at == text.npos ? 0 : characters(text.substr(0, at)) + 1);
}

size_t occurrences(std::string_view text, std::string_view part) {
  size_t count = 0;
  for (size_t at = find(text, part); at != text.npos; at = find(text, part, at + part.size())) ++count;
  return count;
}

void replace(kit::Call &call) {
  std::string_view text = call.utf8(0);
  const std::string_view from = notEmpty(call, 1, "a text to replace");
  const std::string_view to = call.utf8(2);
  const size_t count = occurrences(text, from);
  char *out = call.result(text.size() - count * from.size() + count * to.size());
  for (size_t at = find(text, from); at != text.npos; at = find(text, from)) {
    out = put(put(out, text.substr(0, at)), to);
    text.remove_prefix(at + from.size());
  }
  put(out, text);
}

void reverse(kit::Call &call) {
  std::string_view text = call.utf8(0);
  char *out = call.result(text.size());
  while (!text.empty()) {
    const size_t rest = bytesBeforeLast(text, 1);
    out = put(out, text.substr(rest));
    text = text.substr(0, rest);
  }
}

// clang-format off
#define TEXT {"text", "a text"}
#define COUNT "a whole number from 0 to 999999999"
#define POSITION "a whole number from -999999999 to 999999999"

constexpr kit::FunctionRow kFunctions[] = {
    {"concat",
     {{"text", "any bytes"}}, 1, 64, concat,
     "the texts, one behind the other",
     {{{"DE", "89"}, "DE89"},
      {{"Müller", ", ", "Jürgen"}, "Müller, Jürgen"},
      {{"", ""}, ""}}},

    {"substr",
     {TEXT,
      {"from", "number of the first character: from 1, or counted from the end, where -1 is the last one. In front "
               "of the text it is the first, behind the text nothing is left"},
      {"length", "how many characters at most; without it: all that follow"}}, 2, 3, substr,
     "the characters from there on",
     {{{"Zürich", "2", "3"}, "üri"},
      {{"Zürich", "4"}, "ich"},
      {{"Zürich", "-2"}, "ch"},
      {{"Zürich", "-9", "2"}, "Zü"},
      {{"Zürich", "6", "9"}, "h"},
      {{"Zürich", "7"}, ""}},
     {{{"Zürich", "0"}, "Arg[2] Len[1]: expected a position from 1, or from -1 at the end, found 0. The first "
                        "character has number 1."},
      {{"Zürich", "two"}, "Arg[2] Len[3]: expected " POSITION ", found something else."},
      {{"Zürich", "1", "-1"}, "Arg[3] Len[2]: expected " COUNT ", found one outside."},
      {{"Z\xfcrich", "1"}, "Arg[1] Len[6] Offset[1]: expected UTF-8, found a byte that is none. Take the text in "
                           "UTF-8, as formats deliver it."}}},

    {"left",
     {TEXT, {"length", "how many characters at most"}}, 2, 2, left,
     "the first characters",
     {{{"Zürich", "2"}, "Zü"}, {{"Zürich", "9"}, "Zürich"}, {{"Zürich", "0"}, ""}},
     {{{"Zürich", ""}, "Arg[2] Len[0]: expected " COUNT ", found no digits."}}},

    {"right",
     {TEXT, {"length", "how many characters at most"}}, 2, 2, right,
     "the last characters",
     {{{"Zürich", "5"}, "ürich"}, {{"Zürich", "9"}, "Zürich"}, {{"Zürich", "0"}, ""}},
     {{{"Zürich", "1.5"}, "Arg[2] Len[3]: expected " COUNT ", found something else."}}},

    {"splitPart",
     {TEXT,
      {"separator", "what stands between two parts"},
      {"number", "of the part: from 1, or counted from the end, where -1 is the last one"}}, 3, 3, splitPart,
     "that part, without the separators; empty when there are fewer",
     {{{"a;b;c", ";", "2"}, "b"},
      {{"a;b;c", ";", "-1"}, "c"},
      {{"a;b;c", ";", "4"}, ""},
      {{"a//b", "/", "2"}, ""},
      {{"a///b", "//", "-1"}, "/b"},
      {{"a => b", " => ", "1"}, "a"},
      {{"a", ";", "1"}, "a"}},
     {{{"a;b", "", "1"}, "Arg[2] Len[0]: expected a separator, found an empty one. Write at least one character."},
      {{"a;b", ";", "0"}, "Arg[3] Len[1]: expected a number from 1, or from -1 at the end, found 0. The first part "
                          "has number 1."}}},

    {"trim",
     {TEXT, {"characters", "what is taken off; without it: blanks, tabs and ends of lines"}}, 1, 2, trim,
     "the text without these characters at its ends",
     {{{"  a b \n"}, "a b"}, {{"**5.00*", "*"}, "5.00"}, {{"äöxöä", "äö"}, "x"}, {{"   "}, ""}},
     {{{"a", ""}, "Arg[2] Len[0]: expected characters to take off, found an empty one. Write at least one "
                  "character."}}},

    {"trimLeft",
     {TEXT, {"characters", "what is taken off; without it: blanks, tabs and ends of lines"}}, 1, 2, trimLeft,
     "the text without these characters at its start",
     {{{"  a "}, "a "}, {{"00120", "0"}, "120"}, {{"000", "0"}, ""}}},

    {"trimRight",
     {TEXT, {"characters", "what is taken off; without it: blanks, tabs and ends of lines"}}, 1, 2, trimRight,
     "the text without these characters at its end",
     {{{"  a "}, "  a"}, {{"1.500", "0"}, "1.5"}}},

    {"padLeft",
     {TEXT, {"length", "of the result, in characters"}, {"character", "what is put in front; without it: a blank"}},
     2, 3, padLeft,
     "the text, filled up in front; a longer one as it is",
     {{{"42", "6", "0"}, "000042"}, {{"Bär", "5"}, "  Bär"}, {{"123", "2", "0"}, "123"}},
     {{{"42", "6", ""}, "Arg[3] Len[0]: expected one character, found none. It is what the text is filled up with."},
      {{"42", "6", "ab"}, "Arg[3] Len[2]: expected one character, found more. It is what the text is filled up "
                          "with."},
      {{"42", "2000000"}, "expected a result of at most 1048576 bytes, found 2000000 bytes. Shorten the arguments."}}},

    {"padRight",
     {TEXT, {"length", "of the result, in characters"}, {"character", "what is put behind; without it: a blank"}},
     2, 3, padRight,
     "the text, filled up behind; a longer one as it is",
     {{{"Bär", "5"}, "Bär  "}, {{"a", "3", "…"}, "a……"}, {{"123", "2"}, "123"}},
     {{{"a", "-3"}, "Arg[2] Len[2]: expected " COUNT ", found one outside."}}},

    {"repeat",
     {{"text", "any bytes"}, {"count", "how often"}}, 2, 2, repeat,
     "the text that many times",
     {{{"ab", "3"}, "ababab"}, {{"ab", "0"}, ""}, {{"", "999999999"}, ""}},
     {{{"ab", "999999999"}, "expected a result of at most 1048576 bytes, found 1999999998 bytes. Shorten the "
                            "arguments."}}},

    {"replace",
     {TEXT, {"from", "what is looked for"}, {"to", "what is written instead; may be empty"}}, 3, 3, replace,
     "the text with every `from`, first to last, replaced; what is written is not looked at again",
     {{{"1.000.000,00", ".", ""}, "1000000,00"},
      {{"Straße", "ß", "ss"}, "Strasse"},
      {{"aaa", "aa", "ba"}, "baa"},
      {{"abc", "x", "y"}, "abc"}},
     {{{"abc", "", "x"}, "Arg[2] Len[0]: expected a text to replace, found an empty one. Write at least one "
                         "character."}}},

    {"length",
     {TEXT}, 1, 1, length,
     "its number of characters",
     {{{"Zürich"}, "6"}, {{""}, "0"}, {{"e\xcc\x81"}, "2"}},
     {{{"Z\xfcrich"}, "Arg[1] Len[6] Offset[1]: expected UTF-8, found a byte that is none. Take the text in UTF-8, "
                      "as formats deliver it."}}},

    {"indexOf",
     {TEXT, {"part", "what is looked for"}, {"from", "number of the first character to look at; without it: 1"}},
     2, 3, indexOf,
     "the number of the character where the part begins for the first time; 0 when it is nowhere",
     {{{"Zürich", "ri"}, "3"}, {{"a-b-c", "-", "3"}, "4"}, {{"Zürich", "RI"}, "0"}, {{"abc", "c", "9"}, "0"}},
     {{{"abc", ""}, "Arg[2] Len[0]: expected a text to look for, found an empty one. Write at least one "
                    "character."},
      {{"abc", "c", "0"}, "Arg[3] Len[1]: expected a whole number from 1 to 999999999, found one outside."}}},

    {"reverse",
     {TEXT}, 1, 1, reverse,
     "its characters, last to first",
     {{{"Zürich"}, "hcirüZ"}, {{""}, ""}}},
};
// clang-format on

}  // namespace

constinit const kit::Topic kText =
    kit::topic<kFunctions>("Text",
                           "Texts are UTF-8. Positions, numbers and lengths are those of characters (code "
                           "points), not of bytes; a letter with a combining accent behind it is two.");

}  // namespace cvt::functions
