// path.h: where in a message a call is, kept so cheaply that every field can say it.
//
//   path.enter("Batches");            // a loop or a group
//   path.repetition(2);               // loops only; counted from 0; -1: no longer in a repetition
//   path.field("Amount");             // one store; the next field overwrites it
//   path.text();                      // "Batches[2].Amount", formatted only when something failed
//   path.leave();
//
// Leaving is explicit, not a destructor's work: when a Fault unwinds the stack the path stays where the fault
// was thrown.
#pragma once

#include <string>

namespace cvt::kit {

class Path {
 public:
  // Definitions that nest deeper are refused when they are compiled (shape.h).
  static constexpr int kMaxDepth = 64;

  // Leaves the frames as they are: a kilobyte for each message would be cleared that nobody reads.
  // cppcheck-suppress uninitMemberVar
  Path() {}  // NOLINT(modernize-use-equals-default)

  void enter(const char *name) {
    if (m_depth < kMaxDepth) m_frames[m_depth] = {name, -1};
    ++m_depth;
    m_field = nullptr;
  }
  void repetition(int index) {
    if (m_depth <= kMaxDepth) m_frames[m_depth - 1].index = index;
    m_field = nullptr;
  }
  void leave() {
    --m_depth;
    m_field = nullptr;
  }
  // Null: no longer at a field.
  void field(const char *name) { m_field = name; }

  // Of the innermost loop around, from 0; -1: in no repetition.
  int repetition() const {
    for (int i = m_depth < kMaxDepth ? m_depth : kMaxDepth; i > 0; --i) {
      if (m_frames[i - 1].index >= 0) return m_frames[i - 1].index;
    }
    return -1;
  }

  // Empty at the message itself.
  std::string text() const;

 private:
  struct Frame {
    const char *name;
    int index;  // -1: not a repetition
  };

  Frame m_frames[kMaxDepth];  // the first m_depth are set
  int m_depth = 0;
  const char *m_field = nullptr;
};

}  // namespace cvt::kit
