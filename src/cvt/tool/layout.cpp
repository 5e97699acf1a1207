#include "layout.h"

#include <map>

#include "cvt.h"
#include "error.h"

namespace tool {
namespace {

constexpr int kMaxDepth = 200;  // far more than any real definition, far less than the stack holds

// Lays out one node index: the message's, or a loop body's. Slots are given in the order of the index: a
// node, its children, its other subtree, its next sibling.
class Indexer {
 public:
  explicit Indexer(int depth) : m_depth(depth) {}

  void chain(Message *first, Fields &out) {
    if (++m_depth > kMaxDepth) {
      throw Failure(Exit::config, "definition node [" + name(first) + "] nests deeper than " +
                                      std::to_string(kMaxDepth) + " levels; write it with fewer groups");
    }
    for (Message *node = first; node != nullptr; node = attributes(node).ptNextNode) add(node, out);
    --m_depth;
  }

 private:
  static std::string name(Message *node) { return node->psNodeName == nullptr ? "" : node->psNodeName; }

  static StructAttr attributes(Message *node) {
    return node->ptStructAttr == nullptr ? StructAttr{} : *node->ptStructAttr;
  }

  void add(Message *node, Fields &out) {
    const StructAttr attr = attributes(node);
    Field field;
    field.key = name(node);
    field.slot = m_slots++;
    field.node = node;
    if (attr.nType == CVT_STRUCT_LOOP) {
      addLoop(std::move(field), attr, out);
      return;
    }
    chainOf(attr.ptChildNode, field.members);
    chainOf(attr.ptOtherNode, field.members);
    field.kind = field.members.empty() ? Field::Kind::value : Field::Kind::group;
    out.push_back(std::move(field));
  }

  // The body has slots of its own, in the list of a repetition, and idle ones here.
  void addLoop(Field field, const StructAttr &attr, Fields &out) {
    field.kind = attr.ptChildNode == nullptr ? Field::Kind::valueLoop : Field::Kind::loop;
    if (attr.ptChildNode != nullptr) {
      Indexer body(m_depth);
      body.chain(attr.ptChildNode, field.members);
      numberKeys(field.members);
      m_slots += body.m_slots;
    }
    out.push_back(std::move(field));
    chainOf(attr.ptOtherNode, out);
  }

  void chainOf(Message *first, Fields &out) {
    if (first != nullptr) chain(first, out);
  }

 public:
  // Tells fields of the same name apart, also in the groups below.
  static void numberKeys(Fields &fields) {
    std::map<std::string, int> seen;
    for (Field &field : fields) {
      const int count = ++seen[field.key];
      if (count > 1) field.key += "#" + std::to_string(count);
      if (field.kind == Field::Kind::group) numberKeys(field.members);
    }
  }

 private:
  int m_depth;
  int m_slots = 0;
};

}  // namespace

const Field *findField(const Fields &fields, std::string_view key, size_t &hint) {
  for (size_t n = 0; n < fields.size(); ++n) {
    const size_t i = (hint + n) % fields.size();
    if (fields[i].key != key) continue;
    hint = i + 1;
    return &fields[i];
  }
  return nullptr;
}

const Fields &Layouts::of(const Msg &msg) {
  if (m_loadTime != gtLastLoadTime) m_layouts.clear();  // the definitions are others now
  m_loadTime = gtLastLoadTime;
  const auto [entry, bFresh] = m_layouts.try_emplace(&msg);
  if (bFresh && msg.ptHead != nullptr) {
    Indexer(0).chain(msg.ptHead, entry->second);
    Indexer::numberKeys(entry->second);
  }
  return entry->second;
}

std::string_view bytesIn(ValueList *list, int slot) {
  if (list == nullptr || slot >= list->nNow) return {};
  const Value *const value = list->ptValue + slot;
  if (value->nLen <= 0 || value->psValue == nullptr) return {};
  return {value->psValue, static_cast<size_t>(value->nLen)};
}

int repetitionsIn(ValueList *list, int slot) {
  if (list == nullptr || slot >= list->nNow || (list->ptValue + slot)->nLen != -1) return 0;
  return cvtGetLoopValueListNum(list, slot);
}

}  // namespace tool
