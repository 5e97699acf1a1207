// One order in every format, converted from each into each: the bytes of golden/, whichever way they came.
#include "matrix.h"

#include "session.h"

namespace formats {

namespace {

using test::cs;

std::string converted(const Format &from, const Format &to, std::string bytes) {
  int error = 0;
  const Handle source(cvtInitMessasge(cs(messageOf(from).c_str()), cs("read"), bytes.data(),
                                      static_cast<int>(bytes.size()), &error));
  if (source == nullptr) return "not read";
  std::string room(1 << 16, '\0');
  int length = static_cast<int>(room.size());
  const Handle made(cvtGenerateMessasge(source.get(), cs(to.name().c_str()), room.data(), &length, &error));
  return made == nullptr ? "not converted" : room.substr(0, static_cast<size_t>(length));
}

}  // namespace

TEST_F(Matrix, EveryFormatBecomesEveryOther) {
  for (const Format *from : allFormats()) {
    for (const Format *to : allFormats()) {
      EXPECT_EQ(converted(*from, *to, golden(*from)), golden(*to))
          << from->name() << " to " << to->name() << "\n"
          << testing::PrintToString(test::logTexts());
      test::clearLog();
    }
  }
}

}  // namespace formats
