// parse_call.h: one text on its way into values.
#pragma once

#include "kit/plugin.h"
#include "plan.h"
#include "reader.h"

namespace cvt::csv {

// Kept from one text to the next, so that it takes nothing from the heap.
struct ParseRoom {
  std::string wraps;       // numbers of the fields before which a record was continued
  std::vector<int> order;  // of the columns: positions in Plan::columns, -1 for one to be passed over
};

class Parser {
 public:
  Parser(const Plan &plan, kit::ParseCall &call, ParseRoom &room, const char *origin, const char *from,
         const char *end)
      : m_plan(plan),
        m_call(call),
        m_path(call.path),
        m_room(room),
        m_reader(plan.dialect, origin, from, end) {}

  void run() {
    kit::List values(m_call.values, m_plan.slots);
    item(m_plan.top, values);
    m_path.field(nullptr);
    if (m_plan.whole && m_reader.begin()) misplaced("the end of the message");
    for (const kit::Count &count : m_plan.counts) checkCount(count, values, m_call.store, m_path);
    remember(values);
    m_call.end = m_reader.done();
  }

  size_t here() const { return m_reader.here(); }

 private:
  // Records.
  void items(const std::vector<Item> &items, kit::List values) {
    for (const Item &each : items) item(each, values);
  }
  void item(const Item &item, kit::List values);
  void record(const Compound &record, kit::List values);
  void anyOrder(const Compound &group, kit::List values);
  void loop(const Compound &loop, kit::List values);
  void repetition(const Compound &loop, kit::List values, size_t done);
  bool starts(const Compound &compound);
  [[noreturn]] void misplaced(const std::string &expected);
  void remember(kit::List values);

  // Fields.
  void members(const std::vector<Item> &members, const Compound &record, kit::List values);
  void field(const Field &field, const Compound &record, kit::List values);
  bool standsInNothing(const Field &field) const;
  void absent(const Field &field, const Compound &record, kit::List values);
  void notGiven(const Field &field) const;
  void put(const Field &field, const Token &token, kit::List values);
  void putUnescaped(const Field &field, const Token &token, kit::List values);
  void choice(const Compound &choice, const Compound &record, kit::List values);
  void fieldLoop(const Compound &loop, const Compound &record, kit::List values);
  size_t countOf(const Compound &loop, kit::List values);
  void checkUtf8(const Token &token) const;
  void noteWrap();

  // A header line.
  void header();
  void columnName(size_t position);
  void columns(const Compound &record, kit::List values);

  const Plan &m_plan;
  kit::ParseCall &m_call;
  kit::Path &m_path;
  ParseRoom &m_room;
  Reader m_reader;
  size_t m_number = 0;  // of the field in its record, from 1
};

}  // namespace cvt::csv
