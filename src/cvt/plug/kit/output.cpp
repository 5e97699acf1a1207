#include "output.h"

#include "fault.h"

namespace cvt::kit {

void Output::full(size_t length) const {
  throw Fault(offset(), "room for " + std::to_string(length) + " bytes",
              std::to_string(room()) + " left in the buffer", "Give a larger output buffer");
}

}  // namespace cvt::kit
