#include "presence.h"

namespace cvt::iso8583 {

bool contentGiven(const Container &container, const kit::List &list) {
  for (const int slot : container.slots) {
    if (!list.empty(slot) || list.given(slot)) return true;
  }
  for (const int slot : container.loopSlots) {
    if (list.repetitions(slot) > 0) return true;
  }
  return false;
}

bool groupGiven(const Element &group, const kit::List &list) {
  if (group.inside->loop) return list.repetitions(group.slot) > 0;
  return list.given(group.slot) || contentGiven(*group.inside, list);
}

}  // namespace cvt::iso8583
