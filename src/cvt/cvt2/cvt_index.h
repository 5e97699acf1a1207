// cvt_index.h: answers a look-up by name in one of the library's lists without walking it. Private.
#pragma once

#include <string_view>

#include "cvt_heap.h"

namespace cvt {

// A private index beside a singly linked list whose first entry of a name wins. The list stays what it is;
// the index follows it: entries put in front or behind are taken in at the next look-up, and a list that is not
// an extension of the one indexed last is indexed anew. What a host does in the middle of a list, and a name
// that it changes in an entry, are not seen.
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
    m_ptHead = m_ptLast = nullptr;
  }

  // Takes the list in.
  void follow(Entry *ptHead) {
    if (ptHead != m_ptHead) followFront(ptHead);
    while (m_ptLast != nullptr && m_ptLast->ptNext != nullptr) {
      m_ptLast = m_ptLast->ptNext;
      if (m_ptLast->*Key != nullptr) m_byName.try_emplace(m_ptLast->*Key, m_ptLast);
    }
  }

 private:
  void followFront(Entry *ptHead) {
    Vector<Entry *> fresh;
    Entry *pt = ptHead;
    for (; pt != nullptr && pt != m_ptHead; pt = pt->ptNext) fresh.push_back(pt);
    if (pt == nullptr) {  // not an extension of what was indexed
      m_byName.clear();
      m_ptLast = fresh.empty() ? nullptr : fresh.back();
    }
    for (auto it = fresh.rbegin(); it != fresh.rend(); ++it) {
      if ((*it)->*Key != nullptr) m_byName.insert_or_assign((*it)->*Key, *it);
    }
    m_ptHead = ptHead;
  }

  Entry *m_ptHead = nullptr;
  Entry *m_ptLast = nullptr;
  HashMap<std::string_view, Entry *> m_byName;
};

}  // namespace cvt
