#include "values.h"

#include <new>

#include "fault.h"

namespace cvt::kit {

namespace {

// The repetitions of a loop slot; null when it was not started.
const ValueList *loopList(const Value *value) {
  const int length = value->nLen;
  if (length == 0) return nullptr;
  if (length != -1) {
    throw Fault(Fault::kHere, "a loop", "a plain value of " + std::to_string(length) + " bytes",
                "Fill the loop by repetitions, not by a value");
  }
  const char *list = value->psValue;
  if (list == nullptr) throw Fault(Fault::kHere, "a list of repetitions", "none", "");
  return reinterpret_cast<const ValueList *>(list);
}

}  // namespace

List::List(ValueList *list, int slots) : m_list(list) {
  if (list == nullptr) throw Fault(Fault::kHere, "a value list", "none", "");
  const int have = list->nNow < list->nMax ? list->nNow : list->nMax;
  if (have < slots || (slots > 0 && list->ptValue == nullptr)) {
    throw Fault(Fault::kHere, "a value list of " + std::to_string(slots) + " slots",
                "one of " + std::to_string(have),
                "Make it with the definition's own nValueNum or field number");
  }
}

void List::badValue(int length) {
  if (length == -1) throw Fault(Fault::kHere, "a value", "a loop", "Give this field a value of its own");
  throw Fault(Fault::kHere, "a value", "a length of " + std::to_string(length) + " with no bytes", "");
}

void List::clear(int slots) {
  for (int slot = 0; slot < slots; ++slot) put(slot, nullptr, 0);
}

int List::repetitions(int slot) const {
  const ValueList *loop = loopList(at(slot));
  if (loop == nullptr) return 0;
  return loop->nNow < loop->nMax ? loop->nNow : loop->nMax;
}

List List::repetition(int slot, int index, int slots) const {
  const ValueList *loop = loopList(at(slot));
  if (loop == nullptr || index < 0 || index >= loop->nNow || index >= loop->nMax) {
    throw Fault(Fault::kHere, "repetition " + std::to_string(index), "a shorter loop", "");
  }
  return {reinterpret_cast<ValueList *>(loop->ptValue[index].psValue), slots};
}

List List::append(int slot, int slots) {
  const ValueList *loop = loopList(at(slot));
  if (loop != nullptr && loop->nNow >= loop->nMax) {
    throw Fault(Fault::kHere, "at most " + std::to_string(loop->nMax) + " repetitions", "one more",
                "Raise gnMaxLoop of the Message section");
  }
  ValueList *list = cvtNewLoopValueList(m_list, slot, slots);
  if (list == nullptr) throw Fault(Fault::kHere, "room for a repetition", "none", "Raise gnMaxLoop");
  return {list, slots};
}

// Slabs grow in fixed steps, so that the blocks a pool node has kept fit the next message.
void Store::refill(size_t length) {
  static constexpr size_t kSlabs[] = {600, 4000, 16000, 64000};
  size_t slab = kSlabs[m_slabs];
  if (m_slabs < 3) ++m_slabs;
  if (slab < length + 1) slab = length + 1;
  if (slab > 0x7FFFFFFF) throw std::bad_alloc();
  m_next = static_cast<char *>(cvtMalloc(static_cast<int>(slab), m_node));
  if (m_next == nullptr) throw std::bad_alloc();
  m_left = slab;
}

}  // namespace cvt::kit
