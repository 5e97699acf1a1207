// rule.h: what a definition says of a value whatever its format: whether it must be there, how long it may
// be, what stands in for it, and which loop it counts or numbers. The same in every format, with the same
// attributes:
//
//   nMandatory   the value must be there, in both directions
//   nKeepEmpty   1: an empty value is written; 2: when it was given, so that what is there but empty stays
//                so from one format to another. Both allow an empty value of a mandatory field
//   nMaxLen      in characters
//   psDefault    written when the value is empty
//   psConst      written always; nothing else may be read or converted into it
//   nPosition    the number of the repetition it stands in, from 1: written always, whatever the value says;
//                no other may be read
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "bytes.h"
#include "path.h"
#include "shape.h"
#include "values.h"

namespace cvt::kit {

// What becomes of an empty value, by nKeepEmpty.
enum class Empty { Omit, Keep, KeepGiven };

struct Rule {
  int slot;
  const char *node;  // the field's name
  bool mandatory;
  bool position;  // it is the number of its repetition
  Empty empty;
  size_t maxLength;      // in characters; 0: no limit
  const char *fallback;  // psDefault, or null
  const char *constant;  // psConst, or null
  int countedLoop;       // slot of the loop whose repetitions it counts; -1: an ordinary value
  bool asIs;             // nothing is asked of the value: it is read and written as it is
};

// What a record says, for Rules::make.
struct RuleText {
  int nMandatory;
  int nKeepEmpty;
  int nMaxLen;
  const char *psDefault;
  const char *psConst;
  int nPosition = 0;
};

// The rules of one level's fields.
class Rules {
 public:
  explicit Rules(const Level &level);

  // The rule of the field at that position of the level. path and record say where it is written. Throws
  // Misconfigured for a constant with a default, for either that is too long, for a count field with either or of two loops, and for a
  // position outside of any loop or on what is supplied otherwise.
  Rule make(size_t position, const RuleText &text, const std::string &path, const void *record) const;

  const Level &level() const { return m_level; }

 private:
  const Level &m_level;
  std::vector<int> m_counted;  // for each node, the slot of the loop that it counts
};

// The digits of a count or a position while it is written.
struct Digits {
  char bytes[16];
};

namespace detail {

// For rules that ask for something.
void checkRead(const Rule &rule, std::string_view value, const Path &path);
std::string_view textToWrite(const Rule &rule, const List &list, const Path &path, Digits &digits);

}  // namespace detail

// A value that was read at that place: the constant, the position, mandatory and not too long. Throws Fault.
inline void checkRead(const Rule &rule, std::string_view value, const Path &path) {
  if (!rule.asIs) detail::checkRead(rule, value, path);
}

// Stores a copy of a value that was read and checked.
inline void putRead(const Rule &rule, List list, Store &store, std::string_view bytes) {
  if (bytes.empty() && rule.empty != Empty::KeepGiven) return;
  char *const copy = store.take(bytes.size());
  copyShort(copy, bytes.data(), bytes.size());
  list.put(rule.slot, copy, bytes.size());
}

// The text to be written for a field at that place: its count, position, constant, value or default. Throws
// Fault when it must not be empty but is, is too long, or contradicts the constant.
inline std::string_view textToWrite(const Rule &rule, const List &list, const Path &path, Digits &digits) {
  return rule.asIs ? list.get(rule.slot) : detail::textToWrite(rule, list, path, digits);
}

// Whether the field is written at all, with that text.
inline bool isWritten(const Rule &rule, const List &list, std::string_view text) {
  if (!text.empty() || rule.empty == Empty::Keep) return true;
  return rule.empty == Empty::KeepGiven && list.given(rule.slot);
}

// Whether the message gives the field something to write. A constant, a default or a position is nothing.
bool given(const Rule &rule, const List &list);

// A count field that a parsed list must agree with.
struct Count {
  int slot;
  int loop;
  std::string node;  // with the groups around it
  const char *loopNode;
};

std::vector<Count> countsOf(const Level &level);

// After all of the list was read: a count that is there must be right; one that is not is filled in when
// there is something to count. Throws Fault with the path at the count field.
void checkCount(const Count &count, List list, Store &store, Path &path);

}  // namespace cvt::kit
