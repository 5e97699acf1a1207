#include "generator.h"

#include "escape.h"
#include "kit/bytes.h"
#include "space.h"

namespace cvt::xml {

namespace {

using kit::Fault;
using kit::List;

class Generator {
 public:
  Generator(const Plan &plan, kit::GenerateCall &call)
      : m_plan(plan), m_out(call.out), m_path(call.path), m_pretty(plan.indent > 0) {}

  void document(ValueList *values) {
    m_out.put(m_plan.prologue);
    element(m_plan.root, List(values, m_plan.slots));
    if (m_plan.finalLineFeed) m_out.put('\n');
  }

 private:
  void child(const Element &child, const List &list);
  bool plain(const Element &element, std::string_view value);
  void field(const Element &child, const List &list);
  void repetitions(const Element &child, const List &list);
  void element(const Element &element, const List &list);
  void leaf(const Element &element, std::string_view value);
  void attributes(const Element &element, const List &list);
  void children(const Element &element, const List &list);
  void empty(const Element &element);
  void newLine();

  bool hasValue(const Element &element, const List &list) const;
  std::string_view textOf(const Text &text, const List &list) {
    return text.asIs ? list.get(text.slot) : ruledText(text, list);
  }
  std::string_view ruledText(const Text &text, const List &list);

  const Plan &m_plan;
  kit::Output &m_out;
  kit::Path &m_path;
  bool m_pretty;  // children stand on lines of their own
  size_t m_depth = 0;
  kit::Digits m_digits{};  // a count being written
};

void Generator::newLine() {
  m_out.put('\n');
  m_out.fill(' ', m_depth * m_plan.indent);
}

// Whether anything inside an element has a value. Constants and defaults that were not asked for do not make
// an optional group appear.
bool Generator::hasValue(const Element &element, const List &list) const {
  if (element.loop()) return list.repetitions(element.loopSlot) > 0;
  if (element.text.has_value() && kit::given(*element.text, list)) return true;
  for (const Attribute &attribute : element.attributes) {
    if (kit::given(attribute.text, list)) return true;
  }
  for (const Element &child : element.children) {
    if (hasValue(child, list)) return true;
  }
  return false;
}

// The text to be written of a field of which something is asked. One that would be read as no value is none, where
// there must be one.
std::string_view Generator::ruledText(const Text &text, const List &list) {
  const std::string_view value = textToWrite(text, list, m_path, m_digits);
  if (text.mandatory && text.layout && trimmed(value).empty()) checkRead(text, {}, m_path);
  return value;
}

void Generator::child(const Element &child, const List &list) {
  if (child.loop()) return repetitions(child, list);
  if (child.field) return field(child, list);
  if (child.wrapper()) {
    if (child.mandatory || child.keepEmpty || hasValue(child, list)) element(child, list);
    return;
  }
  m_path.enter(child.node);
  if (child.mandatory || child.keepEmpty || hasValue(child, list)) element(child, list);
  m_path.leave();
}

void Generator::field(const Element &child, const List &list) {
  if (!m_pretty && child.text->asIs && plain(child, list.peek(child.text->slot))) return;
  m_path.field(child.node);
  const std::string_view text = textOf(*child.text, list);
  if (isWritten(*child.text, list, text)) leaf(child, text);
  m_path.field(nullptr);
}

void Generator::repetitions(const Element &child, const List &list) {
  const int times = list.repetitions(child.loopSlot);
  m_path.enter(child.node);
  if (times < child.minTimes || (child.maxTimes > 0 && times > child.maxTimes)) {
    const bool few = times < child.minTimes;
    throw Fault(Fault::kHere,
                "<" + child.shown + "> at " + (few ? "least " : "most ") +
                    std::to_string(few ? child.minTimes : child.maxTimes) + " times",
                std::to_string(times), "See nMin and nMax of its XmlLoop");
  }
  for (int i = 0; i < times; ++i) {
    m_path.repetition(i);
    const List body = list.repetition(child.loopSlot, i, child.bodySlots);
    if (child.field) {
      leaf(child, textOf(*child.text, body));
    } else {
      element(child, body);
    }
  }
  m_path.leave();
}

// A text that stands as it is, with its tags in one piece: most elements are nothing else. False, and nothing was
// written, for everything else and where there is no room.
[[gnu::always_inline]] inline bool Generator::plain(const Element &element, std::string_view value) {
  return !value.empty() && kit::isPlainXml(value.data(), value.size()) &&
         m_out.tryPut(element.start, value, element.close);
}

// An element that is nothing but text.
void Generator::leaf(const Element &element, std::string_view value) {
  if (m_pretty) newLine();
  if (plain(element, value)) return;
  if (value.empty()) {
    m_out.put(element.open);
    return empty(element);
  }
  m_out.put(element.start);
  putEscaped(m_out, *m_plan.charset, value, Place::Content);
  m_out.put(element.close);
}

// The end of a start tag, and the end tag, of an element without content.
void Generator::empty(const Element &element) {
  if (m_plan.emptyPair) {
    m_out.put('>');
    m_out.put(element.close);
  } else {
    m_out.put("/>");
  }
}

void Generator::element(const Element &element, const List &list) {
  const bool pretty = m_pretty;
  if (pretty && m_depth > 0) newLine();
  m_out.put(element.open);
  attributes(element, list);
  const size_t tagEnd = m_out.offset();
  m_out.put('>');
  const size_t inside = m_out.offset();
  if (element.text.has_value()) {
    m_pretty = false;  // line breaks would become part of the text
    m_path.field(element.text->node);
    putEscaped(m_out, *m_plan.charset, textOf(*element.text, list), Place::Content);
    m_path.field(nullptr);
  }
  children(element, list);
  if (m_out.offset() == inside) {
    m_out.rewind(tagEnd);
    empty(element);
  } else {
    if (m_pretty) newLine();
    m_out.put(element.close);
  }
  m_pretty = pretty;
}

void Generator::children(const Element &element, const List &list) {
  ++m_depth;
  for (const Element &each : element.children) child(each, list);
  --m_depth;
}

void Generator::attributes(const Element &element, const List &list) {
  for (const Attribute &attribute : element.attributes) {
    m_path.field(attribute.text.node);
    const std::string_view text = textOf(attribute.text, list);
    if (isWritten(attribute.text, list, text)) {
      m_out.put(attribute.open);
      putEscaped(m_out, *m_plan.charset, text, Place::AttributeValue);
      m_out.put('"');
    }
  }
  m_path.field(nullptr);
}

}  // namespace

void generateDocument(const Plan &plan, kit::GenerateCall &call) {
  Generator(plan, call).document(call.values);
}

}  // namespace cvt::xml
