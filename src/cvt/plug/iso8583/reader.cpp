#include "reader.h"

#include "content.h"
#include "frame.h"
#include "kit/fault.h"
#include "seen.h"
#include "tlv.h"

namespace cvt::iso8583 {

using kit::Fault;
using kit::List;
using kit::quoted;

namespace {

struct Extent {
  size_t bytes;
  size_t length;  // kUnknown: only the bytes are counted
};

Extent extentOf(const Element &field, size_t count) {
  switch (field.content.coding) {
    case Coding::Bcd:
      if (field.frame.countsBytes) return {count, kUnknown};
      break;
    case Coding::Hex:
      if (!field.frame.countsBytes) return {count, count / 2};
      break;
    case Coding::Text:
    case Coding::Binary:
      break;
  }
  return {wireBytes(field.content, count), count};
}

Extent readExtent(const Element &field, Input &in) {
  const Frame &frame = field.frame;
  if (frame.fixed) return {wireBytes(field.content, frame.most), frame.most};
  const size_t offset = in.offset();
  const Extent extent = extentOf(field, readPrefix(frame, in));
  if (extent.length != kUnknown) checkLength(field, extent.length, offset);
  return extent;
}

[[noreturn]] void refuseTag(const Tlv &tlv) {
  throw Fault(tlv.offset, "tags that the definition has", tagText(tlv.tag),
              "Define it, or a field of psKind others that keeps unknown ones");
}

}  // namespace

void Reader::put(const Element &field, std::string_view value, List &list) {
  if (value.empty() || field.constant != nullptr) checkRead(field, value, m_call.path);
  if (value.empty() && field.empty == kit::Empty::Omit) {
    throw Fault(Fault::kHere, "a value", "an empty field", "nKeepEmpty=\"2\" allows it");
  }
  list.put(field.slot, value.data(), value.size());
}

void Reader::field(const Element &field, Input &in, List &list) {
  m_call.path.field(field.node);
  const std::string_view ahead = in.rest().substr(0, field.frame.most);
  if (isPlain(field, ahead)) {
    list.put(field.slot, m_call.store.copy(ahead.data(), ahead.size()), ahead.size());
    in.take(ahead.size());
    return;
  }
  m_call.end = in.offset();
  const Extent extent = readExtent(field, in);
  const size_t offset = in.offset();
  const std::string_view bytes = in.take(extent.bytes);
  put(field, readContent(field, bytes, extent.length, offset, m_call.store), list);
}

void Reader::group(const Element &element, Input &in, List &list) {
  m_call.path.enter(element.node);
  m_call.end = in.offset();
  const Extent extent = readExtent(element, in);
  inside(element, in.part(extent.bytes), list);
  m_call.path.leave();
}

void Reader::inside(const Element &element, const Input &in, List &list) {
  const Container &container = *element.inside;
  if (in.atEnd()) list.put(element.slot, m_call.store.take(0), 0);  // remembers that it was there
  if (container.loop) return repetitions(element, in, list);
  if (container.form == Form::Tlv) return tags(container, in, list);
  subfields(element, in, list);
}

void Reader::repetitions(const Element &element, Input in, List &list) {
  const Container &container = *element.inside;
  int times = 0;
  for (; !in.atEnd(); ++times) {
    m_call.path.repetition(times);
    m_call.end = in.offset();
    if (container.maxTimes != 0 && times == container.maxTimes) {
      throw Fault(in.offset(), "at most " + std::to_string(times) + " repetitions", "one more",
                  "See nMax of its IsoLoop");
    }
    List body = list.append(element.slot, container.bodySlots);
    if (container.form == Form::Tlv) {
      tagAndValue(container, in, body);
    } else {
      allMembers(container, in, body);
    }
  }
  m_call.path.repetition(-1);
  if (times >= container.minTimes) return;
  throw Fault(in.offset(), "at least " + std::to_string(container.minTimes) + " repetitions",
              std::to_string(times), "See nMin of its IsoLoop");
}

void Reader::allMembers(const Container &container, Input &in, List &list) {
  for (const Element &member : container.members) element(member, in, list);
}

// An element of variable length may end in front of any of its subfields.
void Reader::subfields(const Element &group, Input in, List &list) {
  for (const Element &member : group.inside->members) {
    if (!in.atEnd() || group.frame.fixed) {
      element(member, in, list);
    } else if (member.mandatory) {
      m_call.path.field(member.node);
      throw Fault(in.offset(), "a value", "the end of the element", "It is mandatory");
    }
  }
  if (in.atEnd()) return;
  m_call.path.field(nullptr);
  throw Fault(in.offset(), "the end behind the last subfield", quoted(in.at(), in.left()));
}

// --- BER-TLV

void Reader::tags(const Container &container, Input in, List &list) {
  const Input whole = in;
  Seen seen;
  size_t orderLength = 0;
  size_t othersLength = 0;
  while (!in.atEnd()) {
    m_call.path.field(nullptr);
    const Tlv tlv = readTlv(in);
    orderLength += 2 * tlv.tagBytes.size() + 1;
    const size_t member = container.find(tlv.tag);
    if (member == Container::kNone) {
      othersLength += 2 * tlv.whole.size();
      if (container.othersSlot < 0) refuseTag(tlv);
      continue;
    }
    if (seen.has(member)) {
      throw Fault(tlv.offset, "a tag once", tagText(tlv.tag) + " again");
    }
    seen.set(member);
    knownTag(container.members[member], tlv, in.over(tlv.value), list);
  }
  m_call.path.field(nullptr);
  for (const size_t member : container.mandatory) {
    if (seen.has(member)) continue;
    m_call.path.field(container.members[member].node);
    throw Fault(in.offset(), "tag " + tagText(container.members[member].tag), "none", "It is mandatory");
  }
  others(container, whole, list, orderLength, othersLength);
}

void Reader::knownTag(const Element &member, const Tlv &tlv, const Input &part, List &list) {
  m_call.end = tlv.offset;
  if (member.inside != nullptr) {
    m_call.path.enter(member.node);
    checkLength(member, tlv.value.size(), tlv.valueOffset);
    inside(member, part, list);
    m_call.path.leave();
    return;
  }
  m_call.path.field(member.node);
  put(member, readContent(member, tlv.value, kUnknown, tlv.valueOffset, m_call.store), list);
}

void Reader::tagAndValue(const Container &container, Input &in, List &list) {
  const Tlv tlv = readTlv(in);
  const Element &tag = container.members[0];
  const Element &value = container.members[1];
  m_call.path.field(tag.node);
  put(tag, readContent(tag, tlv.tagBytes, tlv.tagBytes.size(), tlv.offset, m_call.store), list);
  m_call.path.field(value.node);
  put(value, readContent(value, tlv.value, kUnknown, tlv.valueOffset, m_call.store), list);
}

// What is kept beside the known tags: the order of all, the bytes of the unknown ones.
void Reader::others(const Container &container, Input in, List &list, size_t orderLength,
                    size_t othersLength) {
  const bool order = container.orderSlot >= 0 && orderLength != 0;
  char *orderAt = order ? m_call.store.take(orderLength - 1) : nullptr;
  char *othersAt = othersLength != 0 ? m_call.store.take(othersLength) : nullptr;
  if (order) list.put(container.orderSlot, orderAt, orderLength - 1);
  if (othersAt != nullptr) list.put(container.othersSlot, othersAt, othersLength);
  if (!order && othersAt == nullptr) return;
  for (bool first = true; !in.atEnd(); first = false) {
    const Tlv tlv = readTlv(in);
    if (order) {
      if (!first) *orderAt++ = ' ';
      bytesToHex(tlv.tagBytes, orderAt);
      orderAt += 2 * tlv.tagBytes.size();
    }
    if (container.find(tlv.tag) != Container::kNone) continue;
    bytesToHex(tlv.whole, othersAt);
    othersAt += 2 * tlv.whole.size();
  }
}

}  // namespace cvt::iso8583
