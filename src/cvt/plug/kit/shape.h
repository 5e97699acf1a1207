// shape.h: a definition laid out for walking. Compiled once when the format is initialised; a walk then runs
// over flat arrays and addresses values by slot.
//
//   definition            message level                    body level of C
//   A                     [0] A  field  slot 0             [0] C1 field slot 0
//   B ── B1, B2           [1] B  group  slot 1, next 4     [1] C2 field slot 1
//   C ── C1, C2 (loop)    [2] B1 field  slot 2
//   D                     [3] B2 field  slot 3
//                         [4] C  loop   slot 4, body ──>   (C1 and C2 also own slots 5 and 6 of the message
//                         [5] D  field  slot 7              level; nobody uses them)
//
// A group's children stand in the same level, directly behind it. A loop's body is a level of its own, one
// value list a repetition. A loop without children has a body of one field: the loop node itself, slot 0.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "attributes.h"
#include "cvt_message.h"
#include "fault.h"

namespace cvt::kit {

enum class NodeKind { Field, Group, Loop };

struct Level;

struct Node {
  const char *name;
  NodeKind kind;
  int slot;  // in the value list of this level
  int next;  // position in Level::nodes behind this node's subtree: its children are the nodes from
             // the position after this one up to `next`, each child's `next` being the next child
  const Message *message;
  const void *record;        // FormatAttr.pInfo: the plug-in's record; null: none
  const void *structRecord;  // StructAttr.pInfo of a field or group that is not counted; null: none
  const void *loopRecord;    // LoopType.ptInfo of a loop or counted node; null: none
  bool counted;              // StructAttr.nType is CVT_STRUCT_COUNTED
  int countNode;  // loop or counted node: position in this level of the field that holds the count;
                  // -1: none. It always stands before this node.
  std::unique_ptr<Level> body;  // loops
};

struct Level {
  std::vector<Node> nodes;
  int slots = 0;  // positions of the level's index: what a value list of this level must have at least
  bool repeated = false;  // the body of a loop
};

// The shape of a definition. Throws Misconfigured for a tree that cannot be walked: no StructAttr, no name, a
// loop without LoopType, a count field that is unknown, stands behind its loop or inside another one, a
// second subtree (ptOtherNode), nesting deeper than Path::kMaxDepth, a definition too large for a value list.
// The levels' count fields are also resolved in the library's own records (cvtLoopSetLoopNumIndex).
Level compileShape(const Msg &msg);

// Node pos of a level and its groups as a path, for messages: "Batches.Entries.Amount" needs the outer path.
std::string nodePath(const std::string &outer, const Node &node);

// A node's record, or what a node without one means. Throws Misconfigured when it is one of another type;
// member says where it stands: "FormatAttr.pInfo".
template <class T>
const T &recordOr(const void *record, const RecordType &type, const T &plain, const char *member,
                  const std::string &path) {
  if (record == nullptr) return plain;
  const T *found = recordAs<T>(record, type);
  if (found != nullptr) return *found;
  throw Misconfigured(path, record, std::string(type.name) + " as " + member, recordName(record));
}

}  // namespace cvt::kit
