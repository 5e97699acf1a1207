#include "region.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace cvt::xml {

namespace {

constexpr size_t kAlign = alignof(std::max_align_t);
constexpr size_t kFirstBlock = size_t{64} * 1024;

// In front of every piece: its size.
struct alignas(kAlign) Header {
  size_t size;
};

size_t rounded(size_t size) {
  return (size + kAlign - 1) & ~(kAlign - 1);
}

}  // namespace

void *Region::allocate(size_t size) {
  if (size > kAny) return nullptr;
  const size_t need = sizeof(Header) + rounded(size);
  if (need > static_cast<size_t>(m_end - m_next) && !addBlock(need)) return nullptr;
  Header *header = new (m_next) Header{size};
  m_next += need;
  return header + 1;
}

void *Region::resize(void *piece, size_t size) {
  if (piece == nullptr) return allocate(size);
  Header *header = static_cast<Header *>(piece) - 1;
  char *bytes = static_cast<char *>(piece);
  if (size <= header->size) return piece;
  if (bytes + rounded(header->size) == m_next && rounded(size) <= static_cast<size_t>(m_end - bytes)) {
    m_next = bytes + rounded(size);
    header->size = size;
    return piece;
  }
  void *moved = allocate(size);
  if (moved != nullptr) std::memcpy(moved, piece, header->size);
  return moved;
}

void Region::allow(size_t bytes) {
  m_allowed = bytes;
  m_spent = false;
}

// Of what is allowed, not of the block in use.
size_t Region::left() const {
  size_t taken = 0;
  for (const Block &block : m_blocks) taken += block.size;
  return most() - std::min(taken, most());
}

bool Region::addBlock(size_t size) {
  const size_t last = m_blocks.empty() ? 0 : m_blocks.back().size;
  const size_t wanted = std::max(size, std::min(std::max(2 * last, kFirstBlock), left()));
  if (wanted > left()) {
    m_spent = true;
    return false;
  }
  try {
    std::unique_ptr<char[]> bytes(new char[wanted]);
    m_blocks.push_back({std::move(bytes), wanted});
  } catch (const std::bad_alloc &) {
    return false;
  }
  m_next = m_blocks.back().bytes.get();
  m_end = m_next + wanted;
  return true;
}

void Region::reset() {
  // Blocks double, so the last one alone holds about what all of them held.
  if (m_blocks.size() > 1) m_blocks.erase(m_blocks.begin(), m_blocks.end() - 1);
  if (!m_blocks.empty() && m_blocks.back().size > m_kept) m_blocks.clear();
  m_next = m_blocks.empty() ? nullptr : m_blocks.back().bytes.get();
  m_end = m_blocks.empty() ? nullptr : m_next + m_blocks.back().size;
}

}  // namespace cvt::xml
