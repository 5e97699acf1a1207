#include "values.h"

#include <new>

#include "fault.h"

namespace cvt::kit {

void List::badList(const ValueList *list, int slots) {
  if (list == nullptr) throw Fault(Fault::kHere, "a value list", "none", "");
  const int have = list->nNow < list->nMax ? list->nNow : list->nMax;
  throw Fault(Fault::kHere, "a value list of " + std::to_string(slots) + " slots",
              "one of " + std::to_string(have),
              "Make it with the definition's own nValueNum or field number");
}

void List::badLoop(int length) {
  if (length == -1) throw Fault(Fault::kHere, "a list of repetitions", "none", "");
  throw Fault(Fault::kHere, "a loop", "a plain value of " + std::to_string(length) + " bytes",
              "Fill the loop by repetitions, not by a value");
}

void List::badRepetition(int index) {
  throw Fault(Fault::kHere, "repetition " + std::to_string(index), "a shorter loop", "");
}

void List::badValue(int length) {
  if (length == -1) throw Fault(Fault::kHere, "a value", "a loop", "Give this field a value of its own");
  throw Fault(Fault::kHere, "a value", "a length of " + std::to_string(length) + " with no bytes", "");
}

void List::clear(int slots) {
  for (int slot = 0; slot < slots; ++slot) put(slot, nullptr, 0);
}

void List::badAppend(const ValueList *loop) {
  if (loop == nullptr) throw Fault(Fault::kHere, "room for a repetition", "none", "Raise gnMaxLoop");
  throw Fault(Fault::kHere, "at most " + std::to_string(loop->nMax) + " repetitions", "one more",
              "Raise gnMaxLoop of the Message section");
}

// Slabs grow in fixed steps, so that the blocks a pool node has kept fit the next message.
void Store::refill(size_t length) {
  static constexpr size_t kSlabs[] = {600, 1400, 4000, 16000, 64000};
  size_t slab = kSlabs[m_slabs];
  if (m_slabs < 4) ++m_slabs;
  if (slab < length + 1) slab = length + 1;
  if (slab > 0x7FFFFFFF) throw std::bad_alloc();
  m_next = static_cast<char *>(cvtMalloc(static_cast<int>(slab), m_node));
  if (m_next == nullptr) throw std::bad_alloc();
  m_left = slab;
}

}  // namespace cvt::kit
