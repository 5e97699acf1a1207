#include "compile_dialect.h"

#include "kit/fault.h"
#include "kit/log.h"

namespace cvt::csv {

using kit::Misconfigured;

namespace {

[[noreturn]] void refuse(const CsvMsg &text, const std::string &expected, const std::string &found,
                         const std::string &advice = {}) {
  throw Misconfigured("", &text, expected, found, advice);
}

const kit::Charset &findCharset(const CsvMsg &text) {
  const kit::Charset *charset = kit::Charset::find(text.psCharset);
  if (charset == nullptr) {
    refuse(text, "a character set that iconv knows in psCharset", kit::quoted(text.psCharset),
           "Write UTF-8, or see `iconv -l`");
  }
  // Marks and values are written one by one: a set that begins each text with a mark cannot be written so.
  char one[16];
  char two[16];
  const size_t single = charset->encode(",", 1, one, sizeof one).written;
  if (charset->encode(",,", 2, two, sizeof two).written != 2 * single) {
    refuse(text, "a character set without a byte order mark in psCharset", text.psCharset,
           "Write UTF-16LE or UTF-16BE");
  }
  if (!charset->isUtf8() && text.nWhole == 0) {
    refuse(text, "nWhole=\"1\" with psCharset", "nWhole=\"0\"",
           "Only texts in UTF-8 can end before the buffer does");
  }
  return *charset;
}

// The one ASCII character of an attribute, or 0 when it is absent or empty.
char byteOf(const CsvMsg &text, const char *value, const char *attribute) {
  if (value == nullptr || *value == '\0') return 0;
  if (value[1] == '\0' && value[0] > ' ' && value[0] < 0x7F) return value[0];
  refuse(text, std::string("one printable ASCII character in ") + attribute, kit::quoted(value));
}

void checkMark(const CsvMsg &text, const Literal &mark, const char *attribute) {
  for (const char c : mark.text) {
    if (c != '\n' && c != '\r') continue;
    refuse(text, std::string("no line end in ") + attribute, kit::quoted(mark.text),
           "Line ends are said by psLineEnd");
  }
  if (!mark.empty() && static_cast<unsigned char>(mark.text[0]) >= 0x80) {
    refuse(text, std::string("an ASCII character at the start of ") + attribute, kit::quoted(mark.text));
  }
}

// Each mark begins with a byte of its own, so that one look at a byte tells which it is.
void addMark(const CsvMsg &text, Dialect &dialect, char first, const char *attribute) {
  if (dialect.marks.has(first)) {
    refuse(text, std::string("a character of its own at the start of ") + attribute,
           kit::quoted(std::string(1, first)) + ", which another mark begins with");
  }
  dialect.marks.add(first);
}

void addMarks(const CsvMsg &text, Dialect &dialect) {
  addMark(text, dialect, dialect.separator.text[0], "psSeparator");
  if (dialect.quoteByte != 0) addMark(text, dialect, dialect.quoteByte, "psQuote");
  if (dialect.escapeByte != 0) addMark(text, dialect, dialect.escapeByte, "psEscape");
  if (!dialect.recordEnd.empty()) addMark(text, dialect, dialect.recordEnd.text[0], "psRecordEnd");
  if (dialect.lineEnd != LineEnd::None) {
    addMark(text, dialect, '\n', "psLineEnd");
    addMark(text, dialect, '\r', "psLineEnd");
  } else if (dialect.recordEnd.empty()) {
    addMark(text, dialect, dialect.tagFront.text[0], "psTagFront");
  }
}

void checkTogether(const CsvMsg &text, const Dialect &dialect) {
  if (dialect.lineEnd == LineEnd::None && dialect.recordEnd.empty() && dialect.tagFront.empty()) {
    refuse(text, "psRecordEnd or psTagFront with psLineEnd=\"none\"", "neither",
           "Something must tell where a record ends");
  }
  if (dialect.lineEnd == LineEnd::None && (!dialect.comment.empty() || dialect.skipBlank)) {
    refuse(text, "lines, for psComment and psBlankLines", "psLineEnd=\"none\"");
  }
  if (dialect.terminated && (dialect.quoteByte != 0 || !dialect.continuation.empty())) {
    refuse(text, "psQuote=\"\" and no psContinuation with nTerminated", "one of them");
  }
  if (dialect.lineEnd == LineEnd::None && dialect.lastLineEnd == LastLineEnd::Required &&
      dialect.recordEnd.empty()) {
    refuse(text, "lines or a psRecordEnd, for psLastLineEnd=\"required\"", "psLineEnd=\"none\"");
  }
  if (dialect.tagFront.empty() != dialect.tagBack.empty() && dialect.tagBack.empty()) {
    refuse(text, "psTagBack with psTagFront", "none");
  }
}

// What the marks must not be because of what else their bytes mean.
void checkMarks(const CsvMsg &text, const Dialect &dialect) {
  for (const char meant : std::string_view("nrt")) {
    if (dialect.quoteByte != 0 || dialect.escapeByte == 0 || !dialect.marks.has(meant)) continue;
    refuse(text, "marks that begin with none of n, r and t, with psEscape and without quotes",
           kit::quoted(std::string(1, meant)), "Behind the escape they mean line ends and tabs");
  }
  if (!dialect.marks.absentIn(dialect.comment.text)) {
    refuse(text, "no byte that a mark begins with in psComment", kit::quoted(dialect.comment.text));
  }
}

}  // namespace

Literal literal(const Dialect &dialect, const char *text, const void *record, const char *attribute) {
  Literal made;
  if (text == nullptr) return made;
  made.text = text;
  made.bytes.resize(made.text.size() * 4 + 16);
  const kit::Converted done =
      dialect.charset->encode(made.text.data(), made.text.size(), made.bytes.data(), made.bytes.size());
  if (done.damage != kit::Damage::None) {
    throw Misconfigured("", record, std::string(attribute) + " in characters of " + dialect.charset->name(),
                        kit::quoted(made.text));
  }
  made.bytes.resize(done.written);
  return made;
}

void compileDialect(const CsvMsg &text, Dialect &dialect) {
  dialect.charset = &findCharset(text);
  const auto mark = [&](const char *value, const char *attribute) {
    Literal made = literal(dialect, value, &text, attribute);
    checkMark(text, made, attribute);
    return made;
  };
  dialect.separator = mark(text.psSeparator, "psSeparator");
  if (dialect.separator.empty()) refuse(text, "one or more characters in psSeparator", "none");
  dialect.recordEnd = mark(text.psRecordEnd, "psRecordEnd");
  dialect.tagFront = mark(text.psTagFront, "psTagFront");
  dialect.tagBack = mark(text.psTagBack, "psTagBack");
  dialect.quoteByte = byteOf(text, text.psQuote, "psQuote");
  dialect.escapeByte = byteOf(text, text.psEscape, "psEscape");
  dialect.quote = literal(dialect, dialect.quoteByte == 0 ? "" : text.psQuote, &text, "psQuote");
  dialect.lineEnd = static_cast<LineEnd>(text.nLineEnd);
  dialect.lf = literal(dialect, dialect.lineEnd == LineEnd::None ? "" : "\n", &text, "psLineEnd");
  dialect.crlf = literal(dialect, "\r\n", &text, "psLineEnd");
  dialect.comment = mark(text.psComment, "psComment");
  dialect.lastLineEnd = static_cast<LastLineEnd>(text.nLastLineEnd);
  dialect.innerQuotes = text.nInnerQuote == static_cast<int>(InnerQuote::Keep);
  dialect.terminated = text.nTerminated != 0;
  dialect.skipBlank = text.nBlankLines == static_cast<int>(BlankLines::Skip);
  dialect.maxField = static_cast<size_t>(text.nMaxField);
  dialect.maxRecord = static_cast<size_t>(text.nMaxRecord);
  if (text.psContinuation != nullptr) {
    dialect.continuation = literal(
        dialect,
        (dialect.tagFront.text + mark(text.psContinuation, "psContinuation").text + dialect.tagBack.text)
            .c_str(),
        &text, "psContinuation");
  }
  dialect.longMarks = dialect.quoteByte == 0 && dialect.escapeByte == 0 &&
                      (dialect.separator.text.size() > 1 || dialect.recordEnd.text.size() > 1 ||
                       dialect.tagFront.text.size() > 1);
  dialect.guardMark = text.nMark != static_cast<int>(Mark::Write);
  checkTogether(text, dialect);
  addMarks(text, dialect);
  checkMarks(text, dialect);
}

}  // namespace cvt::csv
