// compile_field.h: a field's or a group's record and the message's settings to its part of the plan.
#pragma once

#include <string>

#include "plan.h"

namespace cvt::iso8583 {

// Where a record stands: settings of the message, path and record for messages.
struct Place {
  const IsoMsg &settings;
  std::string path;
  const void *record;
};

// All below throw Misconfigured.

const kit::Charset *findCharset(const char *name, const Place &place);

// A tag in hexadecimal digits.
uint32_t compileTag(const char *text, const Place &place);

// inTag: the length stands in front of the content already, as BER-TLV says it.
void compileField(const IsoField &record, bool inTag, const Place &place, Element &element);
void compileGroup(const IsoGroup &record, bool inTag, const Place &place, Element &element);

// Whether the subfields of a group, which is no loop, can have a length that it can have.
void checkSubfields(const Element &group, const Place &place);

// Whether the field's bytes are its value: text of a fixed length that is ASCII in the message, too.
Plain plainOf(const Element &field);

// Checks that the field can have its constant and its default. The constant becomes what is read for it: with
// its pads, with zeros in front, in the letters of hexadecimal digits.
void compileTexts(const Place &place, Element &element);

}  // namespace cvt::iso8583
