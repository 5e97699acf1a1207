// Check digits, digests and masks.
#include "std_call.h"

namespace {

using test::errorOf;
using test::resultOf;

// --- Check digits --------------------------------------------------------------------------------------------

TEST(StdLuhn, EveryWrongDigitIsSeen) {
  for (const std::string sNumber : {"4111111111111111", "378282246310005", "79927398713", "18", "0"}) {
    if (sNumber.size() > 1) {
      EXPECT_EQ(resultOf("luhnCheck", {sNumber}), "1") << sNumber;
    }
    for (size_t i = 0; i < sNumber.size(); ++i) {
      for (char c = '0'; c <= '9'; ++c) {
        std::string sOther = sNumber;
        sOther[i] = c;
        EXPECT_EQ(resultOf("luhnCheck", {sOther}), sOther == sNumber && sNumber.size() > 1 ? "1" : "0")
            << sOther;
      }
    }
  }
}

TEST(StdLuhn, NeighboursThatWereSwappedAreSeenButNineAndZero) {
  for (int n = 1000; n < 2000; ++n) {
    const std::string sBody = std::to_string(n * 7919);
    const std::string sNumber = sBody + resultOf("luhnDigit", {sBody});
    ASSERT_EQ(resultOf("luhnCheck", {sNumber}), "1") << sNumber;
    for (size_t i = 0; i + 1 < sNumber.size(); ++i) {
      std::string sOther = sNumber;
      std::swap(sOther[i], sOther[i + 1]);
      const std::string sPair = sNumber.substr(i, 2);
      const bool bSame = sPair == "09" || sPair == "90" || sPair[0] == sPair[1];
      EXPECT_EQ(resultOf("luhnCheck", {sOther}), bSame ? "1" : "0") << sOther;
    }
  }
}

TEST(StdMod97, EveryWrongCharacterAndEverySwapIsSeen) {
  const std::string sAll = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  for (const std::string sIban :
       {"DE89370400440532013000", "GB82WEST12345698765432", "MT84MALT011000012345MTLCAST001S",
        "NO9386011117947", "FR1420041010050500013M02606", "SA0380000000608010167519"}) {
    ASSERT_EQ(resultOf("ibanCheck", {sIban}), "1") << sIban;
    const std::string sDigits = resultOf("mod97Digits", {sIban.substr(4) + sIban.substr(0, 2)});
    EXPECT_EQ(sDigits, sIban.substr(2, 2));
    EXPECT_EQ(resultOf("mod97Check", {sIban.substr(4) + sIban.substr(0, 4)}), "1");
    for (size_t i = 0; i < sIban.size(); ++i) {
      for (const char c : sAll) {
        std::string sOther = sIban;
        sOther[i] = c;
        const bool bSameKind = isdigit(c) == isdigit(sIban[i]);
        if (bSameKind) {
          EXPECT_EQ(resultOf("ibanCheck", {sOther}), sOther == sIban ? "1" : "0") << sOther;
        }
      }
      std::string sOther = sIban;
      if (i + 1 < sIban.size()) std::swap(sOther[i], sOther[i + 1]);
      const bool bSameKind = i + 1 == sIban.size() || isdigit(sIban[i]) == isdigit(sIban[i + 1]);
      if (bSameKind) {
        EXPECT_EQ(resultOf("ibanCheck", {sOther}), sOther == sIban ? "1" : "0") << sOther;
      }
    }
  }
}

TEST(StdMod97, OnlyTheFormOfAnIbanIsOne) {
  for (const std::string sText :
       {"", "D", "DE", "DE89", "de89370400440532013000", "DE89 370400440532013000", "8937040044",
        "D889370400440532013000", "DEX9370400440532013000", "DE8937040044053201300\xc3\x96"}) {
    EXPECT_EQ(resultOf("ibanCheck", {sText}), "0") << sText;
  }
  EXPECT_EQ(resultOf("ibanCheck", {"DE89" + std::string(31, '0')}), "0") << "too long";
  EXPECT_EQ(resultOf("ibanCheck", {std::string(1'000'000, 'A')}), "0");
  int nRight = 0;
  for (int n = 0; n < 100; ++n) {
    const std::string sCheck = std::to_string(100 + n).substr(1);
    nRight += resultOf("ibanCheck", {"XX" + sCheck + "0"}) == "1" ? 1 : 0;
  }
  EXPECT_EQ(nRight, 1) << "97 remainders, one pair of digits each";
}

TEST(StdMod97, ACodeHasNoOtherDigitsThanThoseThatAreMade) {
  for (const std::string sCode : {"97", "194", "793", "A", "0"}) {
    const std::string sDigits = resultOf("mod97Digits", {sCode});
    for (int i = 0; i < 100; ++i) {
      const std::string sTwo = std::to_string(100 + i).substr(1);
      EXPECT_EQ(resultOf("mod97Check", {sCode + sTwo}), sTwo == sDigits ? "1" : "0") << sCode << " " << sTwo;
    }
  }
}

TEST(StdMod97, LongCodesAreCountedOn) {
  const std::string sLong(1'000'000, '7');
  const std::string sDigits = resultOf("mod97Digits", {sLong});
  EXPECT_EQ(resultOf("mod97Check", {sLong + sDigits}), "1");
  EXPECT_EQ(resultOf("mod97Digits", {""}), "refused");
  EXPECT_EQ(resultOf("mod97Digits", {"A B"}), "refused");
  EXPECT_EQ(resultOf("mod97Check", {""}), "0");
  EXPECT_EQ(resultOf("mod97Check", {"01"}), "0") << "nothing but check digits";
}

TEST(StdWeights, AreCountedFromTheRight) {
  for (int n = 1; n < 400; ++n) {
    const std::string sBody = std::to_string(n * 104729);
    int nSum = 0;
    for (size_t i = 0; i < sBody.size(); ++i) {
      const int weights[] = {7, 3, 1};
      nSum += (sBody[sBody.size() - 1 - i] - '0') * weights[i % 3];
    }
    EXPECT_EQ(resultOf("mod10Digit", {sBody, "137"}), std::to_string((10 - nSum % 10) % 10));
    const int nEleven = (11 - nSum % 11) % 11;
    const std::string sEleven = nEleven == 10 ? "X" : std::to_string(nEleven);
    EXPECT_EQ(resultOf("mod11Digit", {sBody, "137"}), sEleven);
    EXPECT_EQ(resultOf("mod11Check", {sBody + sEleven, "137"}), "1");
    EXPECT_EQ(resultOf("mod11Check", {sBody + (sEleven == "0" ? "1" : "0"), "137"}), "0");
  }
  EXPECT_EQ(resultOf("mod10Check", {"", "137"}), "0");
  EXPECT_EQ(resultOf("mod10Check", {"5", "137"}), "0") << "nothing but a check digit";
  EXPECT_EQ(resultOf("mod10Check", {"1X", "1"}), "0");
  EXPECT_EQ(resultOf("mod10Check", {"12", "x"}), "refused");
}

// --- Digests -------------------------------------------------------------------------------------------------

TEST(StdDigest, IsThatOfTheStandards) {
  const std::string sTwoBlocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
  EXPECT_EQ(resultOf("sha256", {sTwoBlocks}),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(resultOf("sha1", {sTwoBlocks}), "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
  const std::string sMillion(1'000'000, 'a');
  EXPECT_EQ(resultOf("sha256", {sMillion}),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
  EXPECT_EQ(resultOf("sha1", {sMillion}), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
  EXPECT_EQ(resultOf("sha512", {sMillion}),
            "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973eb"
            "de0ff244877ea60a4cb0432ce577c31beb009c5c2c49aa2e4eadb217ad8cc09b");
  EXPECT_EQ(resultOf("md5", {"message digest"}), "f96b697d7cb7938d525a2f31aaf161d0");
  EXPECT_EQ(resultOf("md5", {""}), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(StdDigest, AuthenticationCodesAreThoseOfRfc4231) {
  EXPECT_EQ(resultOf("hmacSha256", {"Hi There", std::string(20, '\x0b')}),
            "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
  EXPECT_EQ(resultOf("hmacSha256", {std::string(50, '\xdd'), std::string(20, '\xaa')}),
            "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe");
  EXPECT_EQ(resultOf("hmacSha256",
                     {"Test Using Larger Than Block-Size Key - Hash Key First", std::string(131, '\xaa')}),
            "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
}

// One bit at a time.
std::string crc32Of(const std::string &sBytes) {
  uint32_t remainder = 0xFFFFFFFF;
  for (const char c : sBytes) {
    remainder ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit)
      remainder = (remainder & 1) != 0 ? remainder >> 1 ^ 0xEDB88320 : remainder >> 1;
  }
  char s[16];
  snprintf(s, sizeof s, "%08x", remainder ^ 0xFFFFFFFF);
  return s;
}

TEST(StdDigest, ACheckSumIsThatOfEachBit) {
  std::string sBytes;
  for (int i = 0; i < 600; ++i) {
    EXPECT_EQ(resultOf("crc32", {sBytes}), crc32Of(sBytes));
    sBytes += static_cast<char>(i * 37);
  }
}

// --- Masks ---------------------------------------------------------------------------------------------------

TEST(StdMask, NeverShowsMoreThanItShould) {
  const std::string sText = "abcdefghij";
  for (size_t nLength = 0; nLength <= sText.size(); ++nLength) {
    for (size_t nFirst = 0; nFirst <= 12; ++nFirst) {
      for (size_t nLast = 0; nLast <= 12; ++nLast) {
        const std::string s = sText.substr(0, nLength);
        std::string sWanted(nLength, '*');
        if (nFirst + nLast < nLength) {
          sWanted =
              s.substr(0, nFirst) + std::string(nLength - nFirst - nLast, '*') + s.substr(nLength - nLast);
        }
        EXPECT_EQ(resultOf("mask", {s, std::to_string(nFirst), std::to_string(nLast)}), sWanted);
      }
    }
  }
}

TEST(StdMask, CountsCharacters) {
  const std::string sText = "\xc3\x84\xe2\x82\xac\xf0\x9f\x98\x80z";
  EXPECT_EQ(resultOf("mask", {sText, "1", "1"}), "\xc3\x84**z");
  EXPECT_EQ(resultOf("mask", {sText, "0", "2", "\xe2\x80\xa2"}), "\xe2\x80\xa2\xe2\x80\xa2\xf0\x9f\x98\x80z");
  EXPECT_EQ(resultOf("mask", {sText, "4", "0"}), "****");
  EXPECT_EQ(resultOf("mask", {"a\xff", "1", "0"}), "refused");
  EXPECT_EQ(resultOf("mask", {"abc", "1", "0", "**"}), "refused");
  EXPECT_EQ(resultOf("mask", {"abc", "-1", "0"}), "refused");
}

TEST(StdMask, OfACardNumberShowsTen) {
  for (size_t n = 0; n < 25; ++n) {
    const std::string sPan = std::string("1234567890123456789012345").substr(0, n);
    const std::string sMasked = resultOf("maskPan", {sPan});
    if (n < 12 || n > 19) {
      EXPECT_EQ(sMasked, "refused") << n;
    } else {
      EXPECT_EQ(sMasked, sPan.substr(0, 6) + std::string(n - 10, '*') + sPan.substr(n - 4));
    }
  }
  EXPECT_EQ(resultOf("maskPan", {"4111111111111111", "#"}), "411111######1111");
  EXPECT_EQ(errorOf("maskPan", {"4111-1111-1111-1111"}).find("4111"), std::string::npos);
}

}  // namespace
