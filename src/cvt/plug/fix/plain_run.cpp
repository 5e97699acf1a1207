#include "plain_run.h"

#include "kit/bytes.h"
#include "kit/plain_digits.h"
#include "plan.h"

namespace cvt::fix {

namespace {

bool isPlain(const Op &op, const FieldPlan &field) {
  if (op.kind != Kind::Field || !field.counts.empty() || !field.allowed.empty()) return false;
  if (field.constant || field.hasDefault || field.chars) return false;
  if (field.isNumber())
    return !field.blankAllowed && (field.type != FieldType::Number || field.charset->containsAscii());
  return field.type == FieldType::Text && field.trims && !field.right && !field.checked &&
         field.blankAllowed && field.charset->containsAscii();
}

PlainKind kindOf(const FieldPlan &field) {
  if (!field.isNumber()) return PlainKind::Text;
  return field.plainDigits ? PlainKind::Digits : PlainKind::Number;
}

// What the value needs: digits may get a zero and a point; and the zero byte behind each.
size_t roomOf(const PlainField &field) {
  return field.kind == PlainKind::Number ? kit::kCanonicalRoom : field.length + 3;
}

// A field by itself is done by itself.
constexpr size_t kFewest = 2;

void keep(LevelPlan &level, size_t first, PlainRun &run) {
  if (run.fields.size() >= kFewest) {
    level.ops[first].run = static_cast<int>(level.runs.size());
    level.runs.push_back(run);
  }
  run = {};
}

}  // namespace

void findPlainRuns(LevelPlan &level) {
  std::vector<bool> ends(level.ops.size() + 1);  // a group or the level ends in front of it
  for (const Op &op : level.ops)
    ends[static_cast<size_t>(op.next)] = ends[static_cast<size_t>(op.next)] || op.kind != Kind::Field;
  PlainRun run;
  size_t first = 0;
  for (size_t i = 0; i < level.ops.size(); ++i) {
    if (ends[i]) keep(level, first, run);
    const Op &op = level.ops[i];
    if (!isField(op.kind) || !isPlain(op, level.fields[op.detail])) {
      keep(level, first, run);
      continue;
    }
    const FieldPlan &field = level.fields[op.detail];
    if (run.fields.empty()) first = i;
    run.fields.push_back(
        {field.name, op.slot, static_cast<unsigned>(field.length), kindOf(field), field.pad, field.number});
    run.width += field.length;
    run.room += roomOf(run.fields.back());
  }
  keep(level, first, run);
}

size_t readPlain(const PlainRun &run, const char *in, kit::List values, kit::Store &store) {
  char *out = store.take(run.room);
  size_t done = 0;
  for (const PlainField &field : run.fields) {
    size_t length = 0;
    if (field.kind == PlainKind::Text) {
      length = kit::trimmedEnd(in, field.length, field.pad);
      if (!kit::isPrintable(in, length)) break;
      kit::copyShort(out, in, length);
    } else if (field.kind == PlainKind::Digits) {
      const kit::PlainDigits plain(in, field.length, static_cast<size_t>(field.number.decimals));
      if (!plain.digits()) break;
      length = plain.length();
      plain.put(out);
    } else {
      const kit::NumberResult number = kit::readNumber(field.number, in, field.length, out);
      if (number.expected != nullptr) break;
      length = number.length;
    }
    values.put(field.slot, out, length);
    out += length + 1;
    in += field.length;
    ++done;
  }
  store.giveBack(out);
  return done;
}

size_t widthOf(const PlainRun &run, size_t count) {
  size_t width = 0;
  for (size_t i = 0; i < count; ++i) width += run.fields[i].length;
  return width;
}

bool writePlain(const PlainField &field, std::string_view value, char *out) {
  if (field.kind == PlainKind::Number)
    return kit::writeNumber(field.number, value, out, field.length).expected == nullptr;
  if (field.kind == PlainKind::Digits)
    return kit::putPlainDigits(value, static_cast<size_t>(field.number.decimals), out, field.length);
  if (value.size() > field.length || !kit::isPrintable(value.data(), value.size())) return false;
  kit::copyShort(out, value.data(), value.size());
  kit::fillShort(out + value.size(), field.pad, field.length - value.size());
  return true;
}

}  // namespace cvt::fix
