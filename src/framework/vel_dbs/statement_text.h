// statement_text.h: looks at a statement before a driver does. Drivers run several statements one after the
// other where one was meant; data that was joined into the text must not bring a second one.
#pragma once

#include <string>
#include <string_view>

namespace dbs {

// The errors of both back ends. Bytes are counted from 0.
[[noreturn]] void failEmpty();
[[noreturn]] void failSeveral(size_t byte);

// Throws Error unless the text is one statement, optionally with ";" and comments behind it, whose texts,
// quoted names and comments are all closed. Read as standard SQL, with PostgreSQL's E'...' and $tag$...$tag$.
void expectOneStatement(std::string_view sql);

}  // namespace dbs
