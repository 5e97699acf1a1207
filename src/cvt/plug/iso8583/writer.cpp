#include "writer.h"

#include <cstring>

#include "content.h"
#include "frame.h"
#include "kit/fault.h"
#include "others.h"
#include "presence.h"

namespace cvt::iso8583 {

using kit::Fault;
using kit::List;

namespace {

// What the prefix of a content says.
size_t countOf(const Element &field, size_t length, size_t bytes) {
  if (field.content.coding == Coding::Bcd && field.frame.countsBytes) return bytes;
  if (field.content.coding == Coding::Hex && !field.frame.countsBytes) return bytes;
  return length;
}

void putPrefix(const Element &field, size_t from, size_t length, kit::Output &out) {
  const Frame &frame = field.frame;
  if (frame.digits == 0) return;
  const size_t count = countOf(field, length, out.offset() - from - frame.bytes);
  if (count <= prefixLimit(frame.coding, frame.digits)) return writePrefix(frame, count, out.at(from));
  throw Fault(Fault::kHere, "a length that the prefix can say", std::to_string(count));
}

[[noreturn]] void refuseEmpty(size_t offset, const char *found) {
  throw Fault(offset, "a value", found, "nKeepEmpty=\"2\" allows it");
}

}  // namespace

size_t Writer::content(const Element &field, const List &list) {
  std::string_view text = list.get(field.slot);
  const bool asSaid = field.constant == nullptr || text == field.saidConstant;
  if (text.empty() || !asSaid) text = textToWrite(field, list, m_call.path, m_digits);
  const bool mayBeEmpty = field.empty != kit::Empty::Omit;
  const size_t from = m_out.offset();
  if (text.empty() && !mayBeEmpty) refuseEmpty(from, "an empty one");
  const size_t length = writeContent(field, text, m_out);
  if (!mayBeEmpty && isOnlyPads(field.content, {m_out.at(from), m_out.offset() - from})) {
    refuseEmpty(from, "nothing but pads");
  }
  return length;
}

void Writer::field(const Element &field, const List &list) {
  m_call.path.field(field.node);
  const std::string_view value = list.get(field.slot);
  if (isPlain(field, value)) return m_out.put(value);
  const size_t from = m_out.offset();
  m_out.reserve(field.frame.bytes);
  putPrefix(field, from, content(field, list), m_out);
}

// A group begins. Whether it is there is asked before anything of it is written.
void Writer::enter(const Element &group, const List &list) {
  m_call.path.enter(group.node);
  if (!group.mandatory || groupGiven(group, list)) return;
  throw Fault(Fault::kHere, "a value", "none", "It is mandatory; give something inside of it a value");
}

void Writer::group(const Element &element, const List &list) {
  enter(element, list);
  const size_t from = m_out.offset();
  m_out.reserve(element.frame.bytes);
  inside(element, list);
  putPrefix(element, from, m_out.offset() - from - element.frame.bytes, m_out);
  m_call.path.leave();
}

void Writer::inside(const Element &element, const List &list) {
  const size_t from = m_out.offset();
  if (element.inside->loop) {
    repetitions(element, list);
  } else if (element.inside->form == Form::Tlv) {
    tags(*element.inside, list);
  } else {
    subfields(element, list);
  }
  m_call.path.field(nullptr);
  checkLength(element, m_out.offset() - from, from);
}

void Writer::repetitions(const Element &element, const List &list) {
  const Container &container = *element.inside;
  const int times = list.repetitions(element.slot);
  if (times < container.minTimes || (container.maxTimes != 0 && times > container.maxTimes)) {
    const bool few = times < container.minTimes;
    throw Fault(Fault::kHere,
                std::string(few ? "at least " : "at most ") +
                    std::to_string(few ? container.minTimes : container.maxTimes) + " repetitions",
                std::to_string(times), "See nMin and nMax of its IsoLoop");
  }
  for (int i = 0; i < times; ++i) {
    m_call.path.repetition(i);
    const List body = list.repetition(element.slot, i, container.bodySlots);
    if (container.form == Form::Tlv) {
      tagAndValue(container, body);
    } else {
      for (const Element &member : container.members) this->element(member, body);
    }
  }
  m_call.path.repetition(-1);
}

// How many of the subfields are written: those behind the last one that has something to write may be missing
// from an element of variable length.
size_t Writer::lastWritten(const Element &group, const List &list) {
  const std::vector<Element> &members = group.inside->members;
  if (group.frame.fixed) return members.size();
  const bool given = contentGiven(*group.inside, list);
  size_t last = members.size();
  while (last > 0) {
    const Element &member = members[last - 1];
    if (member.mandatory || (given && isPresent(member, list))) break;
    --last;
  }
  return last;
}

void Writer::subfields(const Element &group, const List &list) {
  const size_t last = lastWritten(group, list);
  for (size_t i = 0; i < last; ++i) element(group.inside->members[i], list);
}

// --- BER-TLV

void Writer::tags(const Container &container, const List &list) {
  kit::Store store(m_call.memory);
  const std::string_view value =
      container.othersSlot < 0 ? std::string_view() : list.get(container.othersSlot);
  m_call.path.field(container.othersNode);
  Others others(container, value, store);
  Seen seen;
  if (container.orderSlot >= 0) inOrder(container, list, others, seen);
  for (size_t i = 0; i < container.members.size(); ++i) {
    const Element &member = container.members[i];
    if (seen.has(i) || !(member.mandatory || isPresent(member, list))) continue;
    tagged(member, list);
  }
  m_call.path.field(container.othersNode);
  while (!others.done()) m_out.put(others.next().whole);
}

// The tags that the order names, as far as they have values.
void Writer::inOrder(const Container &container, const List &list, Others &others, Seen &seen) {
  const std::string_view value = list.get(container.orderSlot);
  for (Order order(value); !order.done();) {
    m_call.path.field(container.orderNode);
    const uint32_t tag = order.next();
    const size_t at = container.find(tag);
    if (at == Container::kNone) {
      const Tlv tlv = others.done() ? Tlv{} : others.next();
      if (tlv.tag != tag) {
        throw Fault(Fault::kHere, "the unknown tags in the order of their values",
                    tagText(tag) + " where the value has " + (tlv.tag == 0 ? "none" : tagText(tlv.tag)),
                    "Leave the order empty: tags then stand in the order of the definition");
      }
      m_out.put(tlv.whole);
      continue;
    }
    if (seen.has(at)) throw Fault(Fault::kHere, "a tag once", tagText(tag) + " again");
    seen.set(at);
    const Element &member = container.members[at];
    if (member.mandatory || isPresent(member, list)) tagged(member, list);
  }
}

void Writer::tagged(const Element &member, const List &list) {
  const size_t from = m_out.offset();
  if (member.inside == nullptr) {
    m_call.path.field(member.node);
    content(member, list);
  } else {
    enter(member, list);
    inside(member, list);
    m_call.path.leave();
  }
  putTagAndLength(member.tag, from, m_out);
}

void Writer::tagAndValue(const Container &container, const List &list) {
  const size_t from = m_out.offset();
  const Element &tag = container.members[0];
  m_call.path.field(tag.node);
  content(tag, list);
  const std::string_view name(m_out.at(from), m_out.offset() - from);
  m_out.rewind(from);  // the tag is written when the value's length is known
  if (!isTag(name)) {
    throw Fault(Fault::kHere, "a tag of BER-TLV, 1 to 4 bytes", kit::quoted(name.data(), name.size()));
  }
  uint32_t number = 0;
  for (const char c : name) number = number << 8 | static_cast<unsigned char>(c);
  m_call.path.field(container.members[1].node);
  content(container.members[1], list);
  putTagAndLength(number, from, m_out);
}

}  // namespace cvt::iso8583
