#include "parser.h"

#include "expat.h"
#include "scanner.h"

namespace cvt::xml {

namespace {

// What stays from one document to the next, unless one was unusually large.
constexpr size_t kKept = size_t{4} * 1024 * 1024;

// The parser may take so many bytes for each byte of a document, beside those that stay. What is read needs 28 at
// most, for short names that all differ.
constexpr size_t kPerByte = 32;

Room f_room(kKept);
Scanner::Memory f_memory;
std::string f_converted;

// Takes the memory back when a document is done, whichever way.
struct Release {
  ~Release() {
    f_room.region.reset();
    for (std::string *room : {&f_converted, &f_room.text, &f_room.collapsed}) {
      if (room->capacity() > kKept) std::string().swap(*room);
    }
  }
};

// Most documents keep the definition's order and have few attributes: as far as that is so, elements are taken
// without a look at their names.
void takeExpected(Scanner &scanner, Reader &reader) {
  for (const Element *next = reader.expected(); next != nullptr; next = reader.expected()) {
    if (next->leaf()) {
      if (!scanner.leaf(*next)) return;
      reader.leaf(scanner.text());
    } else {
      if (!scanner.opens(*next)) return;
      reader.openExpected();
    }
  }
}

// Whether the document was plain, and has been read.
bool readPlain(const Plan &plan, kit::ParseCall &call, const Input &input) {
  using Token = Scanner::Token;
  Scanner scanner(plan, input.bytes, f_room, f_memory);
  Reader reader(plan, call, f_room);
  try {
    for (;;) {
      takeExpected(scanner, reader);
      switch (scanner.next()) {
        case Token::Open:
          reader.open(scanner.name(), scanner.attributes(), scanner.declarations());
          break;
        case Token::Text:
          reader.text(scanner.text(), scanner.textIs());
          break;
        case Token::Close:
          reader.close();
          break;
        case Token::End:
          return true;
        case Token::NotPlain:
          return false;
      }
    }
  } catch (...) {
    call.end = call.from + input.rawOffset(scanner.offset());  // where faults without an offset are reported
    throw;
  }
}

}  // namespace

void parseDocument(const Plan &plan, kit::ParseCall &call) {
  const std::string_view raw(call.buffer + call.from, call.length - call.from);
  const Release release;
  f_room.region.allow(kPerByte * raw.size());
  const Input input = openInput(plan, raw, call.from, f_converted);
  if (!input.mayBeUtf8() || !readPlain(plan, call, input)) {
    kit::List(call.values, plan.slots).clear(plan.slots);
    call.path = kit::Path();
    readWithExpat(plan, call, input, f_room);
  }
  call.end = call.length;
}

}  // namespace cvt::xml
