// compile.cpp: a definition to its plan. Whatever could fail for a name, a number or a length fails here, when
// the definition loads, with the place in its file.
#include <algorithm>

#include "compile_field.h"
#include "content.h"
#include "kit/fault.h"
#include "kit/shape.h"
#include "plan.h"
#include "presence.h"
#include "seen.h"

namespace cvt::iso8583 {

using kit::Level;
using kit::Misconfigured;
using kit::Node;
using kit::NodeKind;

namespace {

constexpr IsoLoop kPlainLoop{};

[[noreturn]] void refuse(const Place &place, const std::string &expected, const std::string &found,
                         const std::string &advice = {}) {
  throw Misconfigured(place.path, place.record, expected, found, advice);
}

class Compiler {
 public:
  Compiler(const Msg &msg, const IsoMsg &settings)
      : m_settings(settings), m_shape(kit::compileShape(msg)), m_plan(std::make_unique<Plan>()) {}

  std::unique_ptr<Plan> run();

 private:
  using Members = std::vector<Element>;

  void options();
  void finish();

  void topLevel(const kit::Rules &rules, size_t from, size_t to, const std::string &outer);
  void topField(const kit::Rules &rules, size_t at, const IsoField &record, const Place &place);
  void opening(const kit::Rules &rules, size_t at, const IsoField &record, const Place &place);
  void bitmapField(const Node &node, const IsoField &record, const Place &place);
  void restField(const Node &node, const Place &place);
  void addNumbered(Element element, int number, const Place &place);

  Element fieldElement(const kit::Rules &rules, size_t at, const IsoField &record, bool inTag,
                       const Place &place) const;
  Element groupElement(const kit::Rules &rules, size_t at, const IsoGroup &record, Form form, bool inTag,
                       const Place &place);
  void bodyOf(Container &container, const Node &loop, const Place &place);
  void members(Container &container, const kit::Rules &rules, size_t from, size_t to,
               const std::string &outer);
  void member(Container &container, const kit::Rules &rules, size_t at, const std::string &outer);
  void tlvField(Container &container, const kit::Rules &rules, size_t at, const IsoField &record,
                const Place &place);
  void addTag(Container &container, Element element, const char *tag, const Place &place);
  void tlvLoopFields(const Container &container, const Place &place) const;

  Place placeOf(const std::string &outer, const Node &node) const {
    return {m_settings, kit::nodePath(outer, node), node.record};
  }

  const IsoMsg &m_settings;
  const Level m_shape;
  std::unique_ptr<Plan> m_plan;
};

// --- Records of nodes

void checkNode(const Node &node, const Place &place) {
  if (node.counted) {
    refuse(place, "a field, a group or a loop", "a counted node (StructAttr nType 5)",
           "Write a loop (nType 1)");
  }
  if (node.structRecord != nullptr) {
    refuse(place, "nothing in the StructAttr", kit::recordName(node.structRecord),
           "Write it into the node's FormatAttr");
  }
  if (node.countNode >= 0) {
    refuse(place, "a loop that ends with its data element", "psLoopNumName", "Remove it");
  }
}

const IsoField &fieldRecord(const Node &node, const Place &place) {
  const auto *record = kit::recordAs<IsoField>(node.record, kIsoField);
  if (record != nullptr) return *record;
  refuse(place, "an IsoField", kit::recordName(node.record),
         "Write <IsoField __ID=\"pInfo\" .../> into the FormatAttr");
}

// The record of a group or a loop and what it means; null: it has none.
const IsoGroup *groupRecord(const Node &node, Form &form, const Place &place) {
  if (node.record == nullptr) return nullptr;
  form = Form::Tlv;
  const auto *tlv = kit::recordAs<IsoTlv>(node.record, kIsoTlv);
  if (tlv != nullptr) return &tlv->group;
  form = Form::Subfields;
  const auto *group = kit::recordAs<IsoGroup>(node.record, kIsoGroup);
  if (group != nullptr) return group;
  refuse(place, "an IsoGroup or an IsoTlv", kit::recordName(node.record));
}

// Nothing but what a field of a special kind needs.
void onlyKind(const IsoField &record, const Place &place) {
  if (record.psTag == nullptr && record.psConst == nullptr && record.psDefault == nullptr &&
      record.nLen == 0 && record.nPrefix == 0) {
    return;
  }
  refuse(place,
         "no length, tag, constant or default on psKind " +
             std::string(kKindWords[static_cast<size_t>(int{record.nKind})]),
         "one", "Remove it");
}

kit::RuleText ruleText(const IsoField &record) {
  return {record.nMandatory, record.nKeepEmpty, 0, record.psDefault, record.psConst};
}

// --- The message

std::unique_ptr<Plan> Compiler::run() {
  options();
  const kit::Rules rules(m_shape);
  topLevel(rules, 0, m_shape.nodes.size(), "");
  finish();
  return std::move(m_plan);
}

void Compiler::options() {
  Plan &plan = *m_plan;
  const Place place{m_settings, "", &m_settings};
  plan.slots = m_shape.slots;
  plan.charset = findCharset(m_settings.psCharset, place);
  plan.bitmapCoding = static_cast<BitmapCoding>(int{m_settings.nBitmap});
  plan.bitmaps = m_settings.nBitmaps;
  plan.flagged = m_settings.nBitmapsThere == static_cast<int>(Bitmaps::Flag);
  plan.thirdInside = m_settings.nThird == static_cast<int>(Third::Element);
  plan.maxLength = static_cast<size_t>(int{m_settings.nMaxLen});
  plan.whole = m_settings.nWhole != 0;
  const char digits[2] = {'0', plan.bitmapCoding == BitmapCoding::HexLower ? 'a' : 'A'};
  char bytes[16];
  const kit::Converted made = plan.charset->encode(digits, 2, bytes, sizeof bytes);
  if (made.damage != kit::Damage::None || made.written != 2) {
    refuse(place, "a character set in which a digit is one byte", plan.charset->name(), "Write psCharset");
  }
  plan.hexZero = bytes[0];
  plan.hexA = bytes[1];
  if (plan.thirdInside && (plan.bitmaps != 3 || !plan.flagged)) {
    refuse(place, "psThird element with nBitmaps 3 and psBitmaps flag", "it without", "Remove psThird");
  }
}

void Compiler::topLevel(const kit::Rules &rules, size_t from, size_t to, const std::string &outer) {
  const Level &level = rules.level();
  for (size_t i = from; i < to; i = static_cast<size_t>(level.nodes[i].next)) {
    const Node &node = level.nodes[i];
    const Place place = placeOf(outer, node);
    checkNode(node, place);
    if (node.kind == NodeKind::Field) {
      topField(rules, i, fieldRecord(node, place), place);
      continue;
    }
    Form form = Form::Subfields;
    const IsoGroup *record = groupRecord(node, form, place);
    if (record != nullptr) {
      addNumbered(groupElement(rules, i, *record, form, false, place), record->nNumber, place);
    } else if (node.kind == NodeKind::Group) {
      topLevel(rules, i + 1, static_cast<size_t>(node.next), place.path);
    } else {
      refuse(place, "an IsoGroup or an IsoTlv on a loop", "nothing",
             "Write <IsoTlv __ID=\"pInfo\" nNumber=\"55\" psPrefix=\"LLL\"/> into the FormatAttr");
    }
  }
}

void Compiler::topField(const kit::Rules &rules, size_t at, const IsoField &record, const Place &place) {
  const Node &node = rules.level().nodes[at];
  switch (static_cast<Kind>(int{record.nKind})) {
    case Kind::Data:
      addNumbered(fieldElement(rules, at, record, false, place), record.nNumber, place);
      break;
    case Kind::Mti:
    case Kind::Header:
      opening(rules, at, record, place);
      break;
    case Kind::Bitmap:
      bitmapField(node, record, place);
      break;
    case Kind::Rest:
      restField(node, place);
      onlyKind(record, place);
      break;
    case Kind::Tag:
    case Kind::Value:
    case Kind::Others:
    case Kind::Order:
      refuse(place, "psKind tag, value, others and order inside of an IsoTlv", "it outside");
  }
}

void Compiler::opening(const kit::Rules &rules, size_t at, const IsoField &record, const Place &place) {
  const bool mti = record.nKind == static_cast<int>(Kind::Mti);
  const bool after = !m_plan->opening.empty() && m_plan->opening.back().kind == Kind::Mti;
  if (after) {
    refuse(place, "one field of psKind mti, behind those of psKind header",
           mti ? "a second one" : "a header behind it");
  }
  IsoField meant = record;
  if (mti) {
    meant.nType = static_cast<int>(Type::N);
    meant.nLen = 4;
  }
  Element element = fieldElement(rules, at, meant, false, place);
  element.kind = static_cast<Kind>(int{record.nKind});
  m_plan->opening.push_back(std::move(element));
}

void Compiler::bitmapField(const Node &node, const IsoField &record, const Place &place) {
  onlyKind(record, place);
  if (record.nNumber > m_plan->bitmaps) {
    refuse(place, "nNumber of a bitmap, 1 to " + std::to_string(m_plan->bitmaps),
           std::to_string(record.nNumber), "See nBitmaps");
  }
  const int which = record.nNumber == kNotGiven ? -1 : record.nNumber - 1;
  for (size_t i = 0; i < kMaxBitmaps; ++i) {
    if (which >= 0 && static_cast<size_t>(which) != i) continue;
    if (m_plan->shown[i]) refuse(place, "one field for a bitmap", "a second one");
    m_plan->shown[i] = true;
  }
  const bool bits = record.nShown != static_cast<int>(Shown::Hex);
  m_plan->bitmapFields.push_back({node.slot, node.name, which, bits});
}

void Compiler::restField(const Node &node, const Place &place) {
  if (m_plan->restSlot >= 0) refuse(place, "one field of psKind rest", "a second one");
  if (m_plan->thirdInside) refuse(place, "psKind rest or psThird element", "both");
  m_plan->restSlot = node.slot;
  m_plan->restNode = node.name;
}

void Compiler::addNumbered(Element element, int number, const Place &place) {
  const int most = m_plan->bitmaps * static_cast<int>(kBitmapBits);
  if (number < 1 || number > most) {
    refuse(place, "nNumber of the data element, 1 to " + std::to_string(most),
           number == kNotGiven ? "none" : std::to_string(number),
           number == kNotGiven ? "" : "See nBitmaps of IsoMsg");
  }
  if (m_plan->isFlag(number)) {
    refuse(place, "another nNumber than that of the bit that says whether a bitmap follows",
           std::to_string(number), "A field of psKind bitmap has the value of that bitmap");
  }
  if (m_plan->defined.has(number)) refuse(place, "one data element of that nNumber", "a second one");
  m_plan->defined.set(number);
  if (element.mandatory) m_plan->mandatory.set(number);
  element.number = number;
  m_plan->names.push_back(place.path);
  element.node = m_plan->names.back().c_str();
  m_plan->elements.push_back(std::move(element));
}

void Compiler::finish() {
  Plan &plan = *m_plan;
  if (plan.opening.empty() || plan.opening.back().kind != Kind::Mti) {
    refuse({m_settings, "", &m_settings}, "a field of psKind mti", "none",
           "Write <IsoField __ID=\"pInfo\" psKind=\"mti\"/>");
  }
  std::sort(plan.elements.begin(), plan.elements.end(),
            [](const Element &a, const Element &b) { return a.number < b.number; });
  plan.byNumber.fill(-1);
  for (size_t i = 0; i < plan.elements.size(); ++i) {
    const Element &element = plan.elements[i];
    plan.byNumber[static_cast<size_t>(element.number)] = static_cast<int16_t>(i);
    plan.presences.push_back({element.slot, static_cast<int16_t>(element.number),
                              element.empty == kit::Empty::KeepGiven, writesItself(element),
                              element.inside != nullptr});
  }
}

// --- Fields, groups, loops

Element Compiler::fieldElement(const kit::Rules &rules, size_t at, const IsoField &record, bool inTag,
                               const Place &place) const {
  Element element{};
  static_cast<kit::Rule &>(element) = rules.make(at, ruleText(record), place.path, place.record);
  compileField(record, inTag, place, element);
  compileTexts(place, element);
  element.plain = plainOf(element);
  return element;
}

Element Compiler::groupElement(const kit::Rules &rules, size_t at, const IsoGroup &record, Form form,
                               bool inTag, const Place &place) {
  const Node &node = rules.level().nodes[at];
  const kit::RuleText text{record.nMandatory, static_cast<int>(kit::Empty::KeepGiven), 0, nullptr, nullptr};
  Element element{};
  static_cast<kit::Rule &>(element) = rules.make(at, text, place.path, place.record);
  compileGroup(record, inTag, place, element);
  element.inside = std::make_unique<Container>();
  Container &container = *element.inside;
  container.form = form;
  if (node.kind == NodeKind::Loop) {
    bodyOf(container, node, place);
    return element;
  }
  members(container, rules, at + 1, static_cast<size_t>(node.next), place.path);
  if (form == Form::Subfields) checkSubfields(element, place);
  for (size_t i = at + 1; i < static_cast<size_t>(node.next); ++i) {
    container.slots.push_back(rules.level().nodes[i].slot);
  }
  return element;
}

void Compiler::bodyOf(Container &container, const Node &loop, const Place &place) {
  const IsoLoop &bounds = kit::recordOr(loop.loopRecord, kIsoLoop, kPlainLoop, "LoopType.ptInfo", place.path);
  const Level &body = *loop.body;
  if (body.nodes.size() == 1 && body.nodes[0].message == loop.message) {
    refuse(place, "a loop with members", "one without", "Write the repeated fields into the loop");
  }
  if (bounds.nMax != 0 && bounds.nMax < bounds.nMin) refuse(place, "nMax at least nMin", "less");
  container.loop = true;
  container.bodySlots = body.slots;
  container.minTimes = bounds.nMin;
  container.maxTimes = bounds.nMax;
  members(container, kit::Rules(body), 0, body.nodes.size(), place.path);
  if (container.form == Form::Tlv) tlvLoopFields(container, place);
}

void Compiler::members(Container &container, const kit::Rules &rules, size_t from, size_t to,
                       const std::string &outer) {
  for (size_t i = from; i < to; i = static_cast<size_t>(rules.level().nodes[i].next)) {
    member(container, rules, i, outer);
  }
  std::sort(container.tags.begin(), container.tags.end(),
            [](const Container::Tag &a, const Container::Tag &b) { return a.tag < b.tag; });
}

void Compiler::member(Container &container, const kit::Rules &rules, size_t at, const std::string &outer) {
  const Node &node = rules.level().nodes[at];
  const Place place = placeOf(outer, node);
  checkNode(node, place);
  const bool tlv = container.form == Form::Tlv;
  if (node.kind == NodeKind::Field) {
    const IsoField &record = fieldRecord(node, place);
    if (tlv) return tlvField(container, rules, at, record, place);
    if (record.nKind != static_cast<int>(Kind::Data) || record.psTag != nullptr ||
        record.nNumber != kNotGiven) {
      refuse(place, "a subfield, without psKind, psTag and nNumber", "one with", "Remove it");
    }
    container.members.push_back(fieldElement(rules, at, record, false, place));
    return;
  }
  Form form = Form::Subfields;
  const IsoGroup *record = groupRecord(node, form, place);
  if (record == nullptr) {
    refuse(place, "an IsoGroup or an IsoTlv", "nothing", "Write one into the FormatAttr");
  }
  if (record->nNumber != kNotGiven || (record->psTag != nullptr) != tlv) {
    refuse(place, tlv ? "psTag, and no nNumber" : "no psTag and no nNumber", "another attribute");
  }
  Element element = groupElement(rules, at, *record, form, tlv, place);
  if (tlv) return addTag(container, std::move(element), record->psTag, place);
  container.members.push_back(std::move(element));
}

void Compiler::tlvField(Container &container, const kit::Rules &rules, size_t at, const IsoField &record,
                        const Place &place) {
  const auto kind = static_cast<Kind>(int{record.nKind});
  const Node &node = rules.level().nodes[at];
  const bool special = kind == Kind::Others || kind == Kind::Order;
  if (record.nNumber != kNotGiven) refuse(place, "psTag", "nNumber");
  if (special) {
    onlyKind(record, place);
    int &slot = kind == Kind::Others ? container.othersSlot : container.orderSlot;
    if (slot >= 0 || container.loop) refuse(place, "one such field in a group", "another");
    slot = node.slot;
    (kind == Kind::Others ? container.othersNode : container.orderNode) = node.name;
    return;
  }
  IsoField meant = record;
  if (kind == Kind::Tag) {
    meant.nType = static_cast<int>(Type::B);
    meant.nCoding = static_cast<int>(Coding::Binary);
    meant.nMaxLen = 4;
  }
  Element element = fieldElement(rules, at, meant, true, place);
  element.kind = kind;
  if (kind == Kind::Data && record.psTag != nullptr && !container.loop) {
    return addTag(container, std::move(element), record.psTag, place);
  }
  if (!container.loop || (kind != Kind::Tag && kind != Kind::Value) || record.psTag != nullptr) {
    refuse(place,
           container.loop ? "psKind tag or value in a loop of tags" : "psTag, or psKind others or order",
           "neither");
  }
  container.members.push_back(std::move(element));
}

void Compiler::addTag(Container &container, Element element, const char *tag, const Place &place) {
  if (container.loop) refuse(place, "psKind tag and value in a loop of tags", "psTag");
  if (container.members.size() >= kMaxTags) {
    refuse(place, "at most " + std::to_string(kMaxTags) + " tags in a group", "more");
  }
  element.tag = compileTag(tag, place);
  for (const Container::Tag &other : container.tags) {
    if (other.tag == element.tag)
      refuse(place, "one field for a tag", "a second one for " + std::string(tag));
  }
  container.tags.push_back({element.tag, container.members.size()});
  if (element.mandatory) container.mandatory.push_back(container.members.size());
  container.members.push_back(std::move(element));
}

void Compiler::tlvLoopFields(const Container &container, const Place &place) const {
  const Members &members = container.members;
  const bool good = members.size() == 2 && members[0].kind == Kind::Tag && members[1].kind == Kind::Value;
  if (!good) refuse(place, "a field of psKind tag and one of psKind value", "other members");
}

}  // namespace

std::unique_ptr<Plan> compile(const Msg &msg, const IsoMsg &settings) {
  return Compiler(msg, settings).run();
}

}  // namespace cvt::iso8583
