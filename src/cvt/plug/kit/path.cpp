#include "path.h"

namespace cvt::kit {

int Path::repetition() const {
  for (int i = m_depth < kMaxDepth ? m_depth : kMaxDepth; i > 0; --i) {
    if (m_frames[i - 1].index >= 0) return m_frames[i - 1].index;
  }
  return -1;
}

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
