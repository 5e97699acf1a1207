// presence.h: whether a message gives a data element, or a member of one, something to write.
#pragma once

#include "kit/values.h"
#include "plan.h"

namespace cvt::iso8583 {

// A value, repetitions, or an empty value that was given and may be written.
inline bool fieldGiven(const Element &field, const kit::List &list) {
  return !list.empty(field.slot) || (field.empty == kit::Empty::KeepGiven && list.given(field.slot));
}

bool groupGiven(const Element &group, const kit::List &list);

inline bool isGiven(const Element &element, const kit::List &list) {
  return element.inside == nullptr ? fieldGiven(element, list) : groupGiven(element, list);
}

// Whether its definition alone says what to write.
inline bool writesItself(const Element &element) {
  return element.fallback != nullptr || element.constant != nullptr || element.empty == kit::Empty::Keep;
}

// Whether it is written.
inline bool isPresent(const Element &element, const kit::List &list) {
  return isGiven(element, list) || writesItself(element);
}

// Whether anything inside of a group is given.
bool contentGiven(const Container &container, const kit::List &list);

}  // namespace cvt::iso8583
