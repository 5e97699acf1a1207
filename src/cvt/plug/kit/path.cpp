#include "path.h"

namespace cvt::kit {

std::string Path::text() const {
  std::string text;
  for (int i = 0; i < m_depth && i < kMaxDepth; ++i) {
    if (!text.empty()) text += '.';
    text += m_frames[i].name;
    if (m_frames[i].index >= 0) text += "[" + std::to_string(m_frames[i].index) + "]";
  }
  if (m_field != nullptr) {
    if (!text.empty()) text += '.';
    text += m_field;
  }
  return text;
}

}  // namespace cvt::kit
