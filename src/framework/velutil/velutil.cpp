// velutil.cpp: a stand-in for the framework's logging function, over spdlog.
#include "velutil.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

constexpr int kErrorLevel = 1;

std::string_view environment(const char *psName) {
  const char *const ps = std::getenv(psName);
  return ps == nullptr ? std::string_view() : ps;
}

// The number that a text is; nothing when it is none.
std::optional<int> number(std::string_view text) {
  int nValue = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), nValue);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return nValue;
}

int threshold() {
  static const int once = number(environment("VEL_LOG_LEVEL")).value_or(kErrorLevel);
  return once;
}

spdlog::level::level_enum spdlogLevel(int nLevel) {
  return nLevel <= kErrorLevel ? spdlog::level::err : spdlog::level::trace;
}

struct NotWritten {};

std::unique_ptr<spdlog::logger> makeLogger(spdlog::sink_ptr sink) {
  auto logger = std::make_unique<spdlog::logger>("velutil", std::move(sink));
  logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %v");
  logger->set_level(spdlog::level::trace);
  logger->flush_on(spdlogLevel(kErrorLevel));
  logger->set_error_handler([](const std::string &) { throw NotWritten(); });
  return logger;
}

std::unique_ptr<spdlog::logger> openStandardError() {
  return makeLogger(std::make_shared<spdlog::sinks::stderr_sink_mt>());
}

std::unique_ptr<spdlog::logger> openFile(std::string_view file) {
  try {
    return makeLogger(std::make_shared<spdlog::sinks::basic_file_sink_mt>(std::string(file)));
  } catch (const std::exception &e) {
    auto logger = openStandardError();
    logger->error(
        "[1] [velutil] VEL_LOG_FILE: a file that can be written was expected, found [{}]: {}; logging to "
        "standard error; name another file, or none",
        file, e.what());
    return logger;
  }
}

std::unique_ptr<spdlog::logger> openLog() {
  const std::string_view file = environment("VEL_LOG_FILE");
  const std::string_view level = environment("VEL_LOG_LEVEL");
  auto logger = file.empty() ? openStandardError() : openFile(file);
  if (!level.empty() && !number(level)) {
    logger->error(
        "[1] [velutil] VEL_LOG_LEVEL: a number was expected, found [{}]; using 1; write 1 (errors) to 5 "
        "(trace)",
        level);
  }
  return logger;
}

// Opened for the first line. Never destroyed: destructors that run at the end of the process may still log,
// and the C library flushes the file.
spdlog::logger &log() {
  static spdlog::logger &once = *openLog().release();
  return once;
}

std::string formatted(const char *psFormat, va_list args) {
  va_list again;
  va_copy(again, args);
  char sShort[512];
  const int nLen = std::vsnprintf(sShort, sizeof sShort, psFormat, args);
  std::string text;
  if (nLen < 0) {
    text = psFormat;  // arguments that cannot be printed
  } else if (static_cast<size_t>(nLen) < sizeof sShort) {
    text.assign(sShort, static_cast<size_t>(nLen));
  } else {
    text.resize(static_cast<size_t>(nLen));
    std::vsnprintf(text.data(), text.size() + 1, psFormat, again);
  }
  va_end(again);
  return text;
}

// How many bytes of a control character a text begins with; 0 when it begins with none. Those behind U+007F have two.
size_t controlCharacter(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x20 || byte(0) == 0x7f) return byte(0) == '\t' ? 0 : 1;
  return byte(0) == 0xc2 && text.size() > 1 && byte(1) >= 0x80 && byte(1) < 0xa0 ? 2 : 0;
}

// One call is one line: line ends at the end are dropped, other control characters are shown as \xNN, so that
// logged data cannot pass for a log line, or for what a terminal obeys.
std::string oneLine(std::string_view text) {
  while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    const size_t nControl = controlCharacter(text);
    for (size_t i = 0; i < nControl; ++i) {
      fmt::format_to(std::back_inserter(line), "\\x{:02x}", static_cast<unsigned char>(text[i]));
    }
    if (nControl == 0) line += text.front();
    text.remove_prefix(std::max<size_t>(nControl, 1));
  }
  return line;
}

const char *orDash(const char *ps) {
  return ps == nullptr ? "-" : ps;
}

// The last resort, for a line that the log cannot take: to standard error, without the heap, as far as it fits.
void writeBare(int nLevel, const char *psModule, const char *psFile, int nLine, const char *psFunction,
               const char *psFormat, va_list args) {
  char sLine[1024];
  const auto nRoom = static_cast<int>(sizeof sLine);
  int nLen = std::snprintf(sLine, sizeof sLine, "[%d] [%s] [%s:%d] [%s] ", nLevel, orDash(psModule),
                           orDash(psFile), nLine, orDash(psFunction));
  nLen = std::clamp(nLen, 0, nRoom - 1);
  nLen +=
      std::max(std::vsnprintf(sLine + nLen, static_cast<size_t>(nRoom - nLen), orDash(psFormat), args), 0);
  nLen = std::min(nLen, nRoom - 1);
  while (nLen > 0 && sLine[nLen - 1] == '\n') --nLen;
  std::replace_if(
      sLine, sLine + nLen, [](char c) { return static_cast<unsigned char>(c) < 0x20; }, '?');
  sLine[nLen++] = '\n';
  [[maybe_unused]] const ssize_t nWritten = write(STDERR_FILENO, sLine, static_cast<size_t>(nLen));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int logInfo(int nLevel, const char *psModule,
                                                              const char *psFile, int nLine,
                                                              const char *psFunction, const char *psFormat,
                                                              ...) {
  if (nLevel > threshold()) return 0;
  va_list args;
  va_list again;
  va_start(args, psFormat);
  va_copy(again, args);
  try {
    log().log(spdlogLevel(nLevel), "[{}] [{}] [{}:{}] [{}] {}", nLevel, orDash(psModule), orDash(psFile),
              nLine, orDash(psFunction), oneLine(formatted(orDash(psFormat), args)));
  } catch (...) {
    writeBare(nLevel, psModule, psFile, nLine, psFunction, psFormat, again);
  }
  va_end(again);
  va_end(args);
  return 0;
}
