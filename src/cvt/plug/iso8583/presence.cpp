#include "presence.h"

namespace cvt::iso8583 {

bool contentGiven(const Container &container, const kit::List &list) {
  for (const int slot : container.slots) {
    if (!list.empty(slot) || list.given(slot)) return true;
  }
  return false;
}

bool groupGiven(const Element &group, const kit::List &list) {
  return list.given(group.slot) || contentGiven(*group.inside, list);
}

}  // namespace cvt::iso8583
