#include "parser.h"

#include "cursor.h"
#include "kit/log.h"
#include "member_names.h"
#include "seen.h"

namespace cvt::json {

namespace {

using kit::Fault;
using kit::List;

constexpr const char *kSeeNull = "psNull says what null means";

// Memory that a parser needs and that stays for the next one.
struct Room {
  SeenStack seen;
  std::string text;    // a name with escapes
  std::string others;  // unknown members of the open objects
  MemberNames names;
};
Room f_room;

constexpr size_t kKept = size_t{1} << 20;

// Leaves nothing of a text to the next one, and no more memory than is usual.
struct Release {
  Release() {
    f_room.seen.clear();
    f_room.others.clear();
  }
  ~Release() {
    if (f_room.text.capacity() > kKept) std::string().swap(f_room.text);
    if (f_room.others.capacity() > kKept) std::string().swap(f_room.others);
    trimScanner();
  }
};

std::string quoted(std::string_view text) {
  return kit::quoted(text.data(), text.size());
}

// "a, b, c" for messages; long lists are cut.
std::string list(const Item &object) {
  static constexpr size_t kShown = 12;
  std::string names;
  size_t count = 0;
  for (const Item &child : object.children) {
    if (++count <= kShown) names += (count == 1 ? "" : ", ") + quoted(child.name);
  }
  if (count > kShown) names += ", and " + std::to_string(count - kShown) + " more";
  return names.empty() ? "no member" : count == 1 ? "the member " + names : "one of the members " + names;
}

std::string adviceFor(const Item &object, const std::string &name) {
  const std::string skip = "psUnknown=\"skip\" in JsonMsg passes over it";
  std::vector<const char *> known;
  for (const Item &child : object.children) known.push_back(child.name.c_str());
  const char *near = kit::nearest(name.c_str(), known);
  return near == nullptr ? skip : "Write " + std::string(near) + "; " + skip;
}

const char *kindOf(const Item &item) {
  switch (item.form) {
    case Form::Object:
    case Form::Members:
      return "an object";
    case Form::Tuple:
    case Form::Array:
      return "an array";
    default:
      return item.type == Type::Number    ? "a number"
             : item.type == Type::Boolean ? "true or false"
             : item.type == Type::Null    ? "null"
             : item.type == Type::Any     ? "a value"
                                          : "a text in double quotes";
  }
}

// An object that is being read.
struct Open {
  size_t seen;      // of its children: from here in Room::seen
  size_t others;    // its unknown members: from here in Room::others
  size_t next = 0;  // the child that comes next when the text keeps the definition's order
};

class Parser {
 public:
  Parser(const Plan &plan, kit::ParseCall &call, const Tokens &tokens)
      : m_plan(plan), m_call(call), m_path(call.path), m_in(tokens, call.from, plan.maxDepth) {}

  // The offset behind the last token.
  size_t run() {
    const List values(m_call.values, m_plan.slots);
    read(m_plan.root, values);
    counts(m_plan.counts, values);
    if (m_plan.whole) m_in.end("A message is one value; nWhole=\"0\" leaves what follows to the caller");
    return m_in.offset();
  }

 private:
  Seen read(const Item &item, List values);
  Seen scalar(const Item &item, List values);
  void content(const Item &item, List values);
  void string(const kit::Rule &rule, List values, std::string_view raw);
  void open(char bracket);
  void object(const Item &item, List values);
  bool plainMembers(const Item &item, List values, Open &open);
  void otherMembers(const Item &item, List values, Open &open);
  void member(const Item &item, List values, Open &open);
  int find(const Item &item, std::string_view raw);
  void unknown(const Item &item, std::string_view raw, const Open &open);
  void putOthers(const Item &item, List values, const Open &open);
  void addName(std::string_view raw);
  void tuple(const Item &item, List values);
  void array(const Item &item, List values);
  void members(const Item &item, List values);
  List repetition(const Item &item, List values, int index);
  void complete(const Item &item, size_t seen);
  void enough(const Item &item, List values);
  void counts(const std::vector<kit::Count> &counts, List values);
  bool takeNull();
  // Of the quote before a name that stands in the text.
  size_t offsetOf(std::string_view name) const {
    return static_cast<size_t>(name.data() - 1 - m_call.buffer);
  }
  void here() { m_call.end = m_in.offset(); }  // where faults without an offset are reported

  const Plan &m_plan;
  kit::ParseCall &m_call;
  kit::Path &m_path;
  Cursor m_in;
};

bool Parser::takeNull() {
  if (m_in.peek() != 'n' || m_in.token() != "null") return false;
  m_in.next();
  return true;
}

Seen Parser::read(const Item &item, List values) {
  if (item.field()) return scalar(item, values);
  if (item.node != nullptr) m_path.enter(item.node);
  Seen seen = kThere;
  if (item.null != Null::Refuse && takeNull()) {
    seen = item.null == Null::Absent ? kAbsent : kThere;
    if (item.loop() && seen == kThere) enough(item, values);
  } else if (item.form == Form::Object) {
    object(item, values);
  } else if (item.form == Form::Tuple) {
    tuple(item, values);
  } else if (item.form == Form::Array) {
    array(item, values);
  } else {
    members(item, values);
  }
  if (item.node != nullptr) m_path.leave();
  return seen;
}

Seen Parser::scalar(const Item &item, List values) {
  m_path.field(item.node);
  here();
  Seen seen = kThere;
  if (item.null != Null::Refuse && takeNull()) {
    if (item.null == Null::Absent) {
      seen = kAbsent;
    } else {
      checkRead(item.rule, {}, m_path);
      putRead(item.rule, values, m_call.store, {});
    }
  } else {
    content(item, values);
  }
  m_path.field(nullptr);
  return seen;
}

void Parser::content(const Item &item, List values) {
  if (item.type == Type::Text) {
    std::string_view raw;
    if (m_in.takeString(raw)) return string(item.rule, values, raw);
    const bool null = m_in.peek() == 'n';
    return string(item.rule, values,
                  m_in.string(kindOf(item), null ? kSeeNull : "Put it in double quotes, or see psType"));
  }
  std::string_view value;
  if (item.type == Type::Any) {
    value = m_in.value();
  } else {
    value = m_in.token();
    const bool fits = item.type == Type::Number    ? isNumber(value)
                      : item.type == Type::Boolean ? value == "true" || value == "false"
                                                   : false;
    if (!fits) m_in.refuse(kindOf(item), m_in.peek() == 'n' ? kSeeNull : "See psType");
    m_in.next();
  }
  checkRead(item.rule, value, m_path);
  putRead(item.rule, values, m_call.store, value);
}

void Parser::string(const kit::Rule &rule, List values, std::string_view raw) {
  if (!hasEscape(raw)) {
    checkRead(rule, raw, m_path);
    return putRead(rule, values, m_call.store, raw);
  }
  char *value = m_call.store.take(raw.size());
  const size_t length = m_in.decode(raw, value);
  m_call.store.trim(value, raw.size(), length);
  checkRead(rule, {value, length}, m_path);
  values.put(rule.slot, value, length);
}

inline void Parser::open(char bracket) {
  if (!m_in.takeOpen(bracket)) m_in.refuseOpen(bracket, m_in.peek() == 'n' ? kSeeNull : "");
}

void Parser::object(const Item &item, List values) {
  open('{');
  Open open{f_room.seen.open(item.children.size()), f_room.others.size()};
  if (m_in.peek() != '}' && !plainMembers(item, values, open)) otherMembers(item, values, open);
  if (m_in.peek() == '}') {
    if (!item.required.empty()) complete(item, open.seen);
    if (item.others >= 0) putOthers(item, values, open);
  }
  m_in.close('}');
  f_room.seen.close(open.seen);
}

void Parser::putOthers(const Item &item, List values, const Open &open) {
  const kit::Rule &rule = item.children[static_cast<size_t>(item.others)].rule;
  m_path.field(rule.node);
  here();
  const std::string_view text = std::string_view(f_room.others).substr(open.others);
  checkRead(rule, text, m_path);
  putRead(rule, values, m_call.store, text);
  m_path.field(nullptr);
  f_room.others.resize(open.others);
}

// Takes the children that come next as long as they are plain and so is what stands in the text: most members are
// nothing else. True when no other member follows.
bool Parser::plainMembers(const Item &item, List values, Open &open) {
  const size_t count = item.children.size();
  char *const seen = f_room.seen.from(open.seen);
  for (size_t &next = open.next; next < count; ++next) {
    const Item &child = item.children[next];
    if (!child.plain || seen[next] != kNothing) return false;
    std::string_view value;
    bool more = false;
    const bool taken = child.type == Type::Text ? m_in.takeText(child.readKey, value, more)
                                                : m_in.takeNumber(child.readKey, value, more);
    if (!taken) return false;
    putRead(child.rule, values, m_call.store, value);
    seen[next] = kThere;
    if (!more) return true;
  }
  return false;
}

void Parser::otherMembers(const Item &item, List values, Open &open) {
  const MemberNames::Scope names(f_room.names);
  do member(item, values, open);
  while (m_in.take(',') && !plainMembers(item, values, open));
}

// Texts mostly keep the definition's order, so the next child is tried before the table.
void Parser::member(const Item &item, List values, Open &open) {
  const size_t offset = m_in.offset();
  size_t position = open.next;
  if (position >= item.children.size() || !m_in.takeName(item.children[position].quoted)) {
    const std::string_view raw = m_in.name();
    const int found = find(item, raw);
    if (found < 0) return unknown(item, raw, open);
    position = static_cast<size_t>(found);
  }
  const Item &child = item.children[position];
  if (f_room.seen.from(open.seen)[position] != kNothing) {
    m_path.field(child.node);
    throw Fault(offset, "each member once", "a second " + quoted(child.name), "Remove one of them");
  }
  const Seen came = read(child, values);
  f_room.seen.from(open.seen)[position] = came;
  open.next = position + 1;
}

int Parser::find(const Item &item, std::string_view raw) {
  if (!hasEscape(raw)) return item.names.find(raw);
  f_room.text.resize(raw.size());
  return item.names.find({f_room.text.data(), m_in.decode(raw, f_room.text.data())});
}

void Parser::unknown(const Item &item, std::string_view raw, const Open &open) {
  if (item.others < 0 && !m_plan.skipUnknown) {
    throw Fault(offsetOf(raw), list(item), "member " + quoted(raw), adviceFor(item, std::string(raw)));
  }
  addName(raw);
  const std::string_view text = m_in.member(raw);
  if (item.others < 0) return;
  if (f_room.others.size() > open.others) f_room.others += ',';
  f_room.others += text;
}

// A name that the definition does not have may come once, too.
void Parser::addName(std::string_view raw) {
  const size_t offset = offsetOf(raw);
  if (f_room.names.count() >= m_plan.maxMembers) {
    throw Fault(offset, "at most " + std::to_string(m_plan.maxMembers) + " members", "one more",
                "Raise nMaxMembers of JsonMsg");
  }
  std::string_view name = raw;
  if (hasEscape(raw)) {
    char *decoded = m_call.store.take(raw.size());
    const size_t length = m_in.decode(raw, decoded);
    m_call.store.trim(decoded, raw.size(), length);
    name = {decoded, length};
  }
  if (!f_room.names.add(name)) {
    throw Fault(offset, "each member once", "a second " + quoted(name), "Remove one of them");
  }
}

void Parser::tuple(const Item &item, List values) {
  open('[');
  const size_t seen = f_room.seen.open(item.children.size());
  if (m_in.peek() != ']') {
    size_t position = 0;
    do {
      if (position < item.children.size()) {
        const Seen came = read(item.children[position], values);
        f_room.seen.from(seen)[position] = came;
        ++position;
      } else if (m_plan.skipUnknown) {
        m_in.value();
      } else {
        m_in.refuse("at most " + std::to_string(position) + " elements",
                    "psUnknown=\"skip\" in JsonMsg passes over it");
      }
    } while (m_in.take(','));
  }
  if (m_in.peek() == ']') complete(item, seen);
  m_in.close(']');
  f_room.seen.close(seen);
}

List Parser::repetition(const Item &item, List values, int index) {
  m_path.repetition(index);
  here();
  if (item.maxTimes > 0 && index >= item.maxTimes) {
    throw Fault(Fault::kHere, "at most " + std::to_string(item.maxTimes) + " repetitions", "one more",
                "Raise nMax of its JsonLoop");
  }
  return values.append(item.loopSlot, item.bodySlots);
}

void Parser::array(const Item &item, List values) {
  const Item &each = item.children[0];
  // What read() would do for such an object is to call object().
  const bool bare = each.form == Form::Object && each.node == nullptr && each.null == Null::Refuse;
  open('[');
  if (m_in.peek() != ']') {
    int index = 0;
    do {
      const List body = repetition(item, values, index++);
      if (bare) {
        object(each, body);
      } else {
        read(each, body);
      }
      counts(item.counts, body);
    } while (m_in.take(','));
  }
  m_path.repetition(-1);
  if (m_in.peek() == ']') enough(item, values);
  m_in.close(']');
}

void Parser::members(const Item &item, List values) {
  open('{');
  const MemberNames::Scope names(f_room.names);
  if (m_in.peek() != '}') {
    int index = 0;
    do {
      const List body = repetition(item, values, index++);
      const kit::Rule &rule = item.children[1].rule;
      m_path.field(rule.node);
      const std::string_view raw = m_in.name();
      addName(raw);
      string(rule, body, raw);
      m_path.field(nullptr);
      read(item.children[0], body);
      counts(item.counts, body);
    } while (m_in.take(','));
  }
  m_path.repetition(-1);
  if (m_in.peek() == '}') enough(item, values);
  m_in.close('}');
}

// What must have come by the end of an object or a tuple.
void Parser::complete(const Item &item, size_t seen) {
  for (const size_t required : item.required) {
    const char came = f_room.seen.from(seen)[required];
    if (came == kThere) continue;
    const Item &child = item.children[required];
    m_path.field(child.node);
    const bool absent = came == kAbsent;
    const std::string what =
        item.form == Form::Tuple ? "element " + std::to_string(required + 1) : "member " + quoted(child.name);
    throw Fault(
        m_in.offset(), what,
        absent ? "null" : "the end of the " + std::string(item.form == Form::Tuple ? "array" : "object"),
        "It is mandatory");
  }
}

void Parser::enough(const Item &item, List values) {
  const int times = values.repetitions(item.loopSlot);
  if (times >= item.minTimes) return;
  throw Fault(m_in.offset(), "at least " + std::to_string(item.minTimes) + " repetitions",
              std::to_string(times), "See nMin of its JsonLoop");
}

void Parser::counts(const std::vector<kit::Count> &counts, List values) {
  if (counts.empty()) return;
  here();
  for (const kit::Count &each : counts) checkCount(each, values, m_call.store, m_path);
}

void limit(const Plan &plan, const kit::ParseCall &call, size_t size) {
  if (plan.maxSize == 0 || size <= plan.maxSize) return;
  throw Fault(call.from + plan.maxSize, "at most " + std::to_string(plan.maxSize) + " bytes",
              std::to_string(size), "Raise nMaxSize of JsonMsg");
}

}  // namespace

void parseText(const Plan &plan, kit::ParseCall &call) {
  const std::string_view text(call.buffer + call.from, call.length - call.from);
  const Release release;
  if (plan.whole) limit(plan, call, text.size());
  const Tokens tokens = scan(text, plan.whole);
  limit(plan, call, *tokens.end);
  size_t end = Parser(plan, call, tokens).run();
  while (end < call.length && isBlank(call.buffer[end])) ++end;
  call.end = plan.whole ? call.length : end;
}

}  // namespace cvt::json
