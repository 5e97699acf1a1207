// cvt_handle.h: the name of a message handle as it is logged. Private.
#pragma once

#include <cstring>

#include "cvt_identify.h"

namespace cvt {

// A copy with a terminator: the name of a converter's destination may fill the handle's field to its last
// byte.
class NameOf {
 public:
  explicit NameOf(const InnerMessage *ptMsg) {
    std::memcpy(m_sName, ptMsg->sMsgName, sizeof ptMsg->sMsgName);
  }
  const char *text() const { return m_sName; }

 private:
  char m_sName[sizeof(InnerMessage::sMsgName) + 1] = {};
};

}  // namespace cvt
