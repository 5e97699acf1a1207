// opened.h: what the process opens, seen by functions that stand before the C library's. What the C library
// opens for itself, such as a converter of characters, is not seen.
#pragma once

#include <string>
#include <vector>

namespace hostile {

// Files, sockets and host names, since the last forgetOpened().
std::vector<std::string> opened();
void forgetOpened();

}  // namespace hostile
