// compile.cpp: from a definition to its plan. Whatever could fail for a name, a namespace or an encoding
// fails here, when the definition loads, with the place in its file.
#include <utility>

#include "kit/attributes.h"
#include "kit/fault.h"
#include "kit/shape.h"
#include "names.h"
#include "plan.h"
#include "space.h"

namespace cvt::xml {

namespace {

using kit::Level;
using kit::Misconfigured;
using kit::Node;
using kit::NodeKind;

constexpr XmlField plainField() {
  XmlField field{};
  field.nSpace = -1;  // the document's
  return field;
}
constexpr XmlField kPlainField = plainField();
constexpr XmlGroup kPlainGroup{};
constexpr XmlLoop kPlainLoop{};

std::string text(const char *s) {
  return s == nullptr ? "" : s;
}

std::vector<std::string> words(const std::string &list) {
  static constexpr const char *kBlank = " \t\r\n";
  std::vector<std::string> all;
  size_t end = 0;
  for (size_t at = list.find_first_not_of(kBlank); at != std::string::npos;
       at = list.find_first_not_of(kBlank, end)) {
    end = list.find_first_of(kBlank, at);
    all.push_back(list.substr(at, end - at));
  }
  return all;
}

std::string escaped(const std::string &value) {
  std::string out;
  for (const char c : value) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

// What a level of elements inherits from the one around it.
struct Scope {
  std::string path;          // of the node around, for messages
  const void *record;        // its record
  std::string defaultSpace;  // the namespace of names without prefix
  size_t depth;              // open elements
};

// Makes room for a name at the end of `all`; false when it is there already.
template <class T>
bool addName(std::vector<T> &all, kit::NameTable &locals, const T &added) {
  const auto position = static_cast<int>(all.size());
  if (locals.add(added.local, position)) return true;
  for (int at = locals.find(added.local);;) {
    T &other = all[static_cast<size_t>(at)];
    if (other.space == added.space) return false;
    if (other.sameLocal < 0) {
      other.sameLocal = position;
      return true;
    }
    at = other.sameLocal;
  }
}

void limitUri(const std::string &uri, const Scope &scope) {
  if (uri.size() <= kLongestUri) return;
  throw Misconfigured(scope.path, scope.record,
                      "a namespace URI of at most " + std::to_string(kLongestUri) + " bytes",
                      "one of " + std::to_string(uri.size()), "Shorten it");
}

class Compiler {
 public:
  Compiler(const Msg &msg, const XmlMsg &document)
      : m_msg(msg), m_document(document), m_plan(std::make_unique<Plan>()) {}

  std::unique_ptr<Plan> run();

 private:
  void options();
  void encodings();
  void outputEncoding();
  void prefixes();
  void root(const Level &level);

  void children(Element &parent, const kit::Rules &rules, size_t from, size_t to, const Scope &scope);
  void addField(Element &parent, const kit::Rules &rules, size_t at, const Scope &scope);
  void addGroup(Element &parent, const kit::Rules &rules, size_t at, const Scope &scope);
  void addLoop(Element &parent, const kit::Rules &rules, size_t at, const Scope &scope);
  void addAttribute(Element &parent, Text text, const std::string &name, const Scope &scope);
  void limitAttributes(const Element &element, const Scope &scope) const;
  void addChild(Element &parent, Element child, const Scope &scope);
  void addAlternative(Element &parent, Element &child, const Scope &scope);
  Element repeatedField(const Node &node, const Scope &scope);
  Element repeatedGroup(const Node &node, const Scope &scope);
  Element wrapped(Element repeated, const XmlLoop &loop, const Scope &scope);

  Element element(const char *node, const std::string &name, const Scope &scope, const char *space = nullptr);
  Text textOf(const XmlField &field, const kit::Rules &rules, size_t at, const Scope &scope) const;
  void expand(Named &named, const std::string &defaultSpace, const Scope &scope);
  int addSpace(const std::string &uri);
  std::string encoded(const std::string &markup, const Scope &scope) const;
  Scope inside(const Scope &scope, const Node &node) const;

  const Msg &m_msg;
  const XmlMsg &m_document;
  std::unique_ptr<Plan> m_plan;
};

std::unique_ptr<Plan> Compiler::run() {
  options();
  encodings();
  prefixes();
  root(kit::compileShape(m_msg));
  return std::move(m_plan);
}

void Compiler::options() {
  m_plan->skipUnknown = m_document.nUnknown == static_cast<int>(Unknown::Skip);
  m_plan->maxDepth = static_cast<size_t>(m_document.nMaxDepth);
  m_plan->maxAttributes = static_cast<size_t>(m_document.nMaxAttributes);
  m_plan->indent = static_cast<size_t>(m_document.nIndent);
  m_plan->finalLineFeed = m_document.nFinalLineFeed != 0;
  m_plan->emptyPair = m_document.nEmptyTag == static_cast<int>(EmptyTag::Pair);
}

void Compiler::encodings() {
  m_plan->encoding = m_document.psEncoding;
  outputEncoding();
  m_plan->encodings.push_back({m_plan->encoding, m_plan->charset});
  for (const std::string &name : words(text(m_document.psInputEncodings))) {
    const kit::Charset *charset = kit::Charset::find(name.c_str());
    if (charset == nullptr || !charset->containsAscii()) {
      throw Misconfigured("", &m_document, "encodings that contain ASCII in psInputEncodings", name,
                          "UTF-8, UTF-16, ISO-8859-1 and US-ASCII need not be named");
    }
    m_plan->encodings.push_back({name, charset});
  }
  if (m_document.nDeclaration == 0) return;
  m_plan->prologue = "<?xml version=\"1.0\" encoding=\"" + m_plan->encoding + "\"?>";
  if (m_plan->indent > 0) m_plan->prologue += '\n';
}

// Markup is written byte by byte and values piece by piece: ASCII must be itself and no piece may leave the
// encoding in another shift state.
bool writable(const kit::Charset &charset) {
  if (charset.isUtf8()) return true;
  for (char c = ' '; c < 0x7F; ++c) {
    char byte[16];
    const kit::Converted one = charset.encode(&c, 1, byte, sizeof byte);
    if (one.damage != kit::Damage::None || one.written != 1 || byte[0] != c) return false;
  }
  for (const std::string_view probe : {"é", "Ж", "あ", "中", "한"}) {
    char bytes[64];
    const kit::Converted some = charset.encode(probe.data(), probe.size(), bytes, sizeof bytes);
    for (size_t i = 0; i < some.written; ++i) {
      if (static_cast<unsigned char>(bytes[i]) < ' ') return false;
    }
  }
  return true;
}

void Compiler::outputEncoding() {
  const std::string &name = m_plan->encoding;
  const bool plain = !name.empty() && name.find(':') == std::string::npos && name.front() != '_' &&
                     isName(name) && kit::Charset::ascii(name.data(), name.size());
  m_plan->charset = plain ? kit::Charset::find(name.c_str()) : nullptr;
  if (m_plan->charset == nullptr) {
    throw Misconfigured("", &m_document, "an encoding that iconv knows in psEncoding", "\"" + name + "\"",
                        "Write UTF-8, or see `iconv -l`");
  }
  if (!m_plan->charset->containsAscii() || !writable(*m_plan->charset)) {
    throw Misconfigured("", &m_document, "an encoding without shift states that contains ASCII in psEncoding",
                        name, "Write UTF-8; UTF-16 can be read but not written");
  }
}

void Compiler::prefixes() {
  const Scope scope{"", &m_document, "", 0};
  for (const std::string &pair : words(text(m_document.psPrefixes))) {
    const size_t equals = pair.find('=');
    const std::string prefix = pair.substr(0, equals);
    const std::string uri = equals == std::string::npos ? "" : pair.substr(equals + 1);
    if (!isPlainName(prefix) || prefix.starts_with("xml") || uri.empty() || uri == kXmlUri ||
        uri == kXmlnsUri) {
      throw Misconfigured("", &m_document, "prefix=URI pairs in psPrefixes", "\"" + pair + "\"",
                          "Write p=urn:example; prefixes that begin with xml are reserved");
    }
    for (const Prefix &other : m_plan->prefixes) {
      if (other.prefix != prefix) continue;
      throw Misconfigured("", &m_document, "each prefix once in psPrefixes", "\"" + prefix + "\" twice",
                          "Remove one");
    }
    limitUri(uri, scope);
    m_plan->prefixes.push_back({prefix, uri});
  }
}

void Compiler::root(const Level &level) {
  const Scope outside{"", &m_document, "", 0};
  const char *given = m_document.psRoot;
  const char *name = given == nullptr ? m_msg.psMsgName : given;
  Element root = element(m_msg.psMsgName, text(name), outside, m_document.psNamespace);
  std::string declared;
  for (const Prefix &prefix : m_plan->prefixes) {
    declared += " xmlns:" + prefix.prefix + "=\"" + escaped(prefix.uri) + "\"";
  }
  root.open += encoded(declared, outside);
  root.declarations += m_plan->prefixes.size();
  limitAttributes(root, outside);
  root.mandatory = true;
  root.counts = kit::countsOf(level);
  m_plan->slots = level.slots;
  const Scope inner{"", &m_document, text(m_document.psNamespace), 1};
  children(root, kit::Rules(level), 0, level.nodes.size(), inner);
  m_plan->root = std::move(root);
}

void Compiler::children(Element &parent, const kit::Rules &rules, size_t from, size_t to,
                        const Scope &scope) {
  for (size_t at = from; at < to; at = static_cast<size_t>(rules.level().nodes[at].next)) {
    const Node &node = rules.level().nodes[at];
    if (node.counted || node.structRecord != nullptr) {
      const void *nearest = node.structRecord != nullptr ? node.structRecord : node.record;
      if (nearest == nullptr) nearest = &m_document;
      throw Misconfigured(kit::nodePath(scope.path, node), nearest, "a field, a group or a loop",
                          node.counted ? "a counted node" : "a record in StructAttr",
                          "Write the XmlField or XmlGroup into FormatAttr, the LoopType of a loop into "
                          "StructAttr nType=\"1\"");
    }
    if (node.kind == NodeKind::Field) addField(parent, rules, at, scope);
    if (node.kind == NodeKind::Group) addGroup(parent, rules, at, scope);
    if (node.kind == NodeKind::Loop) addLoop(parent, rules, at, scope);
  }
  if (parent.text.has_value() && !parent.children.empty()) parent.text->layout = true;
}

Scope Compiler::inside(const Scope &scope, const Node &node) const {
  return {kit::nodePath(scope.path, node), node.record == nullptr ? scope.record : node.record,
          scope.defaultSpace, scope.depth};
}

void Compiler::addField(Element &parent, const kit::Rules &rules, size_t at, const Scope &scope) {
  const Node &node = rules.level().nodes[at];
  const Scope here = inside(scope, node);
  const XmlField &field = kit::recordOr(node.record, kXmlField, kPlainField, "FormatAttr.pInfo", here.path);
  Text value = textOf(field, rules, at, here);
  const auto kind = static_cast<FieldKind>(field.nKind);
  if (kind == FieldKind::Text) {
    if (parent.text.has_value() || field.psName != nullptr) {
      throw Misconfigured(here.path, here.record, "one text field, without psName, in an element",
                          parent.text.has_value() ? "a second one" : "psName", "Remove it");
    }
    parent.text = value;
    return;
  }
  const std::string name = field.psName == nullptr ? node.name : text(field.psName);
  if (kind == FieldKind::Attribute) return addAttribute(parent, value, name, here);
  Element leaf = element(node.name, name, here);
  leaf.field = true;
  leaf.text = value;
  leaf.mandatory = value.mandatory;
  addChild(parent, std::move(leaf), here);
}

void Compiler::addAttribute(Element &parent, Text value, const std::string &name, const Scope &scope) {
  // An attribute without prefix is in no namespace.
  Attribute attribute;
  attribute.name = name;
  attribute.text = value;
  attribute.open = encoded(" " + name + "=\"", scope);
  expand(attribute, "", scope);
  if (!addName(parent.attributes, parent.attributeNames, attribute)) {
    throw Misconfigured(scope.path, scope.record, "attributes of different names",
                        "a second \"" + name + "\" of <" + parent.name + ">", "Give it another psName");
  }
  if (value.mandatory) parent.requiredAttributes.push_back(parent.attributes.size());
  parent.attributes.push_back(std::move(attribute));
  limitAttributes(parent, scope);
}

// As parsing does, to which a declaration is an attribute.
void Compiler::limitAttributes(const Element &element, const Scope &scope) const {
  if (element.declarations + element.attributes.size() <= m_plan->maxAttributes) return;
  throw Misconfigured(scope.path, scope.record,
                      "at most " + std::to_string(m_plan->maxAttributes) + " attributes", "more",
                      "Raise nMaxAttributes of XmlMsg; a namespace that is declared counts as one");
}

void Compiler::addGroup(Element &parent, const kit::Rules &rules, size_t at, const Scope &scope) {
  const Node &node = rules.level().nodes[at];
  Scope here = inside(scope, node);
  const XmlGroup &group = kit::recordOr(node.record, kXmlGroup, kPlainGroup, "FormatAttr.pInfo", here.path);
  const std::string name = group.psName == nullptr ? node.name : text(group.psName);
  Element child = element(node.name, name, here, group.psNamespace);
  child.mandatory = group.nMandatory != 0;
  child.keepEmpty = group.nKeepEmpty != 0;
  if (group.psNamespace != nullptr) here.defaultSpace = group.psNamespace;
  ++here.depth;
  children(child, rules, at + 1, static_cast<size_t>(node.next), here);
  addChild(parent, std::move(child), scope);
}

void Compiler::addLoop(Element &parent, const kit::Rules &rules, size_t at, const Scope &scope) {
  const Node &node = rules.level().nodes[at];
  const Scope here = inside(scope, node);
  const XmlLoop &loop = kit::recordOr(node.loopRecord, kXmlLoop, kPlainLoop, "LoopType.ptInfo", here.path);
  if (loop.nMax != kNoLimit && loop.nMax < loop.nMin) {
    throw Misconfigured(here.path, node.loopRecord, "nMax at least nMin",
                        std::to_string(loop.nMax) + " and " + std::to_string(loop.nMin));
  }
  Scope around = scope;
  if (loop.psWrapper != nullptr) ++around.depth;
  const Level &inner = *node.body;
  const bool single = inner.nodes.size() == 1 && inner.nodes[0].message == node.message;
  Element repeated = single ? repeatedField(node, around) : repeatedGroup(node, around);
  repeated.loopSlot = node.slot;
  repeated.bodySlots = inner.slots;
  repeated.minTimes = loop.nMin;
  repeated.maxTimes = loop.nMax;
  addChild(parent, wrapped(std::move(repeated), loop, here), here);
}

// A loop without children: the one field of its body is the repeated element.
Element Compiler::repeatedField(const Node &node, const Scope &scope) {
  const Scope here = inside(scope, node);
  const XmlField &field = kit::recordOr(node.record, kXmlField, kPlainField, "FormatAttr.pInfo", here.path);
  if (field.nKind != static_cast<int>(FieldKind::Element) || field.nKeepEmpty != 0) {
    throw Misconfigured(here.path, here.record, "psKind=\"element\" without nKeepEmpty in a loop",
                        "another kind", "A repetition is always written, also when it is empty");
  }
  Element holder;
  addField(holder, kit::Rules(*node.body), 0, scope);
  Element repeated = std::move(holder.children[0]);
  repeated.mandatory = false;  // said of the value of each repetition
  return repeated;
}

Element Compiler::repeatedGroup(const Node &node, const Scope &scope) {
  Scope here = inside(scope, node);
  const XmlGroup &group = kit::recordOr(node.record, kXmlGroup, kPlainGroup, "FormatAttr.pInfo", here.path);
  if (group.nMandatory != 0 || group.nKeepEmpty != 0) {
    throw Misconfigured(here.path, here.record, "psName and psNamespace alone in the XmlGroup of a loop",
                        "nMandatory or nKeepEmpty", "Write nMin=\"1\" into its XmlLoop");
  }
  const std::string name = group.psName == nullptr ? node.name : text(group.psName);
  Element repeated = element(node.name, name, here, group.psNamespace);
  if (group.psNamespace != nullptr) here.defaultSpace = group.psNamespace;
  ++here.depth;
  repeated.counts = kit::countsOf(*node.body);
  children(repeated, kit::Rules(*node.body), 0, node.body->nodes.size(), here);
  return repeated;
}

Element Compiler::wrapped(Element repeated, const XmlLoop &loop, const Scope &scope) {
  if (loop.psWrapper == nullptr) {
    if (loop.nKeepEmpty == 0) return repeated;
    throw Misconfigured(scope.path, &loop, "psWrapper with nKeepEmpty", "none", "Write psWrapper");
  }
  Element wrapper = element(nullptr, loop.psWrapper, scope);
  wrapper.keepEmpty = loop.nKeepEmpty != 0;
  wrapper.mandatory = repeated.minTimes > 0;
  addChild(wrapper, std::move(repeated), scope);
  return wrapper;
}

// The attribute that a group or repetition must have with one value and no other, or null.
const Attribute *constantAttribute(const Element &element, const Named &name) {
  for (const Attribute &attribute : element.attributes) {
    const bool same = attribute.space == name.space && attribute.local == name.local;
    if (attribute.text.constant != nullptr && same) return &attribute;
  }
  return nullptr;
}

// The attribute by which two elements of one name can be told apart, or null.
const Attribute *difference(const Element &one, const Element &other) {
  for (const Attribute &attribute : one.attributes) {
    if (attribute.text.constant != nullptr && constantAttribute(other, attribute) != nullptr) {
      return &attribute;
    }
  }
  return nullptr;
}

bool addTo(Alternatives &all, Element &element, int position) {
  const Attribute *attribute = constantAttribute(element, all.attribute);
  if (attribute == nullptr || !all.positions.add(attribute->text.constant, position)) return false;
  element.valueSpace = attribute->text.space;
  element.shown = element.name + " " + all.attribute.name + "=\"" + attribute->text.constant + "\"";
  return true;
}

// A further child of a name that is there already.
void Compiler::addAlternative(Element &parent, Element &child, const Scope &scope) {
  const int first = find(parent.children, parent.childNames, {{}, child.local, child.space});
  Element &known = parent.children[static_cast<size_t>(first)];
  const Attribute *told = known.alternative < 0 ? difference(known, child) : nullptr;
  if (told != nullptr) {
    known.alternative = static_cast<int>(parent.alternatives.size());
    parent.alternatives.push_back({*told, {}});
    addTo(parent.alternatives.back(), known, first);
  }
  child.alternative = known.alternative;
  if (child.alternative >= 0 && addTo(parent.alternatives[static_cast<size_t>(child.alternative)], child,
                                      static_cast<int>(parent.children.size()))) {
    return;
  }
  throw Misconfigured(
      scope.path, scope.record, "elements of different names",
      "a second <" + child.name + "> in <" + parent.name + ">",
      "Give it another psName, make one loop of both, or tell them apart by an attribute with "
      "another psConst in each");
}

void Compiler::addChild(Element &parent, Element child, const Scope &scope) {
  if (!addName(parent.children, parent.childNames, child)) {
    addAlternative(parent, child, scope);
  }
  if (child.mandatory || child.minTimes > 0) parent.requiredChildren.push_back(parent.children.size());
  parent.children.push_back(std::move(child));
}

// An element of that name, as far as its name decides. space: the default namespace declared on it, or null.
Element Compiler::element(const char *node, const std::string &name, const Scope &scope, const char *space) {
  if (scope.depth >= m_plan->maxDepth) {
    throw Misconfigured(scope.path, scope.record,
                        "at most " + std::to_string(m_plan->maxDepth) + " elements inside each other", "more",
                        "Raise nMaxDepth of XmlMsg");
  }
  const std::string own = space == nullptr ? scope.defaultSpace : space;
  limitUri(own, scope);
  Element made;
  made.node = node;
  made.name = name;
  made.shown = name;
  expand(made, own, scope);
  std::string open = "<" + name;
  if (own != scope.defaultSpace) {
    open += " xmlns=\"" + escaped(own) + "\"";
    made.declarations = 1;
    m_plan->defaultSpaces.push_back(own);
  }
  made.open = encoded(open, scope);
  made.tag = "<" + made.local + ">";
  made.endTag = "</" + made.local + ">";
  made.start = encoded(open + ">", scope);
  made.close = encoded("</" + name + ">", scope);
  return made;
}

// What is generated would be read as another value.
void checkSpaced(const char *attribute, const char *value, Space space, const Scope &scope) {
  if (value == nullptr) return;
  std::string room;
  const std::string read(spaced(value, space, room));
  if (read == value) return;
  throw Misconfigured(scope.path, scope.record, std::string(attribute) + " as psSpace leaves it",
                      "\"" + std::string(value) + "\", which is read as \"" + read + "\"",
                      "Write what is read, or psSpace=\"preserve\"");
}

Text Compiler::textOf(const XmlField &field, const kit::Rules &rules, size_t at, const Scope &scope) const {
  const kit::RuleText text{field.nMandatory, field.nKeepEmpty, field.nMaxLen,
                           field.psDefault,  field.psConst,    field.nPosition};
  const int space = field.nSpace < 0 ? m_document.nSpace : field.nSpace;
  const auto spaceAs = static_cast<Space>(space);
  checkSpaced("psDefault", field.psDefault, spaceAs, scope);
  checkSpaced("psConst", field.psConst, spaceAs, scope);
  return {rules.make(at, text, scope.path, scope.record), spaceAs, spaceAs != Space::Preserve};
}

// The name's namespace and local part.
void Compiler::expand(Named &named, const std::string &defaultSpace, const Scope &scope) {
  const std::string &name = named.name;
  const size_t colon = name.find(':');
  named.local = colon == std::string::npos ? name : name.substr(colon + 1);
  if (!isPlainName(named.local)) {
    throw Misconfigured(scope.path, scope.record, "an XML name", "\"" + name + "\"", "Write psName");
  }
  if (colon == std::string::npos) {
    if (name == "xmlns") {
      throw Misconfigured(scope.path, scope.record, "an attribute or element", "xmlns",
                          "Write psNamespace or psPrefixes of XmlMsg");
    }
    named.space = addSpace(defaultSpace);
    return;
  }
  const std::string prefix = name.substr(0, colon);
  if (prefix == "xml") {
    named.space = addSpace(std::string(kXmlUri));
    return;
  }
  for (const Prefix &known : m_plan->prefixes) {
    if (known.prefix != prefix) continue;
    named.space = addSpace(known.uri);
    return;
  }
  throw Misconfigured(scope.path, scope.record, "a prefix of psPrefixes", "\"" + prefix + "\" in " + name,
                      "Write psPrefixes=\"" + prefix + "=URI\" into XmlMsg");
}

int Compiler::addSpace(const std::string &uri) {
  const int known = m_plan->spaceOf(uri);
  if (known != Plan::kUnknownSpace) return known;
  m_plan->spaces.push_back(uri);
  return static_cast<int>(m_plan->spaces.size()) - 1;
}

std::string Compiler::encoded(const std::string &markup, const Scope &scope) const {
  std::string out(4 * markup.size() + 16, '\0');
  const kit::Converted done = m_plan->charset->encode(markup.data(), markup.size(), out.data(), out.size());
  if (done.damage != kit::Damage::None) {
    throw Misconfigured(scope.path, scope.record, "names that " + m_plan->encoding + " has characters for",
                        "\"" + markup + "\"", "Write psName, or psEncoding=\"UTF-8\"");
  }
  out.resize(done.written);
  return out;
}

}  // namespace

std::unique_ptr<Plan> compilePlan(const Msg &msg, const XmlMsg &document) {
  return Compiler(msg, document).run();
}

}  // namespace cvt::xml
