// parser.h: one run over the bytes of a message. parse.cpp walks the plan; parse_record.cpp knows where records
// and fields of no fixed length end.
#pragma once

#include <string>
#include <vector>

#include "condition.h"
#include "walk.h"

namespace cvt::fix {

class Parser {
 public:
  Parser(const Plan &plan, kit::ParseCall &call)
      : m_plan(plan),
        m_call(call),
        m_origin(call.buffer),
        m_at(call.buffer + call.from),
        m_end(call.buffer + call.length) {}

  void run();

 private:
  size_t offset(const char *at) const { return m_base + static_cast<size_t>(at - m_origin); }
  size_t offset() const { return offset(m_at); }
  size_t left() const { return static_cast<size_t>(m_end - m_at); }
  std::string found(size_t length) const;

  void members(const LevelPlan &level, size_t from, size_t to, kit::List &values);
  void node(const LevelPlan &level, size_t i, kit::List &values);
  void field(const FieldPlan &field, int slot, kit::List &values);
  size_t plainRun(const PlainRun &run, kit::List &values);

  bool isThere(const LevelPlan &level, const Op &op, const kit::List &values) const;
  bool starts(const std::vector<Start> &starts) const;
  bool startsWith(const Start &start) const;
  bool has(const Tag &tag) const;
  void choice(const LevelPlan &level, size_t i, kit::List &values);
  [[noreturn]] void noChoice(const LevelPlan &level, size_t i, const kit::List &values) const;

  void loop(const LoopPlan &plan, int slot, kit::List &values);
  [[noreturn]] void tooMany(const LoopPlan &plan, const std::string &what) const;
  size_t countOf(const LoopPlan &plan, const kit::List &values) const;
  void skipRoom(const LoopPlan &plan, size_t done);
  void skipPads(size_t count, char pad, const char *what, const char *advice);

  void record(const LevelPlan &level, size_t i, kit::List &values);
  size_t lineLength(Separator kind) const;
  bool checkLength(const RecordPlan &plan) const;
  [[noreturn]] void badLength(const RecordPlan &plan, size_t length) const;
  void lenientRecord(const LevelPlan &level, size_t i, kit::List &values);
  void boundedRecord(const LevelPlan &level, size_t i, kit::List &values);
  void skipBlanks(const RecordPlan &plan);
  void closeRecord(const RecordPlan &plan);
  void separator(Separator kind);

  void special(const LevelPlan &level, const Op &op, kit::List &values);
  size_t variableWidth(const FieldPlan &field, const FieldPlan &length, const kit::List &values) const;
  size_t markedWidth(const FieldPlan &field) const;
  size_t statedNumber(const char *what, const char *name, std::string_view value) const;
  void recordLength(const FieldPlan &field, std::string_view value);
  void checkPosition(std::string_view value) const;

  const Plan &m_plan;
  kit::ParseCall &m_call;
  size_t m_base = 0;     // offset of m_origin in the message's buffer
  const char *m_origin;  // the buffer, or the padded copy of a record
  const char *m_at;
  const char *m_end;  // of the buffer, or of the record whose end is known
  const char *m_recordStart = nullptr;
  const RecordPlan *m_record = nullptr;  // the one that ends at m_end
  Separator m_missing = kSeparatorNone;  // of the last record, at the end of the buffer
  const Enclosing *m_around = nullptr;
};

}  // namespace cvt::fix
