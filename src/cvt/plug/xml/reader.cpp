#include "reader.h"

#include <functional>

#include "kit/log.h"
#include "names.h"
#include "space.h"

namespace cvt::xml {

namespace {

using kit::Fault;

// The namespaces of a document's attributes may have so many bytes, and so many more for each byte of the document,
// counted for each attribute: a prefix is short, and the parser that knows all of XML writes out what it stands for.
// So every attribute may take eight bytes and be in a namespace of 128.
constexpr size_t kSpaces = size_t{1024} * 1024;
constexpr size_t kSpacesPerByte = 16;

constexpr const char *kSkipUnknown = "psUnknown=\"skip\" in XmlMsg passes over it";

std::string quoted(std::string_view text) {
  return kit::quoted(text.data(), text.size());
}

const std::string &shownIn(const Element &element) {
  return element.shown;
}
const std::string &shownIn(const Attribute &attribute) {
  return attribute.name;
}

// "a, b, c" for messages; long lists are cut.
template <class T>
std::string list(const std::vector<T> &all, const char *none) {
  static constexpr size_t kShown = 12;
  std::string names;
  for (size_t i = 0; i < all.size() && i < kShown; ++i) names += (i == 0 ? "" : ", ") + shownIn(all[i]);
  if (all.size() > kShown) names += ", and " + std::to_string(all.size() - kShown) + " more";
  return names.empty() ? none : names;
}

// The value of an attribute; null when the element has none of that name.
const std::string_view *valueOf(const Named &attribute, Attributes attributes) {
  for (const Given &given : attributes) {
    if (attribute.is(given.name)) return &given.value;
  }
  return nullptr;
}

// The alternatives to a child, or null.
const Alternatives *alternativesOf(const Element &parent, size_t child) {
  const int which = parent.children[child].alternative;
  return which < 0 ? nullptr : &parent.alternatives[static_cast<size_t>(which)];
}

// What to write in place of a name that is not in the list.
template <class T>
std::string advice(const Plan &plan, const std::vector<T> &all, const Name &name) {
  const std::string skip = kSkipUnknown;
  const std::string local(name.local);
  std::vector<const char *> known;
  for (const T &named : all) {
    if (named.local == local) {
      const std::string &uri = plan.spaces[static_cast<size_t>(named.space)];
      return uri.empty() ? "Write it without a namespace; " + skip
                         : "Write it in the namespace " + quoted(uri) + "; " + skip;
    }
    known.push_back(named.name.c_str());
  }
  const char *near = kit::nearest(local.c_str(), known);
  return near == nullptr ? skip : "Write " + std::string(near) + "; " + skip;
}

}  // namespace

Reader::Reader(const Plan &plan, kit::ParseCall &call, Room &room)
    : m_plan(plan), m_call(call), m_room(room) {
  m_room.frames.clear();
  m_room.text.clear();
  m_room.seen.clear();
}

std::string_view Reader::innermost() const {
  return m_skipped > 0 || m_room.frames.empty() ? std::string_view() : m_room.frames.back().element->name;
}

void Reader::limitAttributes(size_t count, size_t offset, const char *soFar) const {
  if (count <= m_plan.maxAttributes) return;
  throw Fault(offset, "at most " + std::to_string(m_plan.maxAttributes) + " attributes",
              std::to_string(count) + soFar, "Raise nMaxAttributes of XmlMsg");
}

void Reader::limit(size_t attributes) const {
  if (m_depth > m_plan.maxDepth) {
    throw Fault(Fault::kHere, "at most " + std::to_string(m_plan.maxDepth) + " open elements", "one more",
                "Raise nMaxDepth of XmlMsg");
  }
  limitAttributes(attributes, Fault::kHere, "");
}

void Reader::limitSpaces(Attributes attributes) {
  for (const Given &each : attributes) m_spaces += each.name.uri.size();
  const size_t most = kSpaces + kSpacesPerByte * (m_call.length - m_call.from);
  if (m_spaces <= most) return;
  throw Fault(
      Fault::kHere,
      "namespaces of attributes of at most " + std::to_string(most) + " bytes, counted for each attribute",
      "more", "Shorten the namespaces");
}

void Reader::open(const Name &name, Attributes attributes, size_t declarations) {
  ++m_depth;
  limit(attributes.size() + declarations);
  limitSpaces(attributes);
  if (m_skipped > 0) {
    ++m_skipped;
  } else if (!m_room.frames.empty()) {
    openChild(m_room.frames.back(), name, attributes);
  } else if (m_plan.root.is(name)) {
    enter(m_plan.root, kit::List(m_call.values, m_plan.slots), attributes);
  } else {
    const std::string &uri = m_plan.spaces[static_cast<size_t>(m_plan.root.space)];
    throw Fault(Fault::kHere,
                "the root element " + m_plan.root.name + (uri.empty() ? "" : " of namespace \"" + uri + "\""),
                shownName(m_plan, name), "See psRoot, psNamespace and psPrefixes of XmlMsg");
  }
}

// Documents mostly keep the definition's order, so the next child is tried before the table.
int Reader::child(const Frame &top, const Name &name, Attributes attributes) const {
  const Element &parent = *top.element;
  const size_t next = top.nextChild;
  const bool inOrder = next < parent.children.size() && parent.children[next].is(name);
  const int found = inOrder ? static_cast<int>(next) : find(parent.children, parent.childNames, name);
  if (found < 0) return found;
  const Alternatives *all = alternativesOf(parent, static_cast<size_t>(found));
  if (all == nullptr) return found;
  const std::string_view *value = valueOf(all->attribute, attributes);
  return value == nullptr ? -1 : alternative(parent, *all, *value);
}

// The alternative whose constant the value is, read with that attribute's psSpace. A constant has no white space that
// its psSpace would change, so one that is met by trimming is met by collapsing, too.
int Reader::alternative(const Element &parent, const Alternatives &all, std::string_view value) const {
  for (const Space space : {Space::Preserve, Space::Trim, Space::Collapse}) {
    const int found = all.positions.find(spaced(value, space, m_room.collapsed));
    if (found >= 0 && parent.children[static_cast<size_t>(found)].valueSpace >= space) return found;
  }
  return -1;
}

void Reader::openChild(Frame &top, const Name &name, Attributes attributes) {
  if (top.element->text.has_value()) part(top);
  const int found = child(top, name, attributes);
  if (found < 0) {
    if (!m_plan.skipUnknown) unknown(top, name, attributes);
    m_skipped = 1;
    return;
  }
  openChild(top, static_cast<size_t>(found), attributes);
}

void Reader::openChild(Frame &top, size_t position, Attributes attributes) {
  const Element &child = top.element->children[position];
  char &seen = m_room.seen[top.seenStart + position];
  if (child.loop()) {
    top.nextChild = position;
    seen = 1;
    enter(child, repetition(child, top.list), attributes);
    return;
  }
  if (seen != 0) {
    throw Fault(Fault::kHere, "<" + child.shown + "> once", "a second one", "Make the node a loop");
  }
  seen = 1;
  top.nextChild = position + 1;
  if (child.field) {
    m_call.path.field(child.node);
  } else if (!child.wrapper()) {
    m_call.path.enter(child.node);
  }
  enter(child, top.list, attributes);
}

// Not a child that has come already, unless it repeats, nor one of several that a value tells apart, nor one beside
// a text, which it parts.
const Element *Reader::expected() const {
  if (m_skipped > 0 || m_room.frames.empty()) return nullptr;
  const Frame &top = m_room.frames.back();
  if (top.element->text.has_value()) return nullptr;
  if (top.nextChild >= top.element->children.size()) return nullptr;
  const Element &child = top.element->children[top.nextChild];
  const bool comes = child.loop() || m_room.seen[top.seenStart + top.nextChild] == 0;
  return comes && child.alternative < 0 ? &child : nullptr;
}

void Reader::openExpected() {
  ++m_depth;
  Frame &top = m_room.frames.back();
  openChild(top, top.nextChild, {});
}

void Reader::leaf(std::string_view text) {
  Frame &top = m_room.frames.back();
  const Element &child = top.element->children[top.nextChild];
  m_room.seen[top.seenStart + top.nextChild] = 1;
  ++top.nextChild;
  m_call.path.field(child.node);
  store(*child.text, top.list, text);
  m_call.path.field(nullptr);
}

kit::List Reader::repetition(const Element &child, kit::List &list) {
  const int index = list.repetitions(child.loopSlot);
  m_call.path.enter(child.node);
  m_call.path.repetition(index);
  if (child.maxTimes > 0 && index >= child.maxTimes) {
    throw Fault(Fault::kHere, "<" + child.shown + "> at most " + std::to_string(child.maxTimes) + " times",
                "one more", "Raise nMax of its XmlLoop");
  }
  return list.append(child.loopSlot, child.bodySlots);
}

void Reader::enter(const Element &element, kit::List list, Attributes given) {
  Room &room = m_room;
  room.frames.push_back({&element, list, room.text.size(), room.seen.size(), 0});
  room.seen.resize(room.seen.size() + element.children.size() + element.attributes.size(), 0);
  attributes(room.frames.back(), given);
}

void Reader::unknown(const Frame &top, const Name &name, Attributes attributes) const {
  const Element &parent = *top.element;
  std::string found = "element " + shownName(m_plan, name);
  std::string help;
  if (const int first = find(parent.children, parent.childNames, name); first >= 0) {
    const Alternatives &all = *alternativesOf(parent, static_cast<size_t>(first));
    const std::string &shown = all.attribute.name;
    const std::string_view *value = valueOf(all.attribute, attributes);
    found += value == nullptr ? " without " + shown : " " + shown + "=" + quoted(*value);
    help = kSkipUnknown;
  } else {
    help = advice(m_plan, parent.children, name);
  }
  throw Fault(Fault::kHere, list(parent.children, "text alone") + " in <" + parent.name + ">", found, help);
}

void Reader::attributes(const Frame &frame, Attributes given) {
  for (const Given &each : given) attribute(frame, each);
  const Element &element = *frame.element;
  const size_t first = frame.seenStart + element.children.size();
  for (const size_t required : element.requiredAttributes) {
    if (m_room.seen[first + required] != 0) continue;
    const Attribute &missing = element.attributes[required];
    m_call.path.field(missing.text.node);
    throw Fault(Fault::kHere, "attribute " + missing.name + " of <" + element.name + ">", "none",
                "It is mandatory");
  }
}

void Reader::attribute(const Frame &frame, const Given &given) {
  const Element &element = *frame.element;
  const int found = find(element.attributes, element.attributeNames, given.name);
  if (found >= 0) {
    const Attribute &attribute = element.attributes[static_cast<size_t>(found)];
    m_room.seen[frame.seenStart + element.children.size() + static_cast<size_t>(found)] = 1;
    m_call.path.field(attribute.text.node);
    store(attribute.text, frame.list, given.value);
    m_call.path.field(nullptr);
  } else if (!m_plan.skipUnknown) {
    const std::string shown =
        given.name.uri.empty() ? std::string(given.name.local) : shownName(m_plan, given.name);
    throw Fault(Fault::kHere,
                list(element.attributes, "no attribute") + " in the tag of <" + element.name + ">",
                "attribute " + shown, advice(m_plan, element.attributes, given.name));
  }
}

// Of a text that stands in the buffer as it is; others are where the parser is.
size_t Reader::offsetOf(std::string_view text) const {
  const std::less<const char *> before;
  const char *end = m_call.buffer + m_call.length;
  const bool inside = !before(text.data(), m_call.buffer) && before(text.data(), end);
  return inside ? static_cast<size_t>(text.data() - m_call.buffer) : Fault::kHere;
}

// Most texts are one piece, which is taken from where it stands.
void Reader::collect(std::string_view bytes) {
  m_room.text.append(m_only).append(bytes);
  m_only = {};
}

std::string_view Reader::textOf(const Frame &frame) const {
  const std::string_view collected = std::string_view(m_room.text).substr(frame.textStart);
  return collected.empty() ? m_only : collected;
}

// An element comes in one that has a text: white space in front of it is layout, anything else is the whole text.
void Reader::part(Frame &frame) {
  frame.parted = true;
  if (frame.textDone) return;
  if (trimmed(textOf(frame)).empty()) {
    m_room.text.resize(frame.textStart);
    m_only = {};
  } else {
    collect({});
    frame.textDone = true;
  }
}

// Whether it is text at all, and not layout behind the elements.
bool Reader::takesMore(const Frame &frame, std::string_view bytes) const {
  if (!frame.textDone) return true;
  const std::string_view inner = trimmed(bytes);
  if (inner.empty()) return false;
  const Element &element = *frame.element;
  if (!element.field) m_call.path.field(element.text->node);
  throw Fault(offsetOf(inner), "the text of <" + element.name + "> in one place", "text " + quoted(inner),
              "A text that goes on behind an element is no single value");
}

void Reader::text(std::string_view bytes, Bytes bytesAre) {
  if (m_skipped > 0) return;
  const Frame &top = m_room.frames.back();
  const Element &element = *top.element;
  if (element.text.has_value()) {
    if (!takesMore(top, bytes)) return;
    const bool first = m_only.empty() && m_room.text.size() == top.textStart;
    if (first && bytesAre == Bytes::Staying) {
      m_only = bytes;
    } else {
      collect(bytes);
    }
    return;
  }
  const std::string_view inner = trimmed(bytes);
  if (inner.empty() || m_plan.skipUnknown) return;
  throw Fault(offsetOf(inner), list(element.children, "nothing") + " in <" + element.name + ">",
              "text " + quoted(inner), "Remove it; a field with psKind=\"text\" would take it");
}

void Reader::store(const Text &text, kit::List list, std::string_view bytes) {
  const std::string_view value = spaced(bytes, text.space, m_room.collapsed);
  checkRead(text, value, m_call.path);
  putRead(text, list, m_call.store, value);
}

void Reader::close() {
  --m_depth;
  if (m_skipped > 0) {
    --m_skipped;
    return;
  }
  const Frame frame = m_room.frames.back();
  const Element &element = *frame.element;
  if (element.text.has_value()) {
    if (!element.field) m_call.path.field(element.text->node);
    std::string_view text = textOf(frame);
    if ((frame.parted || element.text->layout) && trimmed(text).empty()) text = {};
    store(*element.text, frame.list, text);
    m_only = {};
    if (!element.field) m_call.path.field(nullptr);
  }
  complete(frame);
  m_room.text.resize(frame.textStart);
  m_room.seen.resize(frame.seenStart);
  m_room.frames.pop_back();
  leave(element);
}

// What must have come by the end of the element.
void Reader::complete(const Frame &frame) {
  const Element &element = *frame.element;
  for (const size_t required : element.requiredChildren) {
    const Element &child = element.children[required];
    if (child.loop()) {
      const int times = frame.list.repetitions(child.loopSlot);
      if (times >= child.minTimes) continue;
      throw Fault(Fault::kHere, "<" + child.shown + "> at least " + std::to_string(child.minTimes) + " times",
                  std::to_string(times), "See nMin of its XmlLoop");
    }
    if (m_room.seen[frame.seenStart + required] != 0) continue;
    if (!child.wrapper()) m_call.path.field(child.node);
    throw Fault(Fault::kHere, "<" + child.shown + "> in <" + element.name + ">", "its end",
                "It is mandatory");
  }
  for (const kit::Count &each : element.counts) checkCount(each, frame.list, m_call.store, m_call.path);
}

void Reader::leave(const Element &element) {
  if (element.field && !element.loop()) {
    m_call.path.field(nullptr);
  } else if (!element.wrapper() && !m_room.frames.empty()) {
    m_call.path.leave();  // the root was not entered
  }
}

}  // namespace cvt::xml
