// plan.h: a definition as the records and fields it stands for. Made once when the definition loads; reading
// and writing run over it and address values by slot.
//
//   definition                      plan
//   Day                             a list of records
//     Header (CsvRecord 01)           record 01: two fields
//       Sender, Date
//     Accounts (loop, CsvRecord 03)   loop of
//       Number                          record 03: a field, and a loop of fields inside the record
//       Sums (loop)                       Type, Amount
//         Type, Amount
//       Items (loop, CsvRecord 16)      and the records that belong to it: a loop of
//         Code, Amount                    record 16: two fields
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cvt_message.h"
#include "kit/charset.h"
#include "kit/name_table.h"
#include "kit/rule.h"
#include "records.h"
#include "scan.h"

namespace cvt::csv {

// A text with the bytes that stand for it in the output's character set.
struct Literal {
  std::string text;
  std::string bytes;

  bool empty() const { return text.empty(); }
};

// How fields and records are told apart.
struct Dialect {
  Literal separator;
  Literal recordEnd;
  Literal tagFront;
  Literal tagBack;
  Literal continuation;  // the tag with its marks
  Literal quote;
  Literal lf;  // empty where records stand in one line
  Literal crlf;
  Literal comment;
  char quoteByte = 0;        // 0: there are none
  char escapeByte = 0;       // 0: a quote is doubled
  bool innerQuotes = false;  // a quote inside a field without quotes means nothing
  bool terminated = false;
  bool tagged = false;
  bool skipBlank = false;
  bool longMarks = false;  // without quotes and escapes: a value may not end like a mark begins
  bool guardMark = true;   // a text must not begin with what looks like a byte order mark
  LineEnd lineEnd = LineEnd::Lf;
  LastLineEnd lastLineEnd = LastLineEnd::Optional;
  size_t maxField = 0;   // 0: no limit
  size_t maxRecord = 0;  // 0: no limit
  Marks marks;           // the bytes at which a field may end or must be looked at
  const kit::Charset *charset = nullptr;
  kit::NameTable tags;
};

enum class Shape : unsigned char { Variable, Fixed, Rest };

// What a call needs of every field.
struct Field : kit::Rule {
  const char *column = nullptr;  // its name in a header line
  Shape shape = Shape::Variable;
  bool quoted = false;  // always written in quotes
  bool padded = false;
  bool simple = false;  // no constant, no count and no position
  char pad = ' ';
  size_t length = 0;  // fixed: characters
};

enum class ItemKind : unsigned char { Field, Group, Choice, Loop, Record, AnyOrder };

struct Compound;

// One node of the definition.
struct Item {
  ItemKind kind = ItemKind::Field;
  Field field{};
  std::unique_ptr<Compound> compound;  // all kinds but Field
};

// A column of a record, for a header line whose names may come in any order.
struct Column {
  const Field *field;
  std::vector<const char *> groups;  // that it stands in, for the path
};

// A tag that records may begin with.
struct Start {
  int tag;
  size_t member;  // of them, the one that begins with it
};

struct Compound {
  const char *node = nullptr;  // null: no node of its own, such as the record that a loop repeats
  bool ofRecords = false;      // it stands for records, not for fields of one
  bool mandatory = false;

  std::vector<Item> fields;   // of a record; members of a group or a choice, body of a loop of fields
  std::vector<Item> records;  // that belong to a record; members of a group, body of a loop of records

  const Field *first = nullptr;  // of a record, of a loop of fields

  // Records, and how what begins with records may begin.
  int tag = -1;  // position of the record's tag; -1: it has none
  Literal tagText;
  bool shortened = false;     // fields at the end may be missing
  bool header = false;        // a line of column names stands before it
  bool byColumn = false;      // its fields come in the order of that line
  int wrapsSlot = -1;         // of the field that remembers where the record was continued
  std::vector<Start> starts;  // by their tags, each once
  bool startsAny = false;

  // Loops.
  int slot = -1;
  int bodySlots = 0;
  int countSlot = -1;  // loop of fields: of the field that holds its count
  size_t least = 0;
  size_t most = 0;                 // 0: no limit
  std::vector<kit::Count> counts;  // count fields of loops of records in a repetition

  // Choices.
  Field select{};                               // the field that chooses
  std::vector<std::vector<std::string>> cases;  // for each of the members; none: all other values
  std::vector<std::string> none;

  // How it begins with that tag, or null.
  const Start *startOf(int wanted) const {
    const auto at = std::lower_bound(starts.begin(), starts.end(), wanted,
                                     [](const Start &start, int number) { return start.tag < number; });
    return at != starts.end() && at->tag == wanted ? &*at : nullptr;
  }
};

struct Plan {
  Dialect dialect;
  Item top;  // a record, or a group of records
  int slots = 0;
  std::vector<kit::Count> counts;
  bool whole = true;
  bool tagged = false;
  bool quotedTags = false;
  size_t tagCount = 0;
  std::string knownTags;  // for messages

  Header header = Header::None;
  bool skipUnknown = false;
  size_t maxColumns = 0;
  std::vector<Column> columns;
  std::vector<std::string> columnNames;
  kit::NameTable columnsByName;
  std::string headerLine;  // in the output's character set

  int endSlot = -1;      // of the field of kind end
  int lineEndSlot = -1;  // of the field of kind line-end
  Mark mark = Mark::Refuse;
  std::string markBytes;
};

// Value of a field of kind end when the message ended without its last line end.
inline constexpr std::string_view kOpenEnd = "open";

// The first field that may stand in the text, or null.
const Field *firstField(const std::vector<Item> &fields);

// The value of a field of fixed length, of what stands there.
inline std::string_view withoutPads(const Field &field, std::string_view text) {
  while (field.padded && !text.empty() && text.back() == field.pad) text.remove_suffix(1);
  return text;
}

// Whether a mark would be found inside the value, or begin there, when the mark stands behind it.
bool collides(std::string_view value, std::string_view mark);

// A count as it is written: without leading zeros, 0 for none.
std::string_view plainCount(std::string_view text);

// What chooses where the selecting field has that value: what is read of it once it is written.
std::string_view selecting(const Field &select, std::string_view value);

// The member of a choice that it chooses: its position, -1 for none, the number of members for a value
// that the choice does not know.
int chosenMember(const Compound &choice, std::string_view value);

// The values that a choice knows, for messages.
std::string knownCases(const Compound &choice);

// Throws Misconfigured.
std::unique_ptr<Plan> compilePlan(const Msg &msg, const CsvMsg &text);

}  // namespace cvt::csv
