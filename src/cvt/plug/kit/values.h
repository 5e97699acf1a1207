// values.h: values of a message, read and stored by slot.
//
// A List is one level's value list, checked once against the level's number of slots (shape.h); after that,
// slots of that level need no further check. What can still be wrong in a slot is its content, put there by a
// converter or a host, and is answered with a Fault.
#pragma once

#include <cstring>
#include <string_view>

#include "cvt_message.h"

namespace cvt::kit {

class List {
 public:
  // Throws Fault when the list is null or has fewer slots than the level.
  List(ValueList *list, int slots) : m_list(list) {
    const bool fits = list != nullptr && list->nNow >= slots && list->nMax >= slots &&
                      (slots <= 0 || list->ptValue != nullptr);
    if (!fits) badList(list, slots);
  }

  // Nothing stored: an empty value, or a loop that has not been started.
  bool empty(int slot) const {
    const Value *value = at(slot);
    return value->nLen == 0 || (value->nLen == -1 && repetitions(slot) == 0);
  }

  // Something was stored, be it an empty value: one with a pointer and no length.
  bool given(int slot) const { return at(slot)->psValue != nullptr; }

  // The value; a null pointer with length 0 is the empty one. Throws Fault when the slot holds a loop.
  std::string_view get(int slot) const {
    const Value *value = at(slot);
    const int length = value->nLen;
    if (length == 0) return {};
    if (length < 0 || value->psValue == nullptr) badValue(length);
    return {value->psValue, static_cast<size_t>(length)};
  }

  // The value, when there is one that is not empty; whatever else the slot holds is for get to tell.
  std::string_view peek(int slot) const {
    const Value *value = at(slot);
    const int length = value->nLen;
    if (length <= 0 || value->psValue == nullptr) return {};
    return {value->psValue, static_cast<size_t>(length)};
  }

  // Stores a value that lives as long as the message (Store, below). Not for loop slots.
  void put(int slot, const char *bytes, size_t length) {
    Value *value = at(slot);
    value->psValue = const_cast<char *>(bytes);
    value->nLen = static_cast<int>(length);
  }

  // Number of repetitions of a loop; 0 when it was not started. Throws Fault when the slot holds a plain
  // value.
  int repetitions(int slot) const {
    const ValueList *loop = loopAt(slot);
    if (loop == nullptr) return 0;
    return loop->nNow < loop->nMax ? loop->nNow : loop->nMax;
  }

  // The list of repetition index, 0 .. repetitions - 1, as a level of `slots` slots.
  List repetition(int slot, int index, int slots) const {
    const ValueList *loop = loopAt(slot);
    if (loop == nullptr || index < 0 || index >= loop->nNow || index >= loop->nMax) badRepetition(index);
    return {reinterpret_cast<ValueList *>(loop->ptValue[index].psValue), slots};
  }

  // Appends a repetition. Throws Fault when the loop is full; the message names gnMaxLoop.
  List append(int slot, int slots) {
    const ValueList *loop = loopAt(slot);
    if (loop != nullptr && loop->nNow >= loop->nMax) badAppend(loop);
    ValueList *list = cvtNewLoopValueList(m_list, slot, slots);
    if (list == nullptr) badAppend(nullptr);
    return {list, slots};
  }

  // Forgets the values and repetitions of the first `slots` slots.
  void clear(int slots);

  ValueList *raw() const { return m_list; }

 private:
  Value *at(int slot) const {
    // The slot array lies in the pool: entries are packed records.
    return m_list->ptValue + slot;
  }
  // The repetitions of a loop slot; null when it was not started.
  const ValueList *loopAt(int slot) const {
    const Value *value = at(slot);
    const int length = value->nLen;
    if (length == 0) return nullptr;
    if (length != -1 || value->psValue == nullptr) badLoop(length);
    return reinterpret_cast<const ValueList *>(value->psValue);
  }

  [[noreturn]] static void badList(const ValueList *list, int slots);
  [[noreturn]] static void badLoop(int length);
  // The loop that is full; null: there was no list to be had.
  [[noreturn]] static void badAppend(const ValueList *loop);
  [[noreturn]] static void badRepetition(int index);
  [[noreturn]] static void badValue(int length);

  ValueList *m_list;
};

// Memory for values, from the message's pool node, taken in slabs: a value costs a pointer bump. Each piece
// is followed by a zero byte.
class Store {
 public:
  explicit Store(MemPort node) : m_node(node) {}

  // length bytes, zeroed, and a zero byte behind them.
  char *take(size_t length) {
    if (length >= m_left) refill(length);
    char *piece = m_next;
    m_next += length + 1;
    m_left -= length + 1;
    return piece;
  }

  // Gives back the end of the piece taken last: `used` of its `length` bytes are kept. The rest must still
  // be, or is made, zero.
  void trim(char *piece, size_t length, size_t used) {
    std::memset(piece + used, 0, length - used);
    m_next -= length - used;
    m_left += length - used;
  }

  // Gives back the end of the piece taken last, from there on: nothing was written to it.
  void giveBack(char *from) {
    m_left += static_cast<size_t>(m_next - from);
    m_next = from;
  }

  char *copy(const char *bytes, size_t length) {
    char *piece = take(length);
    if (length != 0) std::memcpy(piece, bytes, length);
    return piece;
  }

 private:
  void refill(size_t length);

  MemPort m_node;
  char *m_next = nullptr;
  size_t m_left = 0;
  int m_slabs = 0;
};

}  // namespace cvt::kit
