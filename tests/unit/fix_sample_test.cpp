// The samples of the format `fix`: the order of its manual, and mainframe records with the values published
// for them.
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;

namespace {

const std::string kSamples = CVT2_SOURCE_DIR "/src/cvt/plug/fix/samples/";

std::string data(const std::string &sName) {
  return contentOf(kSamples + "data/" + sName);
}

class FixSample : public testing::Test {
 protected:
  void SetUp() override {
    for (const char *psName : {"Order", "Accounts", "Groups", "Amounts", "Parcel"}) {
      m_config.file(std::string("msg/") + psName + ".xml",
                    contentOf(kSamples + "Message/" + psName + ".xml"));
    }
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  FixConfig m_config;
};

std::string quotedText(const std::string &s) {
  return "\"" + s + "\"";
}

// A text or number of a message as a member of a JSON object; nothing for an empty number.
std::string number(const Record &message, const std::string &sKey, const std::string &sField) {
  const std::string sValue = get(message, sField);
  return sValue.empty() ? "" : ",\"" + sKey + "\":" + sValue;
}
std::string text(const Record &message, const std::string &sKey, const std::string &sField) {
  return ",\"" + sKey + "\":" + quotedText(get(message, sField));
}

std::vector<std::string> lines(const std::string &sText) {
  std::vector<std::string> all;
  std::istringstream in(sText);
  for (std::string s; std::getline(in, s);) all.push_back(s);
  return all;
}

// An account record as published: redefined fields shown as text are empty here.
std::string accountJson(const Record &record) {
  std::string s =
      "{\"ID\":" + get(record, "Id") +
      ",\"COMPANY\":{\"SHORT_NAME\":" + quotedText(get(record, "ShortName")) +
      ",\"COMPANY_ID_NUM\":" + get(record, "CompanyIdNum") +
      ",\"COMPANY_ID_STR\":\"\"},\"METADATA\":{\"CLIENTID\":" + quotedText(get(record, "ClientId")) +
      ",\"REGISTRATION_NUM\":" + quotedText(get(record, "RegistrationNum")) +
      ",\"NUMBER_OF_ACCTS\":" + get(record, "NumberOfAccts") + ",\"ACCOUNT\":{\"ACCOUNT_DETAIL\":[";
  for (int i = 0; at(record, "AccountDetail", i); ++i) {
    s += std::string(i == 0 ? "" : ",") +
         "{\"ACCOUNT_NUMBER\":" + quotedText(get(record, "AccountDetail.AccountNumber")) +
         ",\"ACCOUNT_TYPE_N\":" + get(record, "AccountDetail.AccountTypeN") + ",\"ACCOUNT_TYPE_X\":\"\"}";
  }
  return s + "]}}}";
}

std::string groupJson(const Record &record) {
  std::string s = "{\"RECORD\":{\"COUNT\":" + get(record, "Count") + ",\"GROUP\":[";
  for (int i = 0; at(record, "Group", i); ++i) {
    s += std::string(i == 0 ? "" : ",") + "{\"INNER_COUNT\":" + get(record, "Group.InnerCount") +
         ",\"INNER_GROUP\":[";
    for (int k = 0; k < cvtGetLoopTime(record.get(), test::cs("Group.InnerGroup")); ++k) {
      EXPECT_EQ(cvtSetLoopTime(record.get(), test::cs("Group.InnerGroup"), k), 0);
      s += std::string(k == 0 ? "" : ",") + "{\"FIELD\":" + quotedText(get(record, "InnerGroup.Field")) + "}";
    }
    s += "]}";
  }
  return s + "]}}";
}

}  // namespace

TEST_F(FixSample, OrderComesBack) {
  const std::string sBytes = data("order.dat");
  const Record order = parse("Order", sBytes);
  ASSERT_NE(order, nullptr) << told();
  EXPECT_EQ(get(order, "Customer"), "Zoë Müller");
  EXPECT_EQ(generate(order, sBytes.size()), sBytes);
}

TEST_F(FixSample, ParcelComesBack) {
  const std::string sBytes = data("parcel.dat");
  const Record parcel = parse("Parcel", sBytes);
  ASSERT_NE(parcel, nullptr) << told();
  EXPECT_EQ(get(parcel, "Label").size(), 34U);
  EXPECT_EQ(get(parcel, "Remark"), "fragile");
  EXPECT_EQ(get(parcel, "Tail"), std::string("\0end", 4));
  EXPECT_EQ(generate(parcel, sBytes.size()), sBytes);
}

TEST_F(FixSample, AccountsAreThosePublished) {
  const std::string sBytes = data("accounts.bin");
  const std::vector<std::string> expected = lines(data("accounts.expected.jsonl"));
  ASSERT_EQ(sBytes.size(), expected.size() * 2202);
  ASSERT_EQ(expected.size(), 10U);
  for (size_t i = 0; i < expected.size(); ++i) {
    const std::string sRecord = sBytes.substr(i * 2202, 2202);
    const Record record = parse("Accounts", sRecord);
    ASSERT_NE(record, nullptr) << told();
    EXPECT_EQ(accountJson(record), expected[i]);
    EXPECT_EQ(generate(record, sRecord.size()), sRecord);
  }
}

TEST_F(FixSample, GroupsAreThosePublished) {
  const std::string sBytes = data("groups.dat");
  size_t nAt = 0;
  for (const std::string &sExpected : lines(data("groups.expected.jsonl"))) {
    const Record record = parse("Groups", sBytes.substr(nAt));
    ASSERT_NE(record, nullptr) << told();
    EXPECT_EQ(groupJson(record), sExpected);
    const std::string sRecord = sBytes.substr(nAt, static_cast<size_t>(record->nNowLen));
    EXPECT_EQ(generate(record), sRecord);
    nAt += sRecord.size();
  }
  EXPECT_EQ(nAt, sBytes.size());
}

TEST_F(FixSample, AmountsAreThosePublished) {
  const std::string sBytes = data("amounts.bin");
  const std::vector<std::string> expected = lines(data("amounts.expected.jsonl"));
  ASSERT_EQ(expected.size(), 7U);
  for (size_t i = 0; i < 6; ++i) {
    const std::string sRecord = sBytes.substr(i * 80, 80);
    const Record record = parse("Amounts", sRecord);
    ASSERT_NE(record, nullptr) << told();
    // The blank amount of the sixth record is published as 0.00; here it is empty, as the other blank numbers
    // are.
    const std::string sFraction = number(record, "WS_AMOUNT_FRACTION", "AmountFraction");
    EXPECT_EQ("{\"File_Id\":0,\"Record_Id\":" + std::to_string(i) + number(record, "WS_DATE_NUM", "DateNum") +
                  text(record, "WS_DATE_ALPHA", "DateAlpha") + text(record, "WS_ACCT_ALPHA", "AcctAlpha") +
                  number(record, "WS_AMOUNT_NUMERIC", "AmountNumeric") +
                  (i == 5 ? ",\"WS_AMOUNT_FRACTION\":0.00" : sFraction) +
                  text(record, "WS_NAME_ALPHABET", "NameAlphabet") +
                  number(record, "WS_AMOUNT_FRACTION2", "AmountFraction2") + "}",
              expected[i]);
    EXPECT_EQ(sFraction.empty(), i == 5);
    EXPECT_EQ(generate(record, sRecord.size()), sRecord);
  }
}

TEST_F(FixSample, LettersInANumberAreRefused) {
  test::clearLog();
  EXPECT_EQ(parse("Amounts", data("amounts.bin").substr(480, 80)), nullptr);
  EXPECT_NE(fault().find("Msg[Amounts] Field[DateNum] Offset[0]: expected digits"), std::string::npos)
      << fault();
}
