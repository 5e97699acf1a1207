#include "run.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <system_error>

#include "input_file.h"
#include "log.h"
#include "signals.h"

namespace tool {
namespace {

// What stands between JSON texts, and is none.
bool isBlank(const Frame &frame) {
  return std::string_view(frame.data, frame.size).find_first_not_of(" \t\r\n") == std::string_view::npos;
}

class Run {
 public:
  Run(const Options &options, Progress &progress, const HandleMessage &handle)
      : m_options(options), m_progress(progress), m_handle(handle), m_output(options.output) {
    if (!options.rejects.empty()) m_rejects.emplace(options.rejects);
  }

  Exit all() {
    const bool bComplete = inputs();
    if (m_rejects) m_rejects->commit();
    if (bComplete) m_output.commit();
    m_progress.clear();
    return m_progress.refusals() == 0 ? Exit::ok : Exit::data;
  }

 private:
  // Whether the run came to its end.
  bool inputs() {
    for (const std::string &path : m_options.inputs) {
      InputFile file(path);
      if (!messages(file)) return false;
    }
    return true;
  }

  bool messages(InputFile &file) {
    FrameReader reader(m_options.framing, [&](char *to, size_t size) { return file.read(to, size); });
    uint64_t number = 0;
    try {
      for (;;) {
        ++number;
        const auto frame = reader.next();
        if (!frame) return true;
        checkSignals();
        if (m_options.verb == Verb::generate && isBlank(*frame)) continue;
        m_progress.message();
        if (!message(*frame, file.name(), number)) return false;
      }
    } catch (const FramingError &error) {
      refuse(file.name(), number, error.offset(), error.what());
      keep(reader.rest());
      keepRest(file);
      return m_options.bKeepGoing;
    }
  }

  bool message(const Frame &frame, const std::string &file, uint64_t number) {
    log::begin();
    try {
      m_handle(frame, m_output);
      log::remark();
      return true;
    } catch (const DataError &error) {
      refuse(file, number, frame.offset, error.what());
      keep(frame.raw);
      return m_options.bKeepGoing;
    }
  }

  void refuse(const std::string &file, uint64_t number, uint64_t offset, const std::string &text) {
    m_progress.refused();
    m_progress.clear();
    log::report(file + ": record " + std::to_string(number) + " at byte " + std::to_string(offset) + ": " +
                text);
  }

  void keep(std::string_view bytes) {
    if (m_rejects) m_rejects->write(bytes);
  }

  // What stands behind a broken frame cannot be told apart any more.
  void keepRest(InputFile &file) {
    std::array<char, 4096> chunk{};
    while (m_rejects) {
      const size_t got = file.read(chunk.data(), chunk.size());
      if (got == 0) return;
      keep({chunk.data(), got});
    }
  }

  const Options &m_options;
  Progress &m_progress;
  const HandleMessage &m_handle;
  OutputFile m_output;
  std::optional<OutputFile> m_rejects;
};

// One name for all the ways to a file, also to one that is not there yet or cannot be reached.
std::filesystem::path nameOf(const std::string &path) {
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(behindLinks(path), error);
  const std::filesystem::path name = std::filesystem::weakly_canonical(whole, error);
  return error ? whole.lexically_normal() : name;
}

bool isSameFile(const std::string &one, const std::string &other) {
  std::error_code none;
  return std::filesystem::equivalent(one, other, none) || nameOf(one) == nameOf(other);
}

// The rejects replace what stood in their file before: that must be neither what is read nor what is written.
void checkRejects(const Options &options) {
  const auto isRejects = [&](const std::string &path) {
    return path != "-" && isSameFile(options.rejects, path);
  };
  if (options.rejects.empty()) return;
  const bool bInput = std::any_of(options.inputs.begin(), options.inputs.end(), isRejects);
  if (!bInput && (options.output.empty() || !isRejects(options.output))) return;
  throw Failure(Exit::usage, "--rejects: " + options.rejects + " is also " +
                                 (bInput ? "an input" : "the output") + "; give a file of its own");
}

}  // namespace

Exit run(const Options &options, Progress &progress, const HandleMessage &handle) {
  checkRejects(options);
  for (const std::string &path : options.inputs) checkReadable(path);
  return Run(options, progress, handle).all();
}

Exit run(const Options &options, const HandleMessage &handle) {
  Progress progress;
  const Exit exit = run(options, progress, handle);
  progress.total(options.verbosity > 0);
  return exit;
}

}  // namespace tool
