// What a format cannot represent is refused, in both directions, with one line that says where.
#include <algorithm>

#include "suite.h"

namespace formats {

class Refusal : public FormatTest {
 protected:
  void isRefused(const Handle &handle, const std::string &path) {
    test::clearLog();
    EXPECT_EQ(session.write(handle), std::nullopt);
    EXPECT_TRUE(toldOnce());
    EXPECT_TRUE(toldOf("Field[" + path)) << told();
  }
};

TEST_P(Refusal, OfATextWithOneCharacterMoreThanItsLimit) {
  Json fields = order(2, 1);
  fields["Customer"]["Name"] = std::string(kMostName, 'x');
  EXPECT_NE(session.write(session.fill("Order", fields)), std::nullopt) << told();
  fields["Customer"]["Name"] = std::string(kMostName + 1, 'x');
  isRefused(session.fill("Order", fields), "Customer.Name]");
}

TEST_P(Refusal, SaysInWhichRepetitionAFieldIsTooLong) {
  Json fields = order(2, 2);
  fields["Lines"][1]["Notes"][0]["Note"] = std::string(100, 'x');
  isRefused(session.fill("Order", fields), "Lines[1].Notes[0].Note]");
}

TEST_P(Refusal, OfOneRepetitionMoreThanTheLimit) {
  EXPECT_NE(session.write(session.fill("Order", order(kMostLines, kMostNotes))), std::nullopt) << told();
  isRefused(session.fill("Order", order(kMostLines + 1, 0)), "Lines");
  isRefused(session.fill("Order", order(1, kMostNotes + 1)), "Lines[0].Notes");
}

TEST_P(Refusal, OfOneRepetitionMoreWhenItIsRead) {
  session.define("Wide", orderItems(1));
  ASSERT_EQ(session.start(), 0) << told();
  const std::string tooManyLines = bytesOf(order(kMostLines + 1, 0), "Wide");
  const std::string tooManyNotes = bytesOf(order(2, kMostNotes + 1), "Wide");
  session.define("Wide", orderItems());
  ASSERT_EQ(session.start(), 0) << told();
  for (const auto &[bytes, path] :
       {std::pair(tooManyLines, "Field[Lines"), {tooManyNotes, "Field[Lines[0].Notes"}}) {
    test::clearLog();
    EXPECT_EQ(session.read("Wide", bytes), nullptr);
    EXPECT_TRUE(toldOnce());
    EXPECT_TRUE(toldOf(path)) << told();
  }
}

// A message that is cut is refused, or it is one of fewer values.
TEST_P(Refusal, OfAMessageThatIsCutAnywhere) {
  const std::string bytes = bytesOf(order(2, 2));
  ASSERT_NE(bytes, "refused");
  size_t refused = 0;
  for (size_t n = 0; n < bytes.size(); ++n) {
    test::clearLog();
    const Handle cut = session.read("Order", bytes.substr(0, n));
    if (cut == nullptr) {
      EXPECT_TRUE(toldOnce()) << n;
      ++refused;
    } else {
      EXPECT_TRUE(format().prefixMayBeMessage()) << n << ": " << session.values(cut);
      EXPECT_NE(session.values(cut), order(2, 2)) << n;
    }
  }
  EXPECT_GT(refused, bytes.size() / 2);
}

// A message with a flipped bit is refused, or it is another message: what it says is written and read again.
TEST_P(Refusal, OrAnotherMeaningOfAMessageWithAFlippedBit) {
  const std::string bytes = bytesOf(order(2, 2));
  ASSERT_NE(bytes, "refused");
  size_t refused = 0;
  for (size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
    std::string flipped = bytes;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    test::clearLog();
    const Handle other = session.read("Order", flipped);
    if (other == nullptr) {
      ++refused;
      EXPECT_TRUE(toldOnce()) << bit;
      continue;
    }
    const std::optional<std::string> again = session.write(other);
    ASSERT_TRUE(again.has_value()) << bit << "\n" << told();
    const Handle back = session.read("Order", *again);
    ASSERT_NE(back, nullptr) << bit << "\n" << told();
    EXPECT_EQ(session.values(back), session.values(other)) << bit;
  }
  EXPECT_GT(refused, 0U);
}

TEST_P(Refusal, OfABufferThatIsTooSmall) {
  const std::string bytes = bytesOf(order(2, 2));
  const Handle handle = session.fill("Order", order(2, 2));
  for (size_t room = 0; room < bytes.size(); ++room) {
    test::clearLog();
    EXPECT_EQ(session.write(handle, room), std::nullopt) << room;
    EXPECT_TRUE(toldOnce()) << room;
  }
  EXPECT_EQ(session.write(handle, bytes.size()), bytes);
}

TEST_P(Refusal, OrAMessageOfBytesAtRandom) {
  std::mt19937 random(7);
  const std::string good = bytesOf(order(2, 2));
  for (int i = 0; i < 1000; ++i) {
    std::string bytes(random() % 200, '\0');
    for (char &c : bytes) c = random() % 2 == 0 ? static_cast<char>(random()) : good[random() % good.size()];
    test::clearLog();
    const Handle handle = session.read("Order", bytes);
    if (handle == nullptr) {
      EXPECT_TRUE(toldOnce()) << i;
    } else {
      EXPECT_NE(session.write(handle), std::nullopt) << i << "\n" << told();
    }
  }
}

TEST_P(Refusal, OfACharacterThatTheSetLacks) {
  const std::vector<std::string> all = format().charsets();
  if (std::find(all.begin(), all.end(), "ISO-8859-1") == all.end()) GTEST_SKIP() << "UTF-8 has them all";
  session.define("Order", orderItems(), "ISO-8859-1");
  ASSERT_EQ(session.start(), 0) << told();
  Json fields = order(1, 1);
  fields["Remark"] = "中";
  const Handle handle = session.fill("Order", fields);
  test::clearLog();
  // It is refused, unless the format has another way of writing it.
  const std::optional<std::string> bytes = session.write(handle);
  if (!bytes.has_value()) {
    EXPECT_TRUE(toldOnce());
    EXPECT_TRUE(toldOf("Field[Remark]")) << told();
  } else {
    EXPECT_EQ(session.values(session.read("Order", *bytes)), fields);
  }
}

TEST_P(Refusal, OfTextThatIsNotUtf8) {
  for (const char *damaged : {"a\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF4\x90\x80\x80"}) {
    const Handle handle = session.fill("Order", order(1, 1));
    ASSERT_EQ(cvtSetNameValue(handle.get(), test::cs("Remark"), test::cs(damaged),
                              static_cast<int>(std::string(damaged).size())),
              0);
    isRefused(handle, "Remark]");
  }
}

TEST_P(Refusal, OfAnAttributeThatTheRecordDoesNotHave) {
  const std::string good = format().definition("Other", orderItems());
  const std::regex record("<[A-Z][a-z0-9]*[A-Z][A-Za-z]* __ID=\"(pInfo|ptInfo)\"");
  int tried = 0;
  for (auto it = std::sregex_iterator(good.begin(), good.end(), record); it != std::sregex_iterator(); ++it) {
    if (it->str().starts_with("<LoopType")) continue;
    std::string bad = good;
    bad.insert(static_cast<size_t>(it->position() + it->length()), " nNoSuchThing=\"1\"");
    session.defineText("Other", bad);
    test::clearLog();
    EXPECT_NE(session.start(), 0) << it->str();
    EXPECT_TRUE(toldOf("nNoSuchThing")) << told();
    EXPECT_TRUE(toldOf("Other.xml")) << told();
    ++tried;
  }
  EXPECT_GT(tried, 0);
}

FOR_EVERY_FORMAT(Refusal);

}  // namespace formats
