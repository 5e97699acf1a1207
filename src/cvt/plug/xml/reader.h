// reader.h: takes a document's elements and texts, in document order, into a message's values.
//
// It knows nothing of the parser that tells it what comes: open, text and close are all that a parser calls.
// It keeps a stack of open elements, as deep as the definition at most, and addresses everything by the plan.
// Each call throws Fault for what the definition does not allow; the call's Path then says where.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "kit/plugin.h"
#include "plan.h"
#include "region.h"

namespace cvt::xml {

using Attributes = std::span<const Given>;

// An open element.
struct Frame {
  const Element *element;
  kit::List list;         // the values of its fields
  size_t textStart;       // its text so far: from here in Room::text
  size_t seenStart;       // one flag a child and one an attribute: from here in Room::seen
  size_t nextChild;       // the child that comes next when the document keeps the definition's order
  bool parted = false;    // an element in it has come
  bool textDone = false;  // its text has come, and an element behind it
};

// Memory that a reader and its parser need and that stays for the next document.
struct Room {
  explicit Room(size_t kept) : region(kept) {}

  Region region;             // the parser's
  std::vector<Given> given;  // attributes of the element that is opened
  std::vector<Frame> frames;
  std::string text;
  std::vector<char> seen;
  std::string collapsed;
};

class Reader {
 public:
  Reader(const Plan &plan, kit::ParseCall &call, Room &room);

  // declarations: number of namespace declarations of the element.
  void open(const Name &name, Attributes attributes, size_t declarations);
  // Whether the bytes of a text stay until the document's end.
  enum class Bytes { Staying, Passing };
  void text(std::string_view bytes, Bytes bytesAre);
  void close();

  // The child that comes next when the document keeps the definition's order; null where that cannot be said.
  const Element *expected() const;
  // It comes, without attributes: as an element that is open now, or, a field, with all of its text.
  void openExpected();
  void leaf(std::string_view text);

  // Refuses an element with too many attributes; soFar stands behind the number in the message.
  void limitAttributes(size_t count, size_t offset, const char *soFar) const;

  // The name of the innermost open element; empty when it is skipped or none is open.
  std::string_view innermost() const;

 private:
  void enter(const Element &element, kit::List list, Attributes attributes);
  void openChild(Frame &top, const Name &name, Attributes attributes);
  void openChild(Frame &top, size_t position, Attributes attributes);
  kit::List repetition(const Element &child, kit::List &list);
  int child(const Frame &top, const Name &name, Attributes attributes) const;
  int alternative(const Element &parent, const Alternatives &all, std::string_view value) const;
  void collect(std::string_view bytes);
  void part(Frame &frame);
  bool takesMore(const Frame &frame, std::string_view bytes) const;
  std::string_view textOf(const Frame &frame) const;
  size_t offsetOf(std::string_view text) const;
  void attributes(const Frame &frame, Attributes given);
  void attribute(const Frame &frame, const Given &given);
  void store(const Text &text, kit::List list, std::string_view value);
  void complete(const Frame &frame);
  void leave(const Element &element);

  [[noreturn]] void unknown(const Frame &top, const Name &name, Attributes attributes) const;
  void limit(size_t attributes) const;
  void limitSpaces(Attributes attributes);

  const Plan &m_plan;
  kit::ParseCall &m_call;
  Room &m_room;
  std::string_view m_only;  // the innermost element's text so far, while it is one piece that stays
  size_t m_depth = 0;       // open elements
  size_t m_skipped = 0;     // of them, those that the definition does not know
  size_t m_spaces = 0;      // bytes of namespaces, counted for each attribute
};

}  // namespace cvt::xml
