// A process that lives long: it converts many messages, is reconfigured, fails and is mended, ends and starts
// again. What it says is compared with what it must say, and what it holds of the system with what it held.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cvt.h"
#include "database.h"
#include "footprint.h"
#include "life_config.h"
#include "log_capture.h"
#include "order.h"

using life::footprint;
using life::Footprint;
using life::Order;
using test::cs;

namespace {

// A checker that slows the process down takes a share of the work: CVT2_LIFE_SHARE=40 for a fortieth.
int share(int nWhole) {
  static const char *const psShare = std::getenv("CVT2_LIFE_SHARE");
  return psShare == nullptr ? nWhole : nWhole / std::atoi(psShare);
}

// An order in whose invoice the configuration's generation can be seen.
constexpr int kSample = 6;

struct Free {
  void operator()(InnerMessage *pt) const { cvtFreeMessage(pt); }
};
using Handle = std::unique_ptr<InnerMessage, Free>;

using Texts = std::vector<std::string>;

class LongLife : public testing::Test {
 protected:
  void SetUp() override {
    m_before = footprint();
    openDatabase();
  }
  void TearDown() override {
    cvtEnd();
    EXPECT_EQ(audit(), (test::Row{std::to_string(m_nOrders), std::to_string(m_nCents)}));
    EXPECT_EQ(dbsDisconnect(), 0);
    EXPECT_EQ(footprint().nDescriptors, m_before.nDescriptors);
    EXPECT_EQ(gnMsgNum, 0);
    test::clearLog();
  }

  Handle parse(const char *psName, const char *psFormat, std::string_view bytes) {
    return Handle(cvtInitMessasge(cs(psName), cs(psFormat), const_cast<char *>(bytes.data()),
                                  static_cast<int>(bytes.size()), &m_nError));
  }

  // The invoice of an order; its bytes are bytes() until the next one.
  Handle invoice(const Handle &order, const Order &wanted, size_t nRoom = kRoom) {
    ++m_nOrders;
    m_nCents += wanted.cents();
    m_nLen = static_cast<int>(nRoom);
    return Handle(cvtGenerateMessasge(order.get(), cs("xml"), m_room.data(), &m_nLen, &m_nError));
  }
  std::string_view bytes() const { return {m_room.data(), static_cast<size_t>(m_nLen)}; }

  // The message in its own format.
  std::string_view written(const Handle &message) {
    int nLen = kRoom;
    if (cvtGenMessage(message.get(), m_again.data(), &nLen) != 0) return "not written";
    return {m_again.data(), static_cast<size_t>(nLen)};
  }

  static void openDatabase();
  static test::Row audit() { return test::query("select orders, cents from audit")[0]; }

  static long cents(const Handle &invoice);
  void convert(int n, int nGeneration);
  void refuse(int n);
  void reloadWithAHandleAlive();
  void breakAndMend(void (life::LifeConfig::*damage)());
  void reload(int n);

  // Two halves of work; the second must not take anything that the first did not.
  void flat(const char *psWhat, int nWhole, const std::function<void(int)> &work);

  static constexpr int kRoom = 1 << 16;
  life::LifeConfig config;
  std::vector<char> m_room = std::vector<char>(kRoom);
  std::vector<char> m_again = std::vector<char>(kRoom);
  Footprint m_before;
  int m_nGeneration = 0;
  long m_nOrders = 0;  // what the audit must say
  long m_nCents = 0;
  int m_nLen = 0;
  int m_nError = 0;
};

void LongLife::openDatabase() {
  ASSERT_EQ(dbsConnect(cs("sqlite::memory:")), 0) << dbsErrStr();
  test::run("create table kinds (kind text, terms text)");
  for (const char c : {'A', 'B'}) {
    test::run(std::string("insert into kinds values ('") + c + "', '" + life::terms(c) + "')");
  }
  test::run("create table audit (orders integer, cents integer)");
  test::run("insert into audit values (0, 0)");
}

void LongLife::flat(const char *psWhat, int nWhole, const std::function<void(int)> &work) {
  for (int i = 0; i < nWhole / 2 && !HasFailure(); ++i) work(i);
  const Footprint half = footprint();
  for (int i = nWhole / 2; i < nWhole && !HasFailure(); ++i) work(i);
  const Footprint whole = footprint();
  std::cout << psWhat << ": after " << nWhole / 2 << ": " << half.text() << "\n"
            << psWhat << ": after " << nWhole << ": " << whole.text() << "\n";
  EXPECT_LE(whole.nHeap - half.nHeap, life::heapBound()) << psWhat;
  EXPECT_LE(whole.nResident - half.nResident, life::kResidentBound) << psWhat;
  EXPECT_EQ(whole.nDescriptors, half.nDescriptors) << psWhat;
}

// The sum of the lines' amounts, read field by field.
long LongLife::cents(const Handle &invoice) {
  long nSum = 0;
  int nError = 0;
  const int nLines = cvtGetLoopTime(invoice.get(), cs("Lines"));
  for (int i = 0; i < nLines; ++i) {
    EXPECT_EQ(cvtSetLoopTime(invoice.get(), cs("Lines"), i), 0);
    const Value *const pt = cvtGetNameValue(invoice.get(), cs("Lines.LineAmount"), &nError);
    if (pt == nullptr) return -1;
    std::string digits(pt->psValue, static_cast<size_t>(pt->nLen));
    digits.erase(digits.find('.'), 1);
    nSum += std::stol(digits);
  }
  return nSum;
}

void LongLife::convert(int n, int nGeneration) {
  const Order wanted = life::order(n);
  const std::string sOrder = life::fixBytes(wanted);
  const Handle order = parse("Order", "fix", sOrder);
  ASSERT_NE(order, nullptr) << sOrder;
  const Handle made = invoice(order, wanted);
  ASSERT_NE(made, nullptr) << sOrder;
  ASSERT_EQ(bytes(), life::invoiceBytes(wanted, nGeneration));
  ASSERT_EQ(cents(made), wanted.cents());
  ASSERT_EQ(written(order), sOrder);
  const Handle back = parse("Invoice", "xml", bytes());
  ASSERT_NE(back, nullptr) << bytes();
  ASSERT_EQ(written(back), bytes());
  Texts warnings;
  if (life::terms(wanted.cKind).empty()) {
    warnings = {std::string("Warning: sql[select terms from kinds where kind = '") + wanted.cKind +
                "'] not find data!!"};
  }
  ASSERT_EQ(test::logTexts(1), warnings);
  test::clearLog();
}

// Messages that are refused leave nothing either: one that cannot be read, one that has no room.
void LongLife::refuse(int n) {
  const Order wanted = life::order(n);
  const std::string sOrder = life::fixBytes(wanted);
  ASSERT_EQ(parse("Order", "fix", std::string_view(sOrder).substr(0, sOrder.size() - 1)), nullptr);
  const Handle order = parse("Order", "fix", sOrder);
  ASSERT_EQ(invoice(order, wanted, 60), nullptr);
  ASSERT_TRUE(test::logged(1, "Msg[Order] parse buffer err!!"));
  ASSERT_TRUE(test::logged(1, "Generate Message[Invoice] err!!"));
  test::clearLog();
}

// Handles point into the definitions: these stay, also for messages made meanwhile, until the handle is gone.
void LongLife::reloadWithAHandleAlive() {
  const std::string sOrder = life::fixBytes(life::order(kSample));
  const Handle alive = parse("Order", "fix", sOrder);
  config.generation(m_nGeneration + 1);
  convert(kSample, m_nGeneration);
  ASSERT_EQ(written(alive), sOrder);
}

// A load that fails refuses messages, and says so, until a new start.
void LongLife::breakAndMend(void (life::LifeConfig::*damage)()) {
  const Texts notStarted = {"Not Init!!", "AutoReload err!! Please Check Config File!!"};
  const std::string sOrder = life::fixBytes(life::order(kSample));
  (config.*damage)();
  ASSERT_EQ(parse("Order", "fix", sOrder), nullptr);
  ASSERT_EQ(m_nError, -1);
  ASSERT_EQ(test::logTexts(1).back(), notStarted.back());
  test::clearLog();
  config.generation(++m_nGeneration);
  ASSERT_EQ(parse("Order", "fix", sOrder), nullptr);
  ASSERT_EQ(test::logTexts(1), notStarted);
  test::clearLog();
  ASSERT_EQ(config.start(), 0);
  convert(kSample, m_nGeneration);
}

// Another configuration that the next message finds; now and then with what may come between.
void LongLife::reload(int n) {
  if (n % 10 == 3) {
    reloadWithAHandleAlive();
  } else {
    config.generation(m_nGeneration + 1);
  }
  convert(kSample, ++m_nGeneration);
  if (n % 25 == 7) breakAndMend(&life::LifeConfig::breakRoot);
  if (n % 25 == 15) breakAndMend(&life::LifeConfig::breakPlug);
  if (n % 25 == 23) breakAndMend(&life::LifeConfig::breakConverter);
}

TEST_F(LongLife, MessagesTakeNothingThatTheyDoNotGiveBack) {
  ASSERT_EQ(config.start(), 0);
  flat("messages", share(100000), [this](int n) {
    convert(n, 0);
    if (n % 100 == 0) refuse(n);
  });
}

TEST_F(LongLife, ReloadsTakeNothingThatTheyDoNotGiveBack) {
  ASSERT_EQ(config.start(), 0);
  flat("reloads", share(1000), [this](int n) { reload(n); });
}

TEST_F(LongLife, RestartsTakeNothingThatTheyDoNotGiveBack) {
  flat("restarts", share(400), [this](int) {
    config.generation(++m_nGeneration);
    ASSERT_EQ(config.start(), 0);
    for (int n = 0; n < 10; ++n) convert(n, m_nGeneration);
    ASSERT_EQ(cvtEnd(), 0);
  });
}

// A start releases what the last good one has loaded, but not what a failed one has left: that is the end's.
TEST_F(LongLife, FailedStartsAddUpUntilTheEnd) {
  flat("failed starts", share(100), [this](int) {
    config.breakConverter();
    for (int i = 0; i < 5; ++i) ASSERT_EQ(config.start(), -1);
    test::clearLog();
    const long nHeap = footprint().nHeap;
    for (int i = 0; i < 5; ++i) ASSERT_EQ(config.start(), -1);
    test::clearLog();
    ASSERT_TRUE(footprint().nHeap > nHeap || !life::measuresHeap());
    ASSERT_EQ(cvtEnd(), 0);
  });
}

// The only memory that nothing refers to any more, named in leaks.supp and lsan.supp.
TEST_F(LongLife, NamesInOrderedListsAreLeftOnPurpose) {
  ASSERT_EQ(config.start(), 0);
  int nInfo = 0;
  StringList *const ptList = cvtStrAddStringListOrder(nullptr, cs("left"), &nInfo);
  ASSERT_NE(ptList, nullptr);
  EXPECT_STREQ(ptList->psString, "left");
}

}  // namespace
