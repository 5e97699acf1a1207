#include "generator.h"

#include "cursor.h"
#include "escape.h"
#include "member_names.h"

namespace cvt::json {

namespace {

using kit::Fault;
using kit::List;

MemberNames f_names;

std::string quoted(std::string_view text) {
  return kit::quoted(text.data(), text.size());
}

class Generator {
 public:
  Generator(const Plan &plan, kit::GenerateCall &call)
      : m_plan(plan), m_out(call.out), m_path(call.path), m_store(call.memory) {}

  void run(ValueList *values) {
    element(m_plan.root, List(values, m_plan.slots));
    if (m_plan.finalLineFeed) m_out.put('\n');
  }

 private:
  // An item as a member of an object, if it is written at all; and as a value that stands in any case.
  void member(const Item &item, const List &list);
  void element(const Item &item, const List &list);

  void scalar(const Item &item, std::string_view text);
  void any(std::string_view text);
  void others(const Item &object, const Item &item, const List &list);
  void object(const Item &item, const List &list);
  void tuple(const Item &item, const List &list);
  void loop(const Item &item, const List &list);
  void name(const Item &item, const List &body);
  bool addName(std::string_view name);

  bool plainMember(const Item &item, std::string_view text);
  void key(const Item &item);
  void newLine();
  void separate();
  void open(char bracket);
  void close(char bracket);

  static bool hasValue(const Item &item, const List &list);
  bool stands(const Item &item, const List &list);
  std::string_view decoded(const Cursor &in, std::string_view raw);

  const Plan &m_plan;
  kit::Output &m_out;
  kit::Path &m_path;
  kit::Store m_store;
  bool m_first = true;  // nothing has been written in the innermost object or array
  size_t m_depth = 0;
  kit::Digits m_digits{};  // a count being written
};

void Generator::newLine() {
  m_out.put('\n');
  m_out.fill(' ', m_depth * m_plan.indent);
}

// What stands before each value or member but the first, and the line it stands on.
inline void Generator::separate() {
  if (!m_first) m_out.put(',');
  m_first = false;
  if (m_plan.indent > 0) newLine();
}

void Generator::key(const Item &item) {
  if (m_plan.indent == 0) {
    m_out.put(std::string_view(item.key).substr(m_first ? 1 : 0));
    m_first = false;
    return;
  }
  separate();
  m_out.put(std::string_view(item.key).substr(1));
}

// A text or number that stands as it is, with its name, in one piece; false, and nothing was written, for everything
// else and where there is no room.
[[gnu::always_inline]] inline bool Generator::plainMember(const Item &item, std::string_view text) {
  if (m_plan.indent != 0 || text.empty()) return false;
  const size_t comma = m_first ? 1 : 0;
  if (item.type == Type::Text) {
    if (!isPlain(text) || !m_out.tryPut(std::string_view(item.textKey).substr(comma), text, "\""))
      return false;
  } else {
    if (item.type != Type::Number || !isNumber(text)) return false;
    if (!m_out.tryPut(std::string_view(item.key).substr(comma), text, {})) return false;
  }
  m_first = false;
  return true;
}

void Generator::open(char bracket) {
  m_out.put(bracket);
  ++m_depth;
  m_first = true;
}

inline void Generator::close(char bracket) {
  --m_depth;
  if (!m_first && m_plan.indent > 0) newLine();
  m_out.put(bracket);
  m_first = false;
}

// Whether anything inside has a value. Constants and defaults that were not asked for do not make an optional
// group appear.
bool Generator::hasValue(const Item &item, const List &list) {
  if (item.loop()) return list.repetitions(item.loopSlot) > 0;
  if (item.field()) return kit::given(item.rule, list);
  for (const Item &child : item.children) {
    if (hasValue(child, list)) return true;
  }
  return false;
}

// Whether an element of a tuple has something to say.
bool Generator::stands(const Item &item, const List &list) {
  if (item.form == Form::Scalar) {
    m_path.field(item.node);
    return isWritten(item.rule, list, textToWrite(item.rule, list, m_path, m_digits));
  }
  return item.mandatory || item.keepEmpty || item.minTimes > 0 || hasValue(item, list);
}

void Generator::member(const Item &item, const List &list) {
  if (item.plain && plainMember(item, list.peek(item.rule.slot))) return;
  if (item.form == Form::Scalar) {
    m_path.field(item.node);
    const std::string_view text = textToWrite(item.rule, list, m_path, m_digits);
    if (isWritten(item.rule, list, text) && (item.plain || !plainMember(item, text))) {
      key(item);
      scalar(item, text);
    }
    m_path.field(nullptr);
  } else if (stands(item, list)) {
    key(item);
    element(item, list);
  }
}

void Generator::element(const Item &item, const List &list) {
  if (item.form == Form::Scalar) {
    m_path.field(item.node);
    scalar(item, textToWrite(item.rule, list, m_path, m_digits));
    m_path.field(nullptr);
    return;
  }
  if (item.node != nullptr) m_path.enter(item.node);
  if (item.null == Null::Empty && item.minTimes == 0 && !hasValue(item, list)) {
    m_out.put("null");
  } else if (item.loop()) {
    loop(item, list);
  } else if (item.form == Form::Tuple) {
    tuple(item, list);
  } else {
    object(item, list);
  }
  if (item.node != nullptr) m_path.leave();
}

void Generator::scalar(const Item &item, std::string_view text) {
  if (text.empty() && item.null == Null::Empty) return m_out.put("null");
  switch (item.type) {
    case Type::Text:
      return putString(m_out, text, m_plan.ascii);
    case Type::Number:
      if (isNumber(text)) return m_out.put(text);
      throw Fault(Fault::kHere, "a number as JSON writes it", quoted(text),
                  "Write 12, -0.5 or 1e3, without leading zeros, plus sign or blanks");
    case Type::Boolean:
      if (text == "true" || text == "false") return m_out.put(text);
      throw Fault(Fault::kHere, "true or false", quoted(text), "See psType");
    case Type::Null:
      throw Fault(Fault::kHere, "an empty value", quoted(text), "Its psType is null");
    case Type::Any:
      return any(text);
  }
}

// A value that is JSON itself is checked and copied.
void Generator::any(std::string_view text) {
  if (text.empty()) throw Fault(Fault::kHere, "a JSON value", "none", "psNull=\"empty\" writes null");
  Cursor in(scan(text, true), m_out.offset(), m_plan.maxDepth, m_depth);
  const std::string_view value = in.value();
  in.end("The value of the field is one JSON value");
  m_out.put(value);
}

std::string_view Generator::decoded(const Cursor &in, std::string_view raw) {
  if (!hasEscape(raw)) return raw;
  char *name = m_store.take(raw.size());
  return {name, in.decode(raw, name)};
}

// The members that the definition does not know, one by one: they must not be those that it knows.
void Generator::others(const Item &object, const Item &item, const List &list) {
  m_path.field(item.node);
  const std::string_view text = textToWrite(item.rule, list, m_path, m_digits);
  if (text.empty()) return m_path.field(nullptr);
  const MemberNames::Scope names(f_names);
  Cursor in(scan(text, true), m_out.offset(), m_plan.maxDepth, m_depth);
  do {
    const std::string_view raw = in.name();
    const std::string_view member = in.member(raw);
    const std::string_view name = decoded(in, raw);
    if (object.names.find(name) >= 0 || !addName(name)) {
      throw Fault(Fault::kHere, "members that the definition does not have, each once", quoted(raw),
                  "Remove it from the value");
    }
    separate();
    m_out.put(member);
  } while (in.take(','));
  in.end("The value of the field is members, without the braces around them");
  m_path.field(nullptr);
}

void Generator::object(const Item &item, const List &list) {
  open('{');
  for (const Item &child : item.children) {
    if (child.form == Form::Others) {
      others(item, child, list);
    } else {
      member(child, list);
    }
  }
  close('}');
}

// Elements have their places: only the last ones may be left out.
void Generator::tuple(const Item &item, const List &list) {
  size_t last = 0;
  for (size_t i = 0; i < item.children.size(); ++i) {
    if (stands(item.children[i], list)) last = i + 1;
  }
  open('[');
  for (size_t i = 0; i < last; ++i) {
    separate();
    element(item.children[i], list);
  }
  close(']');
}

void Generator::loop(const Item &item, const List &list) {
  const int times = list.repetitions(item.loopSlot);
  if (times < item.minTimes || (item.maxTimes > 0 && times > item.maxTimes)) {
    const bool few = times < item.minTimes;
    throw Fault(Fault::kHere,
                std::string("at ") + (few ? "least " : "most ") +
                    std::to_string(few ? item.minTimes : item.maxTimes) + " repetitions",
                std::to_string(times), "See nMin and nMax of its JsonLoop");
  }
  const bool named = item.form == Form::Members;
  const MemberNames::Scope names(f_names);
  open(named ? '{' : '[');
  for (int i = 0; i < times; ++i) {
    m_path.repetition(i);
    const List body = list.repetition(item.loopSlot, i, item.bodySlots);
    separate();
    if (named) name(item, body);
    element(item.children[0], body);
  }
  m_path.repetition(-1);
  close(named ? '}' : ']');
}

void Generator::name(const Item &item, const List &body) {
  const kit::Rule &rule = item.children[1].rule;
  m_path.field(rule.node);
  const std::string_view text = textToWrite(rule, body, m_path, m_digits);
  if (!addName(text)) {
    throw Fault(Fault::kHere, "each name once", "a second " + quoted(text), "Make the names different");
  }
  putString(m_out, text, m_plan.ascii);
  m_out.put(m_plan.indent == 0 ? ":" : ": ");
  m_path.field(nullptr);
}

// False when the object has it already. As many are written as are read again.
bool Generator::addName(std::string_view name) {
  if (f_names.count() >= m_plan.maxMembers) {
    throw Fault(Fault::kHere, "at most " + std::to_string(m_plan.maxMembers) + " members", "one more",
                "Raise nMaxMembers of JsonMsg");
  }
  return f_names.add(name);
}

// The memory that checking a large value has taken is given back, whichever way.
struct Release {
  ~Release() { trimScanner(); }
};

}  // namespace

void generateText(const Plan &plan, kit::GenerateCall &call) {
  const Release release;
  Generator(plan, call).run(call.values);
}

}  // namespace cvt::json
