#include "shape.h"

#include <strings.h>

#include "attributes.h"
#include "fault.h"
#include "path.h"

namespace cvt::kit {

namespace {

constexpr int kMaxDepth = Path::kMaxDepth;

const StructAttr &structOf(const Message *message) {
  return *message->ptStructAttr;
}

// Builds one level; its loops' bodies are built by builders of their own.
class Builder {
 public:
  Builder(Message **index, std::string outer, int depth)
      : m_index(index), m_outer(std::move(outer)), m_depth(depth) {}

  Level build(const Message *first, int slots) {
    addChain(first, m_outer, m_depth);
    m_level.slots = slots;
    if (m_slot != slots) disagree(m_outer);
    if (cvtLoopSetLoopNumIndex(m_index) != 0) {
      throw Misconfigured(m_outer, nullptr, "count fields that the library finds", "one that it does not");
    }
    return std::move(m_level);
  }

  // The body of a loop without children: the loop node itself, as a field.
  static Level single(const Node &loop) {
    Level body;
    Node field{};
    field.name = loop.name;
    field.kind = NodeKind::Field;
    field.next = 1;
    field.message = loop.message;
    field.record = loop.record;
    field.countNode = -1;
    body.nodes.push_back(std::move(field));
    body.slots = 1;
    return body;
  }

 private:
  void addChain(const Message *first, const std::string &outer, int depth) {
    for (const Message *message = first; message != nullptr; message = structOf(message).ptNextNode) {
      add(message, outer, depth);
    }
  }

  void add(const Message *message, const std::string &outer, int depth) {
    const std::string path = check(message, outer, depth);
    const size_t position = m_level.nodes.size();
    m_level.nodes.push_back(describe(message));
    m_level.nodes[position].slot = m_slot++;
    if (m_level.nodes[position].kind == NodeKind::Loop) {
      addBody(position, path, depth);
    } else {
      addCount(position, path);
      if (m_level.nodes[position].kind == NodeKind::Group)
        addChain(structOf(message).ptChildNode, path, depth + 1);
    }
    m_level.nodes[position].next = static_cast<int>(m_level.nodes.size());
  }

  // What a node must have before anything of it is used; its path.
  std::string check(const Message *message, const std::string &outer, int depth) const {
    const char *name = message->psNodeName;
    std::string path = (outer.empty() ? "" : outer + ".") + (name == nullptr ? "?" : name);
    const void *record = message->ptFormAttr == nullptr ? nullptr : message->ptFormAttr->pInfo;
    if (name == nullptr || *name == '\0') {
      throw Misconfigured(path, record, "a node with a name", "none", "Write psNodeName");
    }
    if (message->ptStructAttr == nullptr) {
      throw Misconfigured(path, record, "a StructAttr", "none",
                          "Write <StructAttr __ID=\"ptStructAttr\"/> into the node");
    }
    if (structOf(message).ptOtherNode != nullptr) {
      throw Misconfigured(path, record, "one subtree", "a second one (ptOtherNode)",
                          "Write those nodes as children (ptChildNode)");
    }
    if (depth >= kMaxDepth) {
      throw Misconfigured(path, record, "at most " + std::to_string(kMaxDepth) + " levels of nesting",
                          "more");
    }
    if (cvtIdxNode(m_index, m_slot) != message) disagree(path);
    return path;
  }

  [[noreturn]] static void disagree(const std::string &path) {
    throw Misconfigured(path, nullptr, "the nodes of the definition's index in their order", "other nodes");
  }

  static Node describe(const Message *message) {
    const StructAttr &attr = structOf(message);
    Node node{};
    node.name = message->psNodeName;
    node.kind = attr.nType == CVT_STRUCT_LOOP ? NodeKind::Loop
                : attr.ptChildNode != nullptr ? NodeKind::Group
                                              : NodeKind::Field;
    node.message = message;
    node.record = message->ptFormAttr == nullptr ? nullptr : message->ptFormAttr->pInfo;
    node.counted = attr.nType == CVT_STRUCT_COUNTED;
    node.countNode = -1;
    if (node.kind != NodeKind::Loop && !node.counted) node.structRecord = attr.pInfo;
    return node;
  }

  void addBody(size_t position, const std::string &path, int depth) {
    addCount(position, path);
    Node &loop = m_level.nodes[position];
    const LoopType &type = loopType(loop, path);
    if (type.pptMessageIdx == nullptr) {
      throw Misconfigured(path, loop.loopRecord, "an index of the loop's body", "none");
    }
    const Message *child = structOf(loop.message).ptChildNode;
    Level body = child == nullptr ? single(loop)
                                  : Builder(type.pptMessageIdx, path, depth + 1).build(child, type.nFieldNum);
    body.repeated = true;
    m_level.nodes[position].body = std::make_unique<Level>(std::move(body));
    m_slot += count(child, 0);
  }

  // Loops and counted nodes: the loop information and the count field.
  void addCount(size_t position, const std::string &path) {
    Node &node = m_level.nodes[position];
    if (node.kind != NodeKind::Loop && !node.counted) return;
    const LoopType &type = loopType(node, path);
    node.loopRecord = type.ptInfo;
    if (type.psLoopNumName != nullptr) node.countNode = findCount(node, type.psLoopNumName, path);
  }

  static const LoopType &loopType(const Node &node, const std::string &path) {
    const void *info = structOf(node.message).pInfo;
    if (info == nullptr || isPlugRecord(info)) {
      throw Misconfigured(path, node.record, "a LoopType", recordName(info),
                          "Write <LoopType __ID=\"pInfo\"/> into the StructAttr");
    }
    return *static_cast<const LoopType *>(info);
  }

  int findCount(const Node &node, const char *name, const std::string &path) const {
    for (size_t i = 0; i + 1 < m_level.nodes.size(); ++i) {
      const Node &field = m_level.nodes[i];
      if (field.kind != NodeKind::Field || strcasecmp(field.name, name) != 0) continue;
      if (cvtGetNodeIdx(m_index, const_cast<char *>(name)) != field.slot) {
        throw Misconfigured(path, node.record, "one node named " + std::string(name), "several",
                            "Give the count field a name of its own");
      }
      return static_cast<int>(i);
    }
    throw Misconfigured(path, node.record, "a count field that stands before it, outside of other loops",
                        "psLoopNumName " + quoted(name), "Name a field of the same level");
  }

  // Positions that a subtree takes in the enclosing index.
  static int count(const Message *first, int depth) {
    int total = 0;
    if (depth > kMaxDepth) return total;
    for (const Message *message = first; message != nullptr; message = structOf(message).ptNextNode) {
      total += 1 + count(structOf(message).ptChildNode, depth + 1);
    }
    return total;
  }

  Message **m_index;
  std::string m_outer;
  int m_depth;
  int m_slot = 0;
  Level m_level;
};

}  // namespace

Level compileShape(const Msg &msg) {
  if (msg.pptMessageIdx == nullptr || msg.ptHead == nullptr) {
    throw Misconfigured("", nullptr, "at least one node", "none", "Write <Message __ID=\"ptHead\" .../>");
  }
  return Builder(msg.pptMessageIdx, "", 0).build(msg.ptHead, msg.nFieldNum);
}

std::string nodePath(const std::string &outer, const Node &node) {
  return outer.empty() ? node.name : outer + "." + node.name;
}

}  // namespace cvt::kit
