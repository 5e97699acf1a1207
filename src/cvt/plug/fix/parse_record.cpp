#include <cstring>

#include "kit/fault.h"
#include "parser.h"

namespace cvt::fix {

using kit::Fault;
using kit::List;
using kit::quoted;

namespace {

const char *separatorName(Separator separator) {
  return separator == kSeparatorLf ? "a line feed" : "a carriage return and a line feed";
}

}  // namespace

void Parser::record(const LevelPlan &level, size_t i, List &values) {
  if (m_missing != kSeparatorNone) {
    throw Fault(offset(), std::string(separatorName(m_missing)) + " in front of another record", found(0),
                "Add it, and the record");
  }
  const RecordPlan &plan = level.records[level.ops[i].detail];
  if (plan.end != End::Fields) return boundedRecord(level, i, values);
  const char *start = m_at;
  if (plan.length != 0 && plan.separator == kSeparatorNone && left() < plan.length) {
    throw Fault(offset(), "a record of " + std::to_string(plan.length) + " bytes", found(left()), "");
  }
  if (plan.length != 0 && plan.separator != kSeparatorNone && !checkLength(plan)) {
    lenientRecord(level, i, values);
    return;
  }
  members(level, i + 1, static_cast<size_t>(level.ops[i].next), values);
  // Where nothing stands behind the record, blanks are what the next one begins with.
  const bool blanksMayFollow = plan.length == 0 && plan.separator != kSeparatorNone;
  if (blanksMayFollow && m_at > start) skipBlanks(plan);
  separator(plan.separator);
}

// Length of the line that starts here: up to its separator, or the end.
size_t Parser::lineLength(Separator kind) const {
  const char *lf = static_cast<const char *>(std::memchr(m_at, '\n', left()));
  while (lf != nullptr && kind == kSeparatorCrLf && (lf == m_at || lf[-1] != '\r')) {
    lf = static_cast<const char *>(std::memchr(lf + 1, '\n', static_cast<size_t>(m_end - lf - 1)));
  }
  if (lf == nullptr) return left();
  return static_cast<size_t>(lf - m_at) - (kind == kSeparatorCrLf ? 1 : 0);
}

// Whether the record has its length. If not: false for a lenient message, a fault for a strict one.
bool Parser::checkLength(const RecordPlan &plan) const {
  const size_t wanted = plan.length;
  if (plan.plain) {
    const size_t length = lineLength(plan.separator);
    if (length == wanted) return true;
    if (m_plan.lenient && left() > 0) return false;
    badLength(plan, length);
  }
  if (left() < wanted) badLength(plan, left());
  return true;
}

void Parser::badLength(const RecordPlan &plan, size_t length) const {
  const char *const what = length == left() ? " bytes and the end" : " bytes";
  throw Fault(offset(),
              "a record of " + std::to_string(plan.length) + " bytes and " + separatorName(plan.separator),
              left() == 0 ? "the end" : std::to_string(length) + what,
              left() == 0 ? "" : "Correct the record, or set nLenient to 1");
}

// A short record is read with blanks behind it; of a long one, blanks are cut.
void Parser::lenientRecord(const LevelPlan &level, size_t i, List &values) {
  const RecordPlan &plan = level.records[level.ops[i].detail];
  const size_t length = lineLength(plan.separator);
  const char *const line = m_at;
  for (size_t k = plan.length; k < length; ++k) {
    if (line[k] != plan.blank) {
      throw Fault(offset(line + k),
                  "blanks behind the " + std::to_string(plan.length) + " bytes of the record",
                  quoted(line + k, length - k), "");
    }
  }
  const size_t base = m_base;
  const char *const origin = m_origin;
  const char *const end = m_end;
  if (length < plan.length) {
    char *copy = m_call.store.take(plan.length);
    std::memcpy(copy, line, length);
    std::memset(copy + length, plan.blank, plan.length - length);
    m_base = offset(line);
    m_origin = m_at = copy;
    m_end = copy + plan.length;
  }
  members(level, i + 1, static_cast<size_t>(level.ops[i].next), values);
  m_base = base;
  m_origin = origin;
  m_end = end;
  m_at = line + length;
  separator(plan.separator);
}

// A record whose end is known from elsewhere than its fields.
void Parser::boundedRecord(const LevelPlan &level, size_t i, List &values) {
  const RecordPlan &plan = level.records[level.ops[i].detail];
  const char *const end = m_end;
  m_record = &plan;
  m_recordStart = m_at;
  if (plan.end == End::Separator) m_end = m_at + lineLength(plan.separator);
  if (plan.end == End::Filled) {
    if (left() < plan.length) {
      throw Fault(offset(), "a record of " + std::to_string(plan.length) + " bytes",
                  left() == 0 ? "the end" : std::to_string(left()), "");
    }
    m_end = m_at + plan.length;
  }
  members(level, i + 1, static_cast<size_t>(level.ops[i].next), values);
  closeRecord(plan);
  m_end = end;
  separator(plan.separator);
}

// Behind the fields of a record whose end is known, in a lenient message.
void Parser::skipBlanks(const RecordPlan &plan) {
  while (m_plan.lenient && left() > 0 && *m_at == plan.blank) ++m_at;
}

// The fields must have used all of the record.
void Parser::closeRecord(const RecordPlan &plan) {
  m_call.path.field(nullptr);
  if (plan.end == End::Filled) {
    skipPads(left(), plan.pad, "the rest of the record", "Correct psPad of the record, or set nLenient to 1");
  }
  skipBlanks(plan);
  if (left() == 0) return;
  throw Fault(offset(), "the end of the record", found(left()),
              plan.hasLength ? "Correct the record's length, or add the field that this is" : "");
}

// The length of the record has just been read: it ends there.
void Parser::recordLength(const FieldPlan &field, std::string_view value) {
  const size_t length = statedNumber("a length in bytes", field.name, value);
  const auto read = static_cast<size_t>(m_at - m_recordStart);
  const size_t counted = field.lengthOf == LengthOf::RecordAll ? read : 0;
  if (length < counted || length - counted > left()) {
    throw Fault(offset(),
                "a length from " + std::to_string(counted) + " to " + std::to_string(counted + left()),
                std::to_string(length), "Correct the length, or the record");
  }
  const char *const end = m_at + (length - counted);
  if (m_record->end == End::Filled && end != m_end) {
    throw Fault(offset(), "the length " + std::to_string(counted + left()), std::to_string(length), "");
  }
  m_end = end;
}

void Parser::separator(Separator kind) {
  const auto length = static_cast<size_t>(kind);
  if (length == 0) return;
  const char *const expected = kind == kSeparatorLf ? "\n" : "\r\n";
  if (left() >= length && std::memcmp(m_at, expected, length) == 0) {
    m_at += length;
    return;
  }
  m_call.path.field(nullptr);
  if (left() == 0 && m_plan.lastOptional) {
    m_missing = kind;
    return;
  }
  throw Fault(offset(), separatorName(kind), found(20),
              left() == 0 ? "End the last record, or set psLastSeparator to optional" : "");
}

}  // namespace cvt::fix
