#include "traffic.h"

#include <stdexcept>
#include <utility>

#include "config_tree.h"
#include "measure.h"

namespace growth {

using test::cs;

// JSON names the fields and escapes nothing of these messages.
Traffic::Traffic(const std::string &message, int live)
    : m_message(message), m_room(message.size() * 8 + 4096) {
  for (int i = 0; i < live; ++i) m_held.push_back(read());
}

Handle Traffic::read() {
  int error = 0;
  Handle handle(
      cvtInitMessasge(cs("In"), cs("fix"), m_message.data(), static_cast<int>(m_message.size()), &error));
  if (handle == nullptr) throw std::runtime_error("the message cannot be read");
  return handle;
}

Handle Traffic::make(const Handle &from) {
  int error = 0;
  int length = static_cast<int>(m_room.size());
  Handle handle(cvtGenerateMessasge(from.get(), cs("json"), m_room.data(), &length, &error));
  if (handle == nullptr) throw std::runtime_error("the message cannot be converted");
  return handle;
}

void Traffic::pass() {
  Handle from = read();
  const Handle to = make(from);
  if (m_held.empty()) return;
  std::swap(m_held[m_longest], from);
  m_longest = (m_longest + 1) % m_held.size();
}

void Traffic::passAll(long count) {
  for (long i = 0; i < count; ++i) pass();
}

// Both stay alive until the end: what a message has given back would be taken again.
Traffic::Bytes Traffic::bytesOfMessages() {
  constexpr size_t kMessages = 200;
  std::vector<Handle> from(kMessages);
  std::vector<Handle> to(kMessages);
  const long before = heapBytes();
  for (Handle &handle : from) handle = read();
  const long between = heapBytes();
  for (size_t i = 0; i < kMessages; ++i) to[i] = make(from[i]);
  const long after = heapBytes();
  return {static_cast<double>(between - before) / kMessages,
          static_cast<double>(after - between) / kMessages};
}

}  // namespace growth
