// plain_run.h: fields beside each other that are plain: printable ASCII texts, and numbers, of fixed length, of which
// nothing else is asked. They are read and written in one go, which is most of what most records are. Where a value
// turns out to be anything else, the field is done by itself (field.h), and that tells what is wrong with it.
#pragma once

#include <string_view>
#include <vector>

#include "kit/number.h"
#include "kit/values.h"

namespace cvt::fix {

struct FieldPlan;
struct LevelPlan;

enum class PlainKind : unsigned char {
  Text,
  Digits,  // ASCII digits, which most numbers are
  Number,  // any other form
};

struct PlainField {
  const char *name;
  int slot;
  unsigned length;
  PlainKind kind;
  char pad;  // behind a text
  kit::NumberSpec number;
};

struct PlainRun {
  std::vector<PlainField> fields;
  size_t width = 0;  // of all of them
  size_t room = 0;   // that their values may need
};

// Finds the runs of a level and notes them at the ops that they begin with.
void findPlainRuns(LevelPlan &level);

// Reads and stores fields as far as they are plain; how many. REQUIRES: run.width bytes at `in`.
size_t readPlain(const PlainRun &run, const char *in, kit::List values, kit::Store &store);

// Writes fields as far as they are plain; how many. `field` is told each before its value is looked at.
// REQUIRES: room for run.width bytes at `out`.
template <class Tell>
size_t writePlain(const PlainRun &run, char *out, const kit::List &values, Tell tell);

// The bytes of the first `count` fields.
size_t widthOf(const PlainRun &run, size_t count);

// Writes one; false where it is not plain.
bool writePlain(const PlainField &field, std::string_view value, char *out);

template <class Tell>
size_t writePlain(const PlainRun &run, char *out, const kit::List &values, Tell tell) {
  size_t done = 0;
  for (const PlainField &field : run.fields) {
    tell(field.name);
    if (!writePlain(field, values.get(field.slot), out)) break;
    out += field.length;
    ++done;
  }
  return done;
}

}  // namespace cvt::fix
