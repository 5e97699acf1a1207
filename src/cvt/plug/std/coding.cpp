// coding.cpp: bytes as text and back, and character sets.
#include <algorithm>
#include <climits>
#include <string>

#include "base64.h"
#include "kit/charset.h"
#include "kit/fault.h"
#include "settings.h"
#include "topics.h"

namespace cvt::functions {

using namespace std::literals;

namespace {

constexpr size_t kWhole = kit::Fault::kHere;
constexpr size_t kMaxSetName = 40;
constexpr char kHex[] = "0123456789ABCDEF";

size_t f_mostBytes = INT_MAX - 1;  // of a result

// --- Base64 and hexadecimal digits ---------------------------------------------------------------------------

template <Base64 kForm>
void base64Encode(kit::Call &call) {
  const std::string_view bytes = call.text(0);
  encodeBase64(bytes, kForm, call.result(base64Length(bytes.size(), kForm)));
}

template <Base64 kForm>
void base64Decode(kit::Call &call) {
  const std::string_view text = call.text(0);
  const Base64Result result = decodeBase64(text, kForm, call.result(base64Bytes(text, kForm)));
  if (result.expected != nullptr) {
    call.refuse(0, result.at, result.expected, result.at < text.size() ? "something else" : "the end");
  }
}

void hexEncode(kit::Call &call) {
  const std::string_view bytes = call.text(0);
  char *out = call.result(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    *out++ = kHex[byte >> 4];
    *out++ = kHex[byte & 0x0F];
  }
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Two digits at an offset of an argument, which has them.
char hexByte(kit::Call &call, std::string_view text, size_t at) {
  for (const size_t i : {at, at + 1}) {
    if (hexValue(text[i]) < 0) call.refuse(0, i, "a hexadecimal digit", "another character");
  }
  return static_cast<char>(hexValue(text[at]) << 4 | hexValue(text[at + 1]));
}

void hexDecode(kit::Call &call) {
  const std::string_view text = call.text(0);
  if (text.size() % 2 != 0)
    call.refuse(0, text.size(), "two hexadecimal digits a byte", "the end behind one");
  char *out = call.result(text.size() / 2);
  for (size_t i = 0; i < text.size(); i += 2) *out++ = hexByte(call, text, i);
}

// --- Addresses -----------------------------------------------------------------------------------------------

bool isUnreserved(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
         "-._~"sv.find(c) != std::string_view::npos;
}

void urlEncode(kit::Call &call) {
  const std::string_view bytes = call.text(0);
  size_t length = bytes.size();
  for (const char c : bytes) length += isUnreserved(c) ? 0 : 2;
  char *out = call.result(length);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!isUnreserved(c)) {
      *out++ = '%';
      *out++ = kHex[byte >> 4];
      *out++ = kHex[byte & 0x0F];
    } else {
      *out++ = c;
    }
  }
}

void urlDecode(kit::Call &call) {
  const std::string_view text = call.text(0);
  size_t length = 0;
  for (size_t i = 0; i < text.size(); i += text[i] == '%' ? 3 : 1) {
    if (text[i] == '%' && text.size() - i < 3)
      call.refuse(0, text.size(), "two digits behind a %", "the end");
    ++length;
  }
  char *out = call.result(length);
  for (size_t i = 0; i < text.size(); i += text[i] == '%' ? 3 : 1) {
    *out++ = text[i] == '%' ? hexByte(call, text, i + 1) : text[i];
  }
}

// --- Character sets ------------------------------------------------------------------------------------------

// The name in capitals, so that the sets that are kept open are not more than there are names of sets.
const kit::Charset &charset(kit::Call &call, int argument) {
  const std::string_view text = call.text(argument);
  char name[kMaxSetName + 1] = {};
  bool isName = !text.empty() && text.size() <= kMaxSetName;
  for (size_t i = 0; isName && i < text.size(); ++i) {
    name[i] = text[i] >= 'a' && text[i] <= 'z' ? static_cast<char>(text[i] - ('a' - 'A')) : text[i];
    isName = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.:"sv.find(name[i]) != std::string_view::npos;
  }
  const kit::Charset *set = isName ? kit::Charset::find(name) : nullptr;
  if (set == nullptr) {
    call.refuse(argument, kWhole, "a character set", "another text",
                "Sets are those of iconv -l, such as ISO-8859-1, IBM037 and UTF-16LE");
  }
  return *set;
}

// The first argument, converted by the member of the set in the second. most: bytes that the result has at most; it
// may have less by far, so that the limit is what counts.
void convert(kit::Call &call, const kit::Charset &set, size_t most,
             decltype(&kit::Charset::encode) conversion) {
  const std::string_view text = call.text(0);
  const size_t room = std::min(most, f_mostBytes);
  const kit::Converted converted = (set.*conversion)(text.data(), text.size(), call.result(room), room);
  if (converted.damage == kit::Damage::NoRoom) {
    throw kit::Fault(kWhole, "a result of at most " + std::to_string(room) + " bytes", "a longer one",
                     "Shorten the arguments");
  }
  if (converted.damage != kit::Damage::None) {
    call.refuse(0, converted.read, kit::damageText(converted.damage), "others");
  }
  call.shorten(converted.written);
}

void toCharset(kit::Call &call) {
  const kit::Charset &set = charset(call, 1);
  const size_t length = call.text(0).size();
  const bool asLong = set.oneByte() || set.isUtf8();
  convert(call, set, asLong ? length : length * 4 + 16, &kit::Charset::encode);  // with marks and shifts
}

void fromCharset(kit::Call &call) {
  const kit::Charset &set = charset(call, 1);
  convert(call, set, set.decodedRoom(call.text(0).size()), &kit::Charset::decode);
}

// --- The table -----------------------------------------------------------------------------------------------

// clang-format off
constexpr kit::FunctionRow kFunctions[] = {
    {"base64Encode",
     {{"bytes", "any bytes"}}, 1, 1, base64Encode<Base64::Plain>,
     "the bytes in Base64 of RFC 4648, on one line",
     {{{"foobar"}, "Zm9vYmFy"},
      {{"fooba"}, "Zm9vYmE="},
      {{"f"}, "Zg=="},
      {{""}, ""}}},

    {"base64Decode",
     {{"text", "Base64 of RFC 4648, without line breaks"}}, 1, 1, base64Decode<Base64::Plain>,
     "the bytes",
     {{{"Zm9vYmE="}, "fooba"},
      {{"/wA="}, "\xff\0"sv},
      {{""}, ""}},
     {{{"Zm9vYmE"}, "Arg[1] Len[7] Offset[7]: expected whole groups of four, filled up with =, found the end."},
      {{"Zm9v\nYmE="}, "Arg[1] Len[9] Offset[9]: expected whole groups of four, filled up with =, found the end."},
      {{"Zm9v-mFy"}, "Arg[1] Len[8] Offset[4]: expected letters, digits, + and /, found something else."},
      {{"Zh=="}, "Arg[1] Len[4] Offset[1]: expected a last letter without bits of a byte that is not there, found "
                 "something else."}}},

    {"base64UrlEncode",
     {{"bytes", "any bytes"}}, 1, 1, base64Encode<Base64::Url>,
     "the bytes in the Base64 of RFC 4648 for addresses and file names, not filled up with =",
     {{{"\xff\xef\xfe"}, "_-_-"},
      {{"f"}, "Zg"}}},

    {"base64UrlDecode",
     {{"text", "such Base64, not filled up"}}, 1, 1, base64Decode<Base64::Url>,
     "the bytes",
     {{{"_-_-"}, "\xff\xef\xfe"},
      {{"Zm9vYg"}, "foob"}},
     {{{"Zg=="}, "Arg[1] Len[4] Offset[2]: expected letters, digits, - and _, not filled up with =, found something "
                 "else."},
      {{"Zm9vY"}, "Arg[1] Len[5] Offset[4]: expected two letters at least for the last byte, found something "
                  "else."}}},

    {"hexEncode",
     {{"bytes", "any bytes"}}, 1, 1, hexEncode,
     "two hexadecimal digits a byte, letters in capitals",
     {{{"AZ\xe9"}, "415AE9"},
      {{""}, ""}}},

    {"hexDecode",
     {{"text", "two hexadecimal digits a byte, letters in capitals or not"}}, 1, 1, hexDecode,
     "the bytes",
     {{{"415ae9"}, "AZ\xe9"},
      {{""}, ""}},
     {{{"415"}, "Arg[1] Len[3] Offset[3]: expected two hexadecimal digits a byte, found the end behind one."},
      {{"4G"}, "Arg[1] Len[2] Offset[1]: expected a hexadecimal digit, found another character."}}},

    {"urlEncode",
     {{"bytes", "any bytes"}}, 1, 1, urlEncode,
     "the bytes for a part of an address: all but letters, digits and `-._~` as % and two digits (RFC 3986)",
     {{{"a b/c?d=1&e"}, "a%20b%2Fc%3Fd%3D1%26e"},
      {{"Z\xc3\xbcrich"}, "Z%C3%BCrich"}}},

    {"urlDecode",
     {{"text", "a part of an address; a + is a +"}}, 1, 1, urlDecode,
     "the bytes",
     {{{"a%20b%2fc"}, "a b/c"},
      {{"1+1"}, "1+1"}},
     {{{"100%"}, "Arg[1] Len[4] Offset[4]: expected two digits behind a %, found the end."},
      {{"%4x"}, "Arg[1] Len[3] Offset[2]: expected a hexadecimal digit, found another character."}}},

    {"toCharset",
     {{"text", "a text"}, {"set", "a character set of iconv, such as ISO-8859-1"}}, 2, 2, toCharset,
     "the bytes of the text in that set",
     {{{"Z\xc3\xbcrich", "ISO-8859-1"}, "Z\xfcrich"},
      {{"123", "IBM037"}, "\xf1\xf2\xf3"},
      {{"A\xe2\x82\xac", "UTF-16LE"}, "A\0\xac\x20"sv}},
     {{{"\xe2\x82\xac""5", "ISO-8859-1"}, "Arg[1] Len[4] Offset[0]: expected characters that the set has, found "
                                          "others."},
      {{"Z\xfcrich", "IBM037"}, "Arg[1] Len[6] Offset[1]: expected valid characters, found others."},
      {{"a", "ASCII//TRANSLIT"}, "Arg[2] Len[15]: expected a character set, found another text. Sets are those of "
                                 "iconv -l, such as ISO-8859-1, IBM037 and UTF-16LE."}}},

    {"fromCharset",
     {{"bytes", "bytes of a text in that set"}, {"set", "a character set of iconv, such as ISO-8859-1"}},
     2, 2, fromCharset,
     "the text",
     {{{"Z\xfcrich", "iso-8859-1"}, "Z\xc3\xbcrich"},
      {{"\xf1\xf2\xf3", "IBM037"}, "123"}},
     {{{"A\0\xac"sv, "UTF-16LE"}, "Arg[1] Len[3] Offset[2]: expected a whole character, found others."}}},
};
// clang-format on

constexpr const char *kAbout =
    "Values are texts in UTF-8. Bytes that are none, such as those of another character set, are for a field "
    "that its format writes as bytes, or for a function that makes a text of them: "
    "`hexEncode(toCharset(text, set))`. Conversions are exact: what a set does not have is refused, never "
    "replaced.";

}  // namespace

constinit const kit::Topic kCoding = kit::topic<kFunctions>("Bytes and character sets", kAbout);

void configureCoding(const Settings &settings) {
  f_mostBytes = static_cast<size_t>(settings.nMaxResult);
}

}  // namespace cvt::functions
