// hash.cpp: digests.
#include <nettle/hmac.h>
#include <nettle/md5.h>
#include <nettle/sha1.h>
#include <nettle/sha2.h>

#include <array>

#include "topics.h"

namespace cvt::functions {

namespace {

const uint8_t *bytesOf(std::string_view text) {
  return reinterpret_cast<const uint8_t *>(text.data());
}

// The digits are small letters, as the programs of the same names write them.
void answerHex(kit::Call &call, std::span<const uint8_t> bytes) {
  static constexpr char kHex[] = "0123456789abcdef";
  char *out = call.result(bytes.size() * 2);
  for (const uint8_t byte : bytes) {
    *out++ = kHex[byte >> 4];
    *out++ = kHex[byte & 0x0F];
  }
}

// The library's functions for a digest all look the same.
template <class Context, auto kInit, auto kUpdate, auto kDigest, size_t kSize>
void digest(kit::Call &call) {
  const std::string_view text = call.text(0);
  Context context;
  kInit(&context);
  kUpdate(&context, text.size(), bytesOf(text));
  uint8_t result[kSize];
  kDigest(&context, kSize, result);
  answerHex(call, result);
}

constexpr auto md5 = digest<md5_ctx, md5_init, md5_update, md5_digest, MD5_DIGEST_SIZE>;
constexpr auto sha1 = digest<sha1_ctx, sha1_init, sha1_update, sha1_digest, SHA1_DIGEST_SIZE>;
constexpr auto sha256 = digest<sha256_ctx, sha256_init, sha256_update, sha256_digest, SHA256_DIGEST_SIZE>;
constexpr auto sha512 = digest<sha512_ctx, sha512_init, sha512_update, sha512_digest, SHA512_DIGEST_SIZE>;

void hmacSha256(kit::Call &call) {
  const std::string_view text = call.text(0);
  const std::string_view key = call.text(1);
  if (key.empty()) call.refuse(1, kit::Fault::kHere, "a key", "an empty one");
  hmac_sha256_ctx context;
  hmac_sha256_set_key(&context, key.size(), bytesOf(key));
  hmac_sha256_update(&context, text.size(), bytesOf(text));
  uint8_t result[SHA256_DIGEST_SIZE];
  hmac_sha256_digest(&context, sizeof result, result);
  answerHex(call, result);
}

// What the remainder becomes for each value of its low byte.
constexpr std::array<uint32_t, 256> crcSteps() {
  std::array<uint32_t, 256> steps{};
  for (uint32_t i = 0; i < steps.size(); ++i) {
    uint32_t remainder = i;
    for (int bit = 0; bit < 8; ++bit) remainder = remainder >> 1 ^ (remainder % 2 == 0 ? 0 : 0xEDB88320U);
    steps[i] = remainder;
  }
  return steps;
}

constexpr std::array<uint32_t, 256> kCrcSteps = crcSteps();

void crc32(kit::Call &call) {
  uint32_t remainder = ~uint32_t{0};
  for (const char c : call.text(0)) {
    remainder = remainder >> 8 ^ kCrcSteps[(remainder ^ static_cast<unsigned char>(c)) & 0xFF];
  }
  remainder = ~remainder;
  const uint8_t bytes[] = {
      static_cast<uint8_t>(remainder >> 24), static_cast<uint8_t>(remainder >> 16 & 0xFF),
      static_cast<uint8_t>(remainder >> 8 & 0xFF), static_cast<uint8_t>(remainder & 0xFF)};
  answerHex(call, bytes);
}

// --- The table -----------------------------------------------------------------------------------------------

// clang-format off
#define BYTES {"bytes", "any bytes"}

constexpr kit::FunctionRow kFunctions[] = {
    {"sha256",
     {BYTES}, 1, 1, sha256,
     "the digest SHA-256 (FIPS 180-4)",
     {{{"abc"}, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {{""}, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"}}},

    {"sha512",
     {BYTES}, 1, 1, sha512,
     "the digest SHA-512 (FIPS 180-4)",
     {{{"abc"}, "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
                "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"}}},

    {"sha1",
     {BYTES}, 1, 1, sha1,
     "the digest SHA-1 (FIPS 180-4), for what still wants it: two texts with the same one can be made",
     {{{"abc"}, "a9993e364706816aba3e25717850c26c9cd0d89d"}}},

    {"md5",
     {BYTES}, 1, 1, md5,
     "the digest MD5 (RFC 1321), for what still wants it: two texts with the same one can be made",
     {{{"abc"}, "900150983cd24fb0d6963f7d28e17f72"}}},

    {"hmacSha256",
     {BYTES, {"key", "bytes, at least one; a constant stands in the configuration for everybody to read"}},
     2, 2, hmacSha256,
     "the authentication code HMAC-SHA-256 (RFC 2104)",
     {{{"what do ya want for nothing?", "Jefe"}, "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"}},
     {{{"abc", ""}, "Arg[2] Len[0]: expected a key, found an empty one."}}},

    {"crc32",
     {BYTES}, 1, 1, crc32,
     "the check sum CRC-32 of ISO/IEC 8802-3, as in zip files; whoever wants to can make a text that has it",
     {{{"123456789"}, "cbf43926"},
      {{""}, "00000000"}}},
};

#undef BYTES
// clang-format on

}  // namespace

constinit const kit::Topic kHash = kit::topic<kFunctions>(
    "Digests",
    "A digest is of the bytes of a value; it is written in hexadecimal digits, with small letters.");

}  // namespace cvt::functions
