// cvt_index.h: answers a look-up by name in one of the library's lists without walking it. Private.
#pragma once

#include <string_view>

#include "cvt_heap.h"

namespace cvt {

// A private index beside a singly linked list whose first entry of a name wins. The list stays what it is;
// the index follows it: an entry put in front is taken in at the next look-up, and a list that is not an
// extension of the one indexed last is indexed anew.
//   Entry   list element with a member ptNext
//   Key     the member that holds the name, a char *
// clear() must be called when the list's memory is released: a later list may lie at the same address.
template <class Entry, char *Entry::*Key>
class ListIndex {
 public:
  // The first entry of that name; null when there is none.
  Entry *find(Entry *ptHead, const char *psName) {
    follow(ptHead);
    const auto it = m_byName.find(psName);
    return it == m_byName.end() ? nullptr : it->second;
  }

  // Whether this list is the one indexed last.
  bool follows(const Entry *ptHead) const { return ptHead == m_ptHead; }

  void clear() {
    m_byName.clear();
    m_ptHead = nullptr;
  }

  // Takes the list in.
  void follow(Entry *ptHead) {
    if (ptHead == m_ptHead) return;
    Vector<Entry *> fresh;
    Entry *pt = ptHead;
    for (; pt != nullptr && pt != m_ptHead; pt = pt->ptNext) fresh.push_back(pt);
    if (pt == nullptr) m_byName.clear();  // not an extension of what was indexed
    for (auto it = fresh.rbegin(); it != fresh.rend(); ++it) {
      if ((*it)->*Key != nullptr) m_byName.insert_or_assign((*it)->*Key, *it);
    }
    m_ptHead = ptHead;
  }

 private:
  Entry *m_ptHead = nullptr;
  HashMap<std::string_view, Entry *> m_byName;
};

}  // namespace cvt
