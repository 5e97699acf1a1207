// cvt2.cpp: the library as a host uses it: started once, then each message parsed, converted, generated, and freed.
//
//   bench_cvt2 INPUT OUTPUT ROOT MESSAGE PIPELINE TARGET FRAME GROWTH
//
// FRAME says what a message is: `lines` (without their line feeds), `lines-lf` (with them), `rows` (`lines`, without
// the first), `length2` (a length of two bytes in front, which the output has, too), `whole` (the file).
// GROWTH: how many times the input's size the output has at most.
// Where TARGET is PIPELINE, a message is not converted: it is generated again from its own values.
#include "cvt.h"

#include <string>

#include "program.h"

namespace {

using namespace bench;

// The library keeps what it is given; it ends with the process's work.
class Library {
 public:
  explicit Library(std::string root) {
    if (cvtInit(root.data()) != 0 || gptAllInfo == nullptr) throw Failure("the configuration does not load");
  }
  ~Library() { cvtEnd(); }
  Library(const Library &) = delete;
  Library &operator=(const Library &) = delete;
};

class Handle {
 public:
  explicit Handle(InnerMessage *message) : m_message(message) {
    if (message == nullptr) throw Failure("a message was refused");
  }
  ~Handle() { cvtFreeMessage(m_message); }
  Handle(const Handle &) = delete;
  Handle &operator=(const Handle &) = delete;

  InnerMessage *get() const { return m_message; }

 private:
  InnerMessage *m_message;
};

struct Path {
  std::string message, pipeline, target;
};

// The library takes text as char *, and does not write to it.
char *writable(std::string_view text) {
  return const_cast<char *>(text.data());
}

// The message itself, written anew.
char *generateAgain(Path &path, InnerMessage &message, char *to, int room) {
  message.psBuf = to;
  message.nLen = room;
  message.nNowLen = 0;
  if (fucGenerate(path.target.data(), nullptr, &message) != 0) throw Failure("a message was not generated");
  return to + message.nNowLen;
}

char *convertMessage(Path &path, std::string_view message, char *to, size_t room) {
  int error = 0;
  auto size = static_cast<int>(std::min<size_t>(room, 1U << 30));
  const Handle source(cvtInitMessasge(path.message.data(), path.pipeline.data(), writable(message),
                                      static_cast<int>(message.size()), &error));
  if (path.target == path.pipeline) return generateAgain(path, *source.get(), to, size);
  const Handle generated(cvtGenerateMessasge(source.get(), path.target.data(), to, &size, &error));
  return to + size;
}

void convertLines(Path &path, std::string_view input, Output &output, size_t feed) {
  eachLine(input, [&](std::string_view line) {
    const std::string_view message(line.data(), line.size() + feed);
    output.stop(convertMessage(path, message, output.room(1), output.left()));
  });
}

size_t lengthAt(std::string_view input) {
  if (input.size() < 2) throw Failure("a length is cut off");
  return static_cast<size_t>(static_cast<unsigned char>(input[0]) << 8 |
                             static_cast<unsigned char>(input[1]));
}

void convertPrefixed(Path &path, std::string_view input, Output &output) {
  while (!input.empty()) {
    const size_t size = lengthAt(input);
    if (input.size() < 2 + size) throw Failure("a message is cut off");
    char *const at = output.room(2);
    char *const end = convertMessage(path, input.substr(2, size), at + 2, output.left() - 2);
    const auto made = static_cast<size_t>(end - at - 2);
    at[0] = static_cast<char>(made >> 8);
    at[1] = static_cast<char>(made);
    output.stop(end);
    input.remove_prefix(2 + size);
  }
}

void convertAs(std::string_view frame, Path &path, std::string_view input, Output &output) {
  if (frame == "lines") return convertLines(path, input, output, 0);
  if (frame == "lines-lf") return convertLines(path, input, output, 1);
  if (frame == "rows") return convertLines(path, input.substr(input.find('\n') + 1), output, 0);
  if (frame == "length2") return convertPrefixed(path, input, output);
  if (frame == "whole") return output.stop(convertMessage(path, input, output.room(1), output.left()));
  throw Failure("unknown frame " + std::string(frame));
}

void run(char **arguments) {
  const Library library(arguments[3]);
  Path path{arguments[4], arguments[5], arguments[6]};
  convertFile(arguments[1], arguments[2], std::stoul(arguments[8]),
              [&](std::string_view input, Output &output) { convertAs(arguments[7], path, input, output); });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 6, run);
}
