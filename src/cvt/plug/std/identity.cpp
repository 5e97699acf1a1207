// identity.cpp: values that are there only once.
#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>

#include "clock.h"
#include "topics.h"

namespace cvt::functions {

namespace {

constexpr size_t kWhole = kit::Fault::kHere;
constexpr size_t kMaxName = 64;
constexpr size_t kMaxNames = 1000;
constexpr int kMaxWidth = 18;
constexpr int kMostStart = 2147483647;

// From the first value on that depends on those before, the plug-in stays in the process when its configuration goes.
void stayLoaded() {
  static const char s_here = 0;
  Dl_info self{};
  if (dladdr(&s_here, &self) == 0 || self.dli_fname == nullptr) return;
  dlopen(self.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

// --- Sequences ---------------------------------------------------------------------------------------------

// The next number of each name.
using Sequences = std::map<std::string, uint64_t, std::less<>>;

uint64_t &sequenceOf(kit::Call &call, int argument, uint64_t start) {
  static Sequences s_all;
  const std::string_view name = call.text(argument);
  const auto known = s_all.find(name);
  if (known != s_all.end()) return known->second;
  if (name.empty() || name.size() > kMaxName) {
    call.refuse(argument, kWhole, "a name of 1 to 64 bytes", "another length");
  }
  if (s_all.size() == kMaxNames) {
    call.refuse(argument, kWhole, "one of the 1000 names that there are", "one more",
                "Name sequences in the configuration, not by what messages bring");
  }
  if (s_all.empty()) stayLoaded();
  return s_all.emplace(name, start).first->second;
}

uint64_t largest(size_t width) {
  uint64_t number = 0;
  while (width-- > 0) number = number * 10 + 9;
  return number;
}

void sequence(kit::Call &call) {
  const size_t width = call.has(1) ? static_cast<size_t>(call.number(1, 0, kMaxWidth)) : 0;
  const uint64_t start = call.has(2) ? static_cast<uint64_t>(call.number(2, 0, kMostStart)) : 1;
  const uint64_t most = largest(width == 0 ? kMaxWidth : width);
  if (start > most) call.refuse(2, kWhole, "a start of that width", "a longer one");
  uint64_t &next = sequenceOf(call, 0, start);
  if (next > most) next = start;
  char digits[kMaxWidth];
  size_t count = 0;
  for (uint64_t rest = next++; rest > 0 || count < std::max<size_t>(width, 1); rest /= 10) {
    digits[count++] = static_cast<char>('0' + rest % 10);
  }
  std::reverse_copy(digits, digits + count, call.result(count));
}

// --- UUIDs -------------------------------------------------------------------------------------------------

using Uuid = std::array<unsigned char, 16>;

void answer(kit::Call &call, Uuid uuid, unsigned version) {
  static constexpr char kHex[] = "0123456789abcdef";
  uuid[6] = static_cast<unsigned char>((uuid[6] & 0x0F) | version << 4);
  uuid[8] = static_cast<unsigned char>((uuid[8] & 0x3F) | 0x80);
  char *out = call.result(36);
  for (size_t i = 0; i < uuid.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) *out++ = '-';
    *out++ = kHex[uuid[i] >> 4];
    *out++ = kHex[uuid[i] & 0x0F];
  }
}

void uuid4(kit::Call &call) {
  Uuid uuid;
  randomBytes(uuid.data(), uuid.size());
  answer(call, uuid, 4);
}

// Milliseconds, and 12 bits of a fraction of one. Should the clock not have moved on, the time before and a bit.
uint64_t ascendingTime() {
  static uint64_t s_last;
  if (s_last == 0) stayLoaded();
  const Instant instant = now();
  const auto milliseconds =
      static_cast<uint64_t>(instant.seconds) * 1000 + static_cast<uint64_t>(instant.nanoseconds) / 1'000'000;
  const uint64_t fraction = static_cast<uint64_t>(instant.nanoseconds) % 1'000'000 * 4096 / 1'000'000;
  s_last = std::max(milliseconds << 12 | fraction, s_last + 1);
  return s_last;
}

void uuid7(kit::Call &call) {
  Uuid uuid;
  randomBytes(uuid.data() + 8, 8);
  const uint64_t time = ascendingTime();
  for (size_t i = 0; i < 6; ++i) uuid[i] = static_cast<unsigned char>(time >> (52 - 8 * i) & 0xFF);
  uuid[6] = static_cast<unsigned char>(time >> 8 & 0x0F);
  uuid[7] = static_cast<unsigned char>(time & 0xFF);
  answer(call, uuid, 7);
}

// --- The table -----------------------------------------------------------------------------------------------

// clang-format off
constexpr kit::FunctionRow kFunctions[] = {
    {"sequence",
     {{"name", "which sequence, 1 to 64 bytes; there are as many as there are names, 1000 at most"},
      {"width", "digits of the result, 1 to 18, with zeros in front; 0: as many as it needs"},
      {"start", "the first number of the name, and the one behind the largest that the width can hold; 1 when left out"}},
     1, 3, sequence,
     "the next number of that name",
     {{{"invoice"}, "1"},
      {{"invoice"}, "2"},
      {{"invoice", "6"}, "000003"},
      {{"trace", "2", "98"}, "98"},
      {{"trace", "2", "98"}, "99"},
      {{"trace", "2", "98"}, "98"}},
     {{{""}, "Arg[1] Len[0]: expected a name of 1 to 64 bytes, found another length."},
      {{"trace", "2", "100"}, "Arg[3] Len[3]: expected a start of that width, found a longer one."}}},

    {"uuid4",
     {}, 0, 0, uuid4,
     "a random UUID, version 4 of RFC 9562",
     {{{}, "########-####-4###-####-############", kit::Match::Shape}}},

    {"uuid7",
     {}, 0, 0, uuid7,
     "a UUID that begins with the time, version 7 of RFC 9562: each one of a process is greater than those before",
     {{{}, "018df4d8-7fae-7###-####-############", kit::Match::Shape}}},
};
// clang-format on

constexpr const char *kAbout =
    "A sequence belongs to the process: a reload of the configuration leaves it, and a new process begins "
    "again, so what must be unique for longer needs a date in front of it, or the database, or a UUID. "
    "Chance is the system's, unless `nSeed` fixes it.";

}  // namespace

constinit const kit::Topic kIdentity = kit::topic<kFunctions>("Sequences and identifiers", kAbout);

}  // namespace cvt::functions
