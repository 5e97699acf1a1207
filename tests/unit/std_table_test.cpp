// Code tables: how their files are read.
#include "std_config.h"

namespace {

using namespace test::xml;

class StdTable : public test::StdTest {
 protected:
  void table(const std::string &sName, const std::string &sText) {
    tree.file("Table/" + sName + ".txt", sText);
  }

  void loadTables(const std::string &sMoreAttributes = "") {
    plugAttributes("psTablePath='Table' " + sMoreAttributes);
    load({callRule("lookUp", 2)});
  }
  std::string of(const std::string &sTable, const std::string &sKey) {
    from.set("A", sTable).set("B", sKey);
    return run() == 0 ? to.get("X") : "refused";
  }

  // The first lines of a start that fails on the tables.
  Texts refusal(const std::string &sMoreAttributes = "") {
    plugAttributes("psTablePath='Table' " + sMoreAttributes);
    convert("C", {});
    EXPECT_EQ(start(), -1);
    Texts lines = test::logTexts();
    lines.resize(2);
    again();
    return lines;
  }
  std::string place(const std::string &sName) const { return "File[" + tree.path("Table/" + sName + ".txt"); }
  std::string whole() const {
    return "Plug[std] File[" + tree.path("All/root.xml") +
           ":1]: expected code tables that can be read, found one that cannot. The line before says which.";
  }
};

TEST_F(StdTable, KeysHaveTheirValues) {
  table("Currency", "EUR\tEuro\nJPY\tYen\n");
  table("Country", "DE\tGermany\nJP\tJapan");
  loadTables();
  EXPECT_EQ(of("Currency", "EUR"), "Euro");
  EXPECT_EQ(of("Currency", "JPY"), "Yen");
  EXPECT_EQ(of("Country", "JP"), "Japan") << "the last line may have no end";
  EXPECT_EQ(of("Country", "EUR"), "refused");
}

TEST_F(StdTable, CommentsEmptyLinesAndEndsOfOtherSystemsAreLeftOut) {
  table("T", "\xEF\xBB\xBF# heading\r\n\r\na\t1\r\n#b\t2\r\nc\t 3 \r\n");
  loadTables();
  EXPECT_EQ(of("T", "a"), "1");
  EXPECT_EQ(of("T", "c"), " 3 ") << "blanks belong to the value";
  EXPECT_EQ(of("T", "#b"), "refused");
  EXPECT_EQ(of("T", "b"), "refused");
}

TEST_F(StdTable, ACarriageReturnAloneEndsNoLineAndIsRefused) {
  for (const std::string sText : {"DE\tGermany\rFR\tFrance\r", "# all\rDE\tGermany\r", "DE\tGermany\r\r\n"}) {
    table("T", sText);
    EXPECT_NE(refusal()[0].find(":1]: expected LF or CR LF between lines, found a CR alone at column "),
              std::string::npos)
        << sText;
  }
}

TEST_F(StdTable, TheFirstSeparatorEndsTheKey) {
  table("T", "a\t1\t2\n\tempty\nb\t\n");
  loadTables();
  EXPECT_EQ(of("T", "a"), "1\t2");
  EXPECT_EQ(of("T", ""), "empty");
  EXPECT_EQ(of("T", "b"), "");
}

TEST_F(StdTable, AnotherSeparatorMayBeOfSeveralCharacters) {
  table("T", "a => 1\nb\tc => 2\n");
  loadTables("psTableSeparator=' => '");
  EXPECT_EQ(of("T", "a"), "1");
  EXPECT_EQ(of("T", "b\tc"), "2");
}

TEST_F(StdTable, OtherFilesAreNoTables) {
  tree.file("Table/README.md", "no table");
  table("T", "a\t1\n");
  loadTables();
  EXPECT_EQ(of("T", "a"), "1");
  EXPECT_EQ(of("README", "a"), "refused");
  EXPECT_EQ(test::logTexts()[0].find("Func[lookUp] Arg[1] Len[6]: expected one of the tables T, found none"),
            0U);
}

TEST_F(StdTable, AKeyThatComesAgainIsRefused) {
  table("T", "a\t1\nb\t2\n\na\t1\n");
  EXPECT_EQ(refusal(),
            (Texts{place("T") + ":4]: expected a key that no line before has, found the one of line 1. "
                                "Remove one of them.",
                   whole()}));
}

TEST_F(StdTable, ALineWithoutSeparatorIsRefused) {
  table("T", "a\t1\nb 2\n");
  EXPECT_EQ(refusal()[0],
            place("T") +
                ":2]: expected a key, \"\\x09\" and a value, found no separator. A comment begins with #.");
}

TEST_F(StdTable, BytesThatAreNoTextAreRefused) {
  table("T", "a\t1\nb\t\xfc\n");
  EXPECT_EQ(
      refusal()[0],
      place("T") + ":2]: expected UTF-8, found a byte that is none at column 3. Write the file in UTF-8.");
}

TEST_F(StdTable, AllTablesTogetherAreNoLargerThanTheyMayBe) {
  table("A", "a\t12345\n");
  table("B", "a\t12345\n");
  loadTables("nTableBytes='16'");
  EXPECT_EQ(of("B", "a"), "12345");
  again();
  EXPECT_EQ(
      refusal("nTableBytes='15'")[0],
      place("B") +
          "]: expected 15 bytes in all tables at most, found more. Shorten them, or raise nTableBytes.");
}

TEST_F(StdTable, AFileThatCannotBeReadIsRefused) {
  tree.file("Table/T.txt/inside", "");
  EXPECT_EQ(refusal()[0], place("T") +
                              "]: expected 16777216 bytes in all tables at most, found a file that cannot be "
                              "read. Look at its permissions.");
}

TEST_F(StdTable, TheNamesOfManyTablesAreNotAllTold) {
  for (int i = 100; i < 200; ++i) table("Table" + std::to_string(i), "a\t1\n");
  loadTables();
  EXPECT_EQ(of("Table199", "a"), "1");
  EXPECT_EQ(of("T", "a"), "refused");
  const std::string sLine = test::logTexts()[0];
  EXPECT_NE(sLine.find("one of the tables Table100, Table101, "), std::string::npos) << sLine;
  EXPECT_NE(sLine.find(", ..., found none of that name"), std::string::npos) << sLine;
  EXPECT_LT(sLine.size(), 500U);
}

TEST_F(StdTable, ADirectoryThatIsNotThereIsRefused) {
  EXPECT_EQ(refusal()[0], "Plug[std] File[" + tree.path("All/root.xml") +
                              ":1]: expected a directory in psTablePath, found none at " +
                              tree.path("Table") +
                              ". A path that is not absolute counts from the configuration root.");
  table("T", "a\t1\n");
  EXPECT_EQ(refusal("psTableSeparator=''")[0],
            "Plug[std] File[" + tree.path("All/root.xml") +
                ":1]: expected at least one character in psTableSeparator, found none. Without the attribute "
                "it is a "
                "tab.");
}

TEST_F(StdTable, AreReadAnewWhenTheConfigurationIs) {
  table("T", "a\t1\n");
  loadTables();
  EXPECT_EQ(of("T", "a"), "1");
  table("T", "a\t2\n");
  EXPECT_EQ(of("T", "a"), "1") << "not before";
  again();
  loadTables();
  EXPECT_EQ(of("T", "a"), "2");
  again();
  plugAttributes("");
  load({callRule("lookUp", 2)});
  EXPECT_EQ(of("T", "a"), "refused");
  EXPECT_EQ(test::logTexts()[0],
            "Func[lookUp] Arg[1] Len[1]: expected a table, found none of that name. A table is a "
            "file NAME.txt in the directory psTablePath of the plug-in.");
}

}  // namespace
