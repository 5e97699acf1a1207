// region.h: the parser's memory. The parser asks for many small pieces for each document; a region hands them
// out of one block that stays for the next document, so that parsing does not touch the heap once the block
// has the size that the documents need. Nothing is freed singly: reset() takes everything back.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace cvt::xml {

class Region {
 public:
  // kept: bytes that may stay for the next document.
  explicit Region(size_t kept) : m_kept(kept) {}

  // Up to reset() there may be so many bytes, and as many as may stay; at first any number.
  void allow(size_t bytes);
  size_t most() const { return m_kept + m_allowed; }
  bool spent() const { return m_spent; }  // whether more was asked for

  // Null when the heap is exhausted, or what is allowed. Aligned for any type.
  void *allocate(size_t size);

  // As realloc. The piece taken last grows in place.
  void *resize(void *piece, size_t size);

  // Forgets every piece.
  void reset();

 private:
  static constexpr size_t kAny = static_cast<size_t>(-1) / 4;

  struct Block {
    std::unique_ptr<char[]> bytes;
    size_t size;
  };

  bool addBlock(size_t size);
  size_t left() const;

  size_t m_kept;
  size_t m_allowed = kAny;
  bool m_spent = false;
  std::vector<Block> m_blocks;  // the last one is in use
  char *m_next = nullptr;
  char *m_end = nullptr;
};

}  // namespace cvt::xml
