// What is written comes back, and what was read is written again with the same bytes.
#include "suite.h"

namespace formats {

class RoundTrip : public FormatTest {
 protected:
  // Values to bytes, to values, to bytes.
  void goesRound(const Json &fields) {
    const std::string bytes = bytesOf(fields);
    ASSERT_NE(bytes, "refused") << fields << "\n" << told();
    const Handle again = session.read("Order", bytes);
    ASSERT_NE(again, nullptr) << bytes << "\n" << told();
    EXPECT_EQ(session.values(again), fields) << bytes;
    EXPECT_EQ(session.write(again), bytes) << told();
  }
};

TEST_P(RoundTrip, AMessageOfEveryField) {
  goesRound(order(kMostLines, kMostNotes));
}

TEST_P(RoundTrip, LoopsWithoutRepetitionsWithOneAndWithAll) {
  for (int lines = 0; lines <= kMostLines; ++lines) {
    for (int notes = 0; notes <= kMostNotes; ++notes) goesRound(order(lines, notes));
  }
}

TEST_P(RoundTrip, OneFieldAlone) {
  goesRound({{"Id", "7"}});
}

TEST_P(RoundTrip, RandomMessages) {
  std::mt19937 random(1);
  for (int i = 0; i < 300 && !HasFailure(); ++i) goesRound(randomOrder(random, format()));
}

TEST_P(RoundTrip, EverySignThatTheFormatCanCarry) {
  for (const char sign : format().signs()) {
    Json fields = order(1, 1);
    fields["Remark"] = std::string("a") + sign + sign + "b" + sign + "c";
    fields["Customer"]["Name"] = std::string("x") + sign + "y";
    goesRound(fields);
  }
}

TEST_P(RoundTrip, MessagesBehindEachOther) {
  if (!format().endsByItself()) GTEST_SKIP() << "a message of this format takes all bytes there are";
  const std::string one = bytesOf(order(2, 1));
  const std::string other = bytesOf(order(0, 0));
  int used = 0;
  const Handle first = session.read("Order", one + other, &used);
  ASSERT_NE(first, nullptr) << told();
  EXPECT_EQ(used, static_cast<int>(one.size()));
  EXPECT_EQ(session.values(first), order(2, 1));
}

TEST_P(RoundTrip, AfterAReload) {
  ASSERT_EQ(session.start(), 0) << told();
  goesRound(order(2, 2));
}

TEST_P(RoundTrip, EachCharacterSet) {
  const std::pair<const char *, const char *> texts[] = {{"UTF-8", "Zoë 中文 € 𝄞"},
                                                         {"ISO-8859-1", "Zoë Müller"},
                                                         {"windows-1252", "Zoë 5 €"},
                                                         {"GB18030", "中文字符 Zoë"},
                                                         {"IBM037", "Zoë & Co"}};
  for (const auto &[charset, text] : texts) {
    const std::vector<std::string> all = format().charsets();
    if (std::find(all.begin(), all.end(), charset) == all.end()) continue;
    session.define("Order", orderItems(), charset);
    ASSERT_EQ(session.start(), 0) << charset << "\n" << told();
    Json fields = order(1, 1);
    fields["Customer"]["Name"] = text;
    SCOPED_TRACE(charset);
    goesRound(fields);
  }
}

FOR_EVERY_FORMAT(RoundTrip);

}  // namespace formats
