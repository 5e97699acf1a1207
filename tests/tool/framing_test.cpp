#include "framing.h"
#include "cpu_time.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using tool::Frame;
using tool::FrameReader;
using tool::Framing;
using tool::FramingError;
using tool::parseFraming;
using tool::wrap;

namespace {

// A stream that delivers at most `step` bytes a time.
FrameReader::ReadBytes stream(std::string bytes, size_t step) {
  return [bytes = std::move(bytes), step, at = size_t{0}](char *to, size_t size) mutable {
    const size_t n = std::min({step, size, bytes.size() - at});
    bytes.copy(to, n, at);
    at += n;
    return n;
  };
}

std::vector<std::string> messages(const std::string &framing, const std::string &bytes, size_t step = 1000) {
  FrameReader reader(parseFraming("--framing", framing), stream(bytes, step));
  std::vector<std::string> all;
  while (const auto frame = reader.next()) all.emplace_back(frame->data, frame->size);
  return all;
}

std::string errorOf(const std::string &framing, const std::string &bytes, uint64_t offset) {
  FrameReader reader(parseFraming("--framing", framing), stream(bytes, 3));
  try {
    while (reader.next()) {
    }
  } catch (const FramingError &error) {
    EXPECT_EQ(error.offset(), offset);
    return error.what();
  }
  return "no error";
}

std::string wrapped(const std::string &framing, const std::string &message) {
  const tool::Wrapping wrapping = wrap(parseFraming("--out-framing", framing, "none"), message);
  return wrapping.head + message + std::string(wrapping.tail);
}

using Messages = std::vector<std::string>;

}  // namespace

TEST(Framing, WholeIsOneMessage) {
  EXPECT_EQ(messages("whole", "a\nb\n"), (Messages{"a\nb\n"}));
  EXPECT_EQ(messages("whole", "abcdef", 1), (Messages{"abcdef"}));
}

TEST(Framing, WholeOfNothingIsOneEmptyMessage) {
  EXPECT_EQ(messages("whole", ""), (Messages{""}));
}

TEST(Framing, LinesEndWithLineFeedOrCarriageReturnAndLineFeed) {
  EXPECT_EQ(messages("line", "a\nbc\r\n\nd\re\n"), (Messages{"a", "bc", "", "d\re"}));
}

TEST(Framing, TheLastLineNeedsNoLineFeed) {
  EXPECT_EQ(messages("line", "a\nb"), (Messages{"a", "b"}));
  EXPECT_EQ(messages("line", ""), (Messages{}));
}

TEST(Framing, LengthsAreBigEndianAndCountTheMessageAlone) {
  const std::string two("\0\3abc\0\0\0\1x", 10);
  EXPECT_EQ(messages("len2", two), (Messages{"abc", "", "x"}));
  const std::string four("\0\0\0\3abc\0\0\1\0", 11);
  EXPECT_EQ(messages("len4", four + std::string(256, 'y')), (Messages{"abc", std::string(256, 'y')}));
  EXPECT_EQ(messages("lenascii4", "0003abc00000001x"), (Messages{"abc", "", "x"}));
}

TEST(Framing, RecordsHaveTheirSize) {
  EXPECT_EQ(messages("rec=3", "abcdef"), (Messages{"abc", "def"}));
  EXPECT_EQ(messages("rec=3", ""), (Messages{}));
}

TEST(Framing, HowTheStreamArrivesMakesNoDifference) {
  std::string bytes;
  Messages expected;
  for (size_t i = 0; i < 300; ++i) {
    expected.emplace_back(i * 7 % 1000, static_cast<char>('a' + i % 26));
    bytes += wrapped("len4", expected.back());
  }
  for (const size_t step : {1U, 2U, 5U, 4096U, 1000000U}) EXPECT_EQ(messages("len4", bytes, step), expected);
}

TEST(Framing, AMessageLargerThanTheReadersChunkIsOne) {
  const std::string large(300000, 'x');
  EXPECT_EQ(messages("line", large + "\n" + large, 70000), (Messages{large, large}));
}

// As a pipe delivers it.
TEST(Framing, ALargeMessageInSmallPiecesTakesTimeInProportion) {
  const auto seconds = [](size_t megabytes) {
    const std::string bytes(megabytes << 20, 'x');
    const double begin = test::cpuSeconds();
    EXPECT_EQ(messages("line", bytes, 4096), Messages{bytes});
    return test::cpuSeconds() - begin;
  };
  seconds(60);  // memory that a virtual machine has not touched for a while is dear the first time
  const double little = seconds(6);
  const double much = seconds(60);
  std::printf("6 MB: %.3f s, 60 MB: %.3f s\n", little, much);
  EXPECT_LT(much, 25 * little + 0.2);
}

TEST(Framing, AMessageHasAZeroByteBehindItAndIsWritable) {
  FrameReader reader(parseFraming("--framing", "line"), stream("ab\ncd", 100));
  for (auto frame = reader.next(); frame; frame = reader.next()) {
    EXPECT_EQ(frame->data[frame->size], '\0');
    frame->data[0] = 'X';
  }
}

TEST(Framing, RawBytesAreThoseOfTheStreamAlsoWhenTheMessageWasWrittenTo) {
  FrameReader reader(parseFraming("--framing", "line"), stream("ab\r\ncd\n", 100));
  const auto frame = reader.next();
  ASSERT_TRUE(frame);
  frame->data[0] = 'X';
  EXPECT_EQ(frame->raw, "ab\r\n");
}

TEST(Framing, OffsetsAreThoseOfTheMessagesFirstByte) {
  FrameReader reader(parseFraming("--framing", "lenascii4"), stream("0003abc0001x", 2));
  EXPECT_EQ(reader.next()->offset, 4u);
  EXPECT_EQ(reader.next()->offset, 11u);
}

TEST(Framing, ABrokenStreamIsRefusedWithItsOffset) {
  EXPECT_EQ(errorOf("rec=3", "abcd", 3),
            "expected a record of 3 bytes, found 1 byte before the end of the input; check the N of "
            "--framing rec=N");
  EXPECT_EQ(errorOf("len2", std::string("\0\1a\0", 4), 3),
            "expected a length of 2 bytes, found 1 byte before the end of the input");
  EXPECT_EQ(
      errorOf("len2", std::string("\0\5abc", 5), 0),
      "expected a message of 5 bytes as its length says, found 3 bytes before the end of the input; check "
      "--framing");
  EXPECT_EQ(errorOf("lenascii4", "0001x00-1y", 5),
            "expected a length of 4 digits, found '00-1'; check --framing");
  EXPECT_EQ(errorOf("len4", "\xff\xff\xff\xff", 0),
            "expected a length of at most 2147483646 bytes, found 4294967295; check --framing");
}

TEST(Framing, WhatIsLeftOfABrokenStreamCanBeKept) {
  FrameReader reader(parseFraming("--framing", "rec=3"), stream("abcde", 100));
  EXPECT_TRUE(reader.next());
  EXPECT_THROW(reader.next(), FramingError);
  EXPECT_EQ(reader.rest(), "de");
}

TEST(Framing, OutputIsFramedAsInputIsRead) {
  for (const char *framing : {"line", "len2", "len4", "lenascii4", "rec=3"}) {
    EXPECT_EQ(messages(framing, wrapped(framing, "abc") + wrapped(framing, "def")), (Messages{"abc", "def"}))
        << framing;
  }
  EXPECT_EQ(wrapped("none", "abc"), "abc");
}

TEST(Framing, ALineFeedIsNotWrittenTwice) {
  EXPECT_EQ(wrapped("line", "abc\n"), "abc\n");
  EXPECT_EQ(wrapped("line", ""), "\n");
}

TEST(Framing, AMessageThatTheOutputFramingCannotCarryIsRefused) {
  EXPECT_NO_THROW(wrapped("len2", std::string(65535, 'x')));
  EXPECT_THROW(wrapped("len2", std::string(65536, 'x')), tool::DataError);
  EXPECT_EQ(wrapped("lenascii4", std::string(9999, 'x')).substr(0, 5), "9999x");
  EXPECT_THROW(wrapped("lenascii4", std::string(10000, 'x')), tool::DataError);
  EXPECT_THROW(wrapped("rec=3", "ab"), tool::DataError);
}

TEST(Framing, OptionsThatMeanNothingAreUsageFailures) {
  for (const char *text :
       {"", "lines", "rec", "rec=", "rec=0", "rec=-1", "rec=1x", "rec=2147483647", "none"}) {
    try {
      parseFraming("--framing", text);
      ADD_FAILURE() << text;
    } catch (const tool::Failure &failure) {
      EXPECT_EQ(failure.code(), tool::Exit::usage);
    }
  }
  EXPECT_THROW(parseFraming("--out-framing", "whole", "none"), tool::Failure);
}
