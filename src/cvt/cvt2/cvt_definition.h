// cvt_definition.h: what the units of the definition model say to each other. Private.
//
// The tree (stt_cvt_message), the loop structure (cvt_struct_loop) and the registry (cvt_message) need each
// other by nature: a loop body is indexed like a message, and a reference loads a file through the registry.
#pragma once

#include <string_view>

#include "cvt_heap.h"
#include "cvt_message.h"

namespace cvt {

// What a recursive walk has met since its outermost call began. Loops in loops stand in the index of every
// loop around them: without this, each level of nesting would double the work.
//   Walk  tells walks apart
template <class Walk, class T>
class Met {
 public:
  Met() { ++s_nDepth; }
  ~Met() {
    if (--s_nDepth == 0) s_met.clear();
  }
  Met(const Met &) = delete;
  Met &operator=(const Met &) = delete;

  static bool first(const T *pt) { return s_met.insert(pt).second; }

 private:
  inline static int s_nDepth = 0;
  inline static HashSet<const T *> s_met;
};

// Loads one definition file and registers it under its message's name: 0, 1 known already, -1 (logged).
int FmtMsgInit(char *psFileName);

// Runs the initialiser of a format on a definition. 0 also when the format has none; else its result.
int initFormat(char *psFormat, Msg *ptMsg);

// Names of nodes, without regard to the case of ASCII letters.
struct NameHash {
  size_t operator()(std::string_view s) const;
};
struct NameEqual {
  bool operator()(std::string_view a, std::string_view b) const;
};

// Where an index had its nodes by name when this was made.
class NodeNames {
 public:
  explicit NodeNames(Message **pptIdx);

  // Position of the first node of that name; -1 without one, and when another node has that place by now or the
  // node another name.
  int find(Message **pptIdx, const char *psName) const;

 private:
  HashMap<std::string_view, int, NameHash, NameEqual> m_positions;
};

// Makes look-up by name independent of the length of an index and of its loops' bodies. For a definition that its
// format has seen: the format may give nodes other names, and earlier nodes names that later ones have.
void rememberNames(Message **pptIdx);

// Forgets what belongs to indexes whose memory is about to be released.
void forgetNames();

}  // namespace cvt
