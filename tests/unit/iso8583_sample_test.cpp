// Real messages through the definitions beside the plug-in.
#include <gtest/gtest.h>

#include <filesystem>

#include "iso_config.h"

using namespace test::iso;

namespace {

const std::string kSamples = CVT2_SOURCE_DIR "/src/cvt/plug/iso8583/samples/";

using Values = std::vector<std::pair<std::string, std::string>>;

class IsoSamples : public testing::Test {
 protected:
  void SetUp() override {
    for (const auto &file : std::filesystem::directory_iterator(kSamples + "Message")) {
      m_config.file("msg/" + file.path().filename().string(), contentOf(file.path()));
    }
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // The file has these values and comes back byte for byte.
  static Wire expectFile(const std::string &sName, const std::string &sFile, const Values &values) {
    const std::string s = contentOf(kSamples + "data/" + sFile);
    Wire wire = parse(sName, s);
    EXPECT_NE(wire, nullptr) << sFile << told();
    if (wire == nullptr) return wire;
    EXPECT_EQ(wire->nNowLen, static_cast<int>(s.size()));
    for (const auto &[sField, sValue] : values)
      EXPECT_EQ(get(wire, sField), sValue) << sFile << " " << sField;
    EXPECT_EQ(generate(wire), s) << told();
    return wire;
  }

  static void expectRefused(const std::string &sName, const std::string &sFile, const std::string &sTold) {
    test::clearLog();
    EXPECT_EQ(parse(sName, contentOf(kSamples + "data/bad/" + sFile)), nullptr);
    EXPECT_EQ(fault(), "Msg[" + sName + "] Field[" + sTold);
  }

  IsoConfig m_config;
};

TEST_F(IsoSamples, AReversalWithAnEmptyElement) {
  const Wire wire = expectFile("Iso1987", "ascii-1987/iso_reversal_message.dat",
                               {{"Mti", "0400"},
                                {"De1", std::string(25, '0') + "1" + std::string(38, '0')},
                                {"De2", "1111111110000000000"},
                                {"De3", "180000"},
                                {"De13", "0909"},
                                {"De32", ""},
                                {"De42", "00003430003948 "},
                                {"De48", "08110012000004096565733200000003000001"},
                                {"De55", "003317000394809080646510000000"},
                                {"De63", "132"},
                                {"De90", "020000331609080645190000000020000000000000"}});
  int nError = 0;
  EXPECT_NE(cvtGetNameValue(wire.get(), test::cs("De32"), &nError)->psValue, nullptr);
  EXPECT_EQ(cvtGetNameValue(wire.get(), test::cs("De33"), &nError)->psValue, nullptr);
}

TEST_F(IsoSamples, AFinancialTransaction) {
  expectFile("Iso1987", "ascii-1987/financial_transaction_message.dat",
             {{"Mti", "0200"},
              {"De3", "380000"},
              {"De4", "000000000000"},
              {"De7", "0420050805"},
              {"De11", "011392"},
              {"De12", "120805"},
              {"De13", "0420"},
              {"De15", "0422"},
              {"De18", "5132"},
              {"De32", "2000001"},
              {"De37", "000000115604"},
              {"De42", "0800411        "},
              {"De48", "511463331563"},
              {"De49", "360"},
              {"De60", "99"}});
}

TEST_F(IsoSamples, NumbersInBcd) {
  expectFile(
      "NetworkBcd", "ascii-1987/message_with_number_bcd_encoding.dat",
      {{"Mti", "0800"}, {"TransmissionTime", "0420090613"}, {"Trace", "900001"}, {"LocalTime", "090613"}});
}

TEST_F(IsoSamples, ALengthInBcdAtEitherSide) {
  for (const auto &[sName, sFile] :
       {std::pair<const char *, const char *>{"NetworkLeft", "message_with_hex_bcd"},
        {"NetworkRight", "message_with_hex_rbcd"}}) {
    expectFile(sName, "ascii-1987/" + std::string(sFile) + ".dat",
               {{"TransmissionTime", "0420090613"},
                {"Trace", "900001"},
                {"LocalTime", "090613"},
                {"LocalDate", "0420"},
                {"SettlementDate", "0420"},
                {"Additional", "00000000"}});
  }
  test::clearLog();
  EXPECT_EQ(parse("NetworkRight", contentOf(kSamples + "data/ascii-1987/message_with_hex_bcd.dat")), nullptr);
}

TEST_F(IsoSamples, AnAuthorizationWithChipData) {
  expectFile("Card", "card/0100-auth-request.bin",
             {{"Pan", "4111111111111111"},
              {"Expiry", "2912"},
              {"Track2", "4111111111111111D29122011234567890"},
              {"Reference", "REF123456789"},
              {"Additional", "LOYALTY=OFF|INSTALLMENT=00"},
              {"Private62", "ORDERID=000123|CHANNEL=ECOM"},
              {"Template", "3900"},
              {"AmountAuthorized", "000000005000"},
              {"TransactionDate", "260604"},
              {"DeviceSerial", "TEST1234"},
              {"TagOrder",
               "82 84 95 9A 9C 5F2A 9F02 9F03 9F09 9F10 9F1A 9F1E 9F26 9F27 9F33 9F34 9F35 9F36 9F37 9F41"}});
  expectFile("Card", "card/0110-auth-response.bin",
             {{"Response", "00"},
              {"Authorization", "A12345"},
              {"OtherTags", "71061122334455667203AABBCC8A0230309108A1B2C3D4E5F60708"}});
  expectFile("Card", "card/0100-auth-request-unknown-tlv.bin",
             {{"Tvr", "8000008000"}, {"Atc", "0034"}, {"OtherTags", "DF812904AABBCCDD"}});
  expectFile("Card", "card/0800-network-echo.bin",
             {{"NetworkId", "001"},
              {"Terminal", "TERMNET1"},
              {"Additional", "HEARTBEAT=BASEI"},
              {"Network", "301"}});
}

TEST_F(IsoSamples, TheSameChipDataAsALoop) {
  const Values tags[] = {
      {{"82", "3900"},
       {"95", "8000008000"},
       {"9F02", "000000005000"},
       {"9F36", "0034"},
       {"DF8129", "AABBCCDD"}},
      {{"71", "112233445566"}, {"72", "AABBCC"}, {"8A", "3030"}, {"91", "A1B2C3D4E5F60708"}}};
  const char *const files[] = {"card/0100-auth-request-unknown-tlv.bin", "card/0110-auth-response.bin"};
  for (size_t i = 0; i < 2; ++i) {
    const Wire wire = expectFile("CardTags", files[i], {});
    ASSERT_EQ(cvtGetLoopTime(wire.get(), test::cs("Tags")), static_cast<int>(tags[i].size()));
    for (size_t k = 0; k < tags[i].size(); ++k) {
      cvtSetLoopTime(wire.get(), test::cs("Tags"), static_cast<int>(k));
      EXPECT_EQ(get(wire, "Tags.Tag"), tags[i][k].first);
      EXPECT_EQ(get(wire, "Tags.TagValue"), tags[i][k].second);
    }
  }
  EXPECT_EQ(cvtGetLoopTime(expectFile("CardTags", "card/0100-auth-request.bin", {}).get(), test::cs("Tags")),
            20);
}

TEST_F(IsoSamples, TracesOfATerminal) {
  struct Case {
    const char *psFile;
    const char *psMti;
    const char *psTime;
    const char *psTerminal;
    const char *psCurrency;
    const char *psAtc;
    const char *psCryptogram;
    const char *psMac;
  };
  for (const Case &one : {Case{"request-1", "0100", "130746", "72810727", "000554", "0002",
                               "ABF56CD3FE014691", "80FB32F3FFFFFFFF"},
                          Case{"response-1", "0110", "130746", "72810727", "0554", "0002", "ABF56CD3FE014691",
                               "80FB32F3FFFFFFFF"},
                          Case{"request-2", "0100", "130811", "52364725", "000554", "0003",
                               "1101468D46FBAF76", "8BE6CB37FFFFFFFF"},
                          Case{"response-2", "0110", "130811", "52364725", "0554", "0003", "1101468D46FBAF76",
                               "8BE6CB37FFFFFFFF"}}) {
    const std::string sFile = one.psFile;
    expectFile("Terminal", "terminal/" + sFile + ".bin",
               {{"Header", "DemoJMeter"},
                {"Mti", one.psMti},
                {"TransmissionTime", "0209" + std::string(one.psTime)},
                {"Response", sFile.substr(0, 8) == "response" ? "00" : ""},
                {"TerminalId", one.psTerminal},
                {"Name", "NAME"},
                {"City", "CITY"},
                {"Country", "NZ"},
                {"AmountAuthorized", "000000001000"},
                {"TerminalCountry", "0554"},
                {"TransactionCurrency", one.psCurrency},
                {"Pan", "4111111111111111"},
                {"Atc", one.psAtc},
                {"Cryptogram", one.psCryptogram},
                {"Mac", one.psMac}});
  }
}

TEST_F(IsoSamples, AMessageWithEverythingInEbcdic) {
  const Wire wire = expectFile("Host", "host/request.bin",
                               {{"Tpdu", "6000030000"},
                                {"Bitmaps", "D00400102861161D80000000040000004000000000000000"},
                                {"Amount", "12345"},
                                {"Fee", "D00000150"},
                                {"Track2", "4111111111111111=29122011234567890123"},
                                {"Flags", "1010010100001111"},
                                {"Holder", "AB"},
                                {"TagOrder", "9F02 70 DF8101"},
                                {"Counted", "12345"},
                                {"Private", "Zo\xC3\xAB"}});
  EXPECT_EQ(cvtGetLoopTime(wire.get(), test::cs("Amounts")), 2);
  EXPECT_EQ(cvtGetLoopTime(wire.get(), test::cs("Tags")), 2);
}

TEST_F(IsoSamples, BadMessagesAreRefused) {
  expectRefused("Iso1987", "error_message.dat",
                "De55] Offset[185]: expected 30 bytes, found 21 and the end.");
  expectRefused("Iso1987", "iso_reversal_message_error_date.dat",
                "De13] Offset[97]: expected a month from 01 to 12, found \"9099\". See psDate.");
}

// Whether a message type may lack an element, or have it, is said by a definition of its own.
TEST_F(IsoSamples, AnAdviceHasItsElementsAndNoOthers) {
  for (const char *const psFile : {"missing", "unexpected"}) {
    const std::string s =
        contentOf(kSamples + "data/bad/iso_reversal_message_advice_" + std::string(psFile) + "_field.dat");
    const Wire wire = parse("Iso1987", s);
    EXPECT_EQ(generate(wire), s) << told();
  }
  expectRefused("Iso0420", "iso_reversal_message_advice_missing_field.dat",
                "LocalDate] Offset[4]: expected data element 13, found none. It is mandatory.");
  expectRefused(
      "Iso0420", "iso_reversal_message_advice_unexpected_field.dat",
      "] Offset[4]: expected bits of data elements that the definition has, found that of data element 14. "
      "Define it, or a field of psKind rest for what begins with an unknown one.");
}

}  // namespace
