#include "resolve.h"

#include <algorithm>

#include "kit/fault.h"
#include "kit/log.h"
#include "writer.h"

namespace cvt::csv {

using kit::Misconfigured;

namespace {

// --- How records begin
// ------------------------------------------------------------------------------------------

bool mayBeAbsent(const Item &item) {
  const Compound &compound = *item.compound;
  if (item.kind == ItemKind::Loop) return compound.least == 0 || mayBeAbsent(compound.records[0]);
  if (!compound.mandatory) return true;
  if (item.kind == ItemKind::Record) return false;
  return std::all_of(compound.records.begin(), compound.records.end(), mayBeAbsent);
}

void addStarts(Compound &to, size_t member) {
  const Compound &from = *to.records[member].compound;
  to.startsAny = to.startsAny || from.startsAny;
  for (const Start &start : from.starts) to.starts.push_back({start.tag, member});
}

bool sameTag(const Start &one, const Start &other) {
  return one.tag == other.tag;
}

// REQUIRES: its starts are sorted by their tags.
void checkAnyOrder(const Compound &group, const CsvMsg &text) {
  const auto refuse = [&text](const Item &member, const char *found) {
    throw Misconfigured(member.compound->node, &text,
                        "records in any order that each begin with a psTag of their own", found);
  };
  for (const Item &each : group.records) {
    if (each.compound->startsAny) refuse(each, "one without");
  }
  const auto twice = std::adjacent_find(group.starts.begin(), group.starts.end(), sameTag);
  if (twice != group.starts.end()) refuse(group.records[twice[1].member], "two that begin alike");
}

void starts(Item &item, const CsvMsg &text) {
  Compound &compound = *item.compound;
  for (Item &each : compound.records) starts(each, text);
  if (item.kind == ItemKind::Record) {
    compound.first = firstField(compound.fields);
    compound.startsAny = compound.tag < 0;
    if (compound.tag >= 0) compound.starts.push_back({compound.tag, 0});
    return;
  }
  for (size_t i = 0; i < compound.records.size(); ++i) {
    addStarts(compound, i);
    if (item.kind != ItemKind::AnyOrder && !mayBeAbsent(compound.records[i])) break;
  }
  std::stable_sort(compound.starts.begin(), compound.starts.end(),
                   [](const Start &one, const Start &other) { return one.tag < other.tag; });
  if (item.kind == ItemKind::AnyOrder) checkAnyOrder(compound, text);
  compound.starts.erase(std::unique(compound.starts.begin(), compound.starts.end(), sameTag),
                        compound.starts.end());
}

// --- The header line
// --------------------------------------------------------------------------------------------

void addColumns(Plan &plan, const std::vector<Item> &fields, std::vector<const char *> &groups,
                const CsvMsg &text) {
  for (const Item &item : fields) {
    if (item.kind == ItemKind::Group) {
      groups.push_back(item.compound->node);
      addColumns(plan, item.compound->fields, groups, text);
      groups.pop_back();
      continue;
    }
    const Field &field = item.field;
    if (item.kind != ItemKind::Field || field.shape != Shape::Variable) {
      throw Misconfigured(item.kind == ItemKind::Field ? field.node : item.compound->node, &text,
                          "fields of variable length alone in a record with a header line", "another node",
                          "Write psHeader=\"none\"");
    }
    if (!plan.columnsByName.add(field.column, static_cast<int>(plan.columns.size()))) {
      throw Misconfigured(field.node, &text, "columns of different names",
                          "a second " + kit::quoted(field.column), "Give it another psName");
    }
    plan.columns.push_back({&field, groups});
    plan.columnNames.emplace_back(field.column);
  }
}

std::string headerLine(const Plan &plan, const CsvMsg &text) {
  size_t room = 64;
  for (const std::string &name : plan.columnNames) room += 8 * name.size() + 64;
  std::string line(room, '\0');
  kit::Output out(line.data(), 0, room);
  Writer writer(plan.dialect, LineEnd::Lf, true, out);
  writer.begin(nullptr, false, false, {});
  for (const std::string &name : plan.columnNames) {
    writer.field(name, {text.nQuoting == static_cast<int>(Quoting::Always), false});
  }
  writer.end(nullptr);
  line.resize(out.offset());
  return line;
}

// The groups around a header line, which stands in the text also when nothing follows it.
void requireAround(Item &item) {
  for (Item *each = &item; each->kind == ItemKind::Group; each = &each->compound->records[0]) {
    each->compound->mandatory = true;
  }
}

// All records without a tag, and what the header line stands before: the record or the loop of it.
void findUntagged(Item &item, std::vector<std::pair<Compound *, Compound *>> &found) {
  Compound &compound = *item.compound;
  if (item.kind == ItemKind::Record && compound.tag < 0) found.emplace_back(&compound, &compound);
  for (Item &each : compound.records) {
    findUntagged(each, found);
    if (item.kind == ItemKind::Loop && each.kind == ItemKind::Record) found.back().second = &compound;
  }
}

}  // namespace

void resolveStarts(Plan &plan, const CsvMsg &text) {
  starts(plan.top, text);
}

void resolveHeader(Plan &plan, const CsvMsg &text) {
  std::vector<std::pair<Compound *, Compound *>> found;
  if (!plan.tagged) findUntagged(plan.top, found);
  if (found.size() != 1) {
    throw Misconfigured("", &text, "one record or loop of records, without psTag, with psHeader",
                        plan.tagged ? "records with tags" : std::to_string(found.size()) + " of them",
                        "Write psHeader=\"none\"");
  }
  const auto [record, holder] = found[0];
  holder->header = true;
  requireAround(plan.top);
  record->byColumn = plan.header == Header::Names;
  std::vector<const char *> groups;
  addColumns(plan, record->fields, groups, text);
  if (plan.columns.size() > plan.maxColumns) {
    throw Misconfigured("", &text, "at most " + std::to_string(plan.maxColumns) + " columns",
                        std::to_string(plan.columns.size()), "Raise nMaxColumns");
  }
  plan.headerLine = headerLine(plan, text);
}

}  // namespace cvt::csv
