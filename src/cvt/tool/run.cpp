#include "run.h"

#include <array>
#include <optional>

#include "input_file.h"
#include "log.h"
#include "signals.h"

namespace tool {
namespace {

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

}  // namespace

Exit run(const Options &options, Progress &progress, const HandleMessage &handle) {
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
