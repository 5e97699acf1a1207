// csv_messages.cpp: bytes as messages of the definitions of the format csv that the examples have, and of some
// that delimit in every other way. What is read is written and read again.
#include "csv_config.h"
#include "support/library.h"
#include "support/target.h"

namespace {

using namespace test::csvtext;

void add(fuzz::Configuration &config, const std::string &name, const std::string &attributes,
         const std::vector<FormatNode> &nodes) {
  config.file("Message/" + name + ".xml", "<csv><Msg psMsgName=\"" + name + "\"><CsvMsg __ID=\"pInfo\" " +
                                              attributes + "/>" + chain(nodes, "ptHead") + "</Msg></csv>");
}

const FormatNode kLast = field("LastLine", "psKind=\"end\"");

void addTables(fuzz::Configuration &config) {
  const std::vector<FormatNode> columns = {
      field("A"), field("B", "nKeepEmpty=\"2\""),
      group("G", "", {field("C", "nMaxLen=\"9\" psQuoting=\"always\"")})};
  const std::vector<FormatNode> table = {rows(columns), kLast};
  add(config, "Names", "psHeader=\"names\" psUnknown=\"skip\" nShort=\"1\" nMaxColumns=\"9\"", table);
  add(config, "Notes",
      "psLineEnd=\"any\" psComment=\"#\" psBlankLines=\"skip\" psInnerQuote=\"keep\" "
      "psByteOrderMark=\"write\"",
      {rows(columns), kLast, field("LineEnds", "psKind=\"line-end\"")});
  add(config, "Pairs", "psSeparator=\"::\" psQuote=\"'\" psEscape=\"\\\" psLineEnd=\"crlf\"", table);
  add(config, "Tabs", "psSeparator=\"&#9;\" psQuote=\"\" psEscape=\"\\\" psQuoting=\"always\"", table);
  add(config, "Limited", "psHeader=\"ignore\" nMaxField=\"8\" nMaxRecord=\"20\" psLastLineEnd=\"none\"",
      {rows(fields({"A", "B", "C"})), kLast});
  add(config, "Always", "psQuoting=\"always\" psLastLineEnd=\"required\" psHeader=\"order\"", table);
  add(config, "First", "nWhole=\"0\"", columns);
  add(config, "Gb", "psCharset=\"GB18030\" psLineEnd=\"any\"", table);
  add(config, "Shift", "psCharset=\"SHIFT_JIS\"", table);
  add(config, "Ebcdic", "psCharset=\"IBM037\"", table);
  add(config, "Wide", "psCharset=\"UTF-16LE\" psHeader=\"order\"", table);
}

void addRecords(fuzz::Configuration &config) {
  add(config, "Nested", "psContinuation=\"8\"",
      {record("H", "psTag=\"H\" nMandatory=\"1\"",
              {field("HA"), field("HB"), field("HW", "psKind=\"wraps\"")}),
       loop("Bs", "CsvRecord", "psTag=\"B\"", "nMax=\"4\"",
            {field("Kind"),
             group("What", "psKind=\"choice\" psSelect=\"Kind\" psNone=\"Z|\"",
                   {group("D", "psWhen=\"D\"",
                          {field("N"), loop("Ds", "CsvGroup", "", "", {field("X"), field("Y")}, "N")}),
                    field("V", "psWhen=\"V|W\"")}),
             loop("Is", "CsvRecord", "psTag=\"I\"", "",
                  {loop("Rests", "CsvField", "psKind=\"rest\"", "", {})}),
             record("S", "psTag=\"S\"", {field("SA", "nMandatory=\"1\"")})}),
       kLast});
  add(config, "Mixed", "nShort=\"1\"",
      {record("H", "psTag=\"H\" nMandatory=\"1\"",
              {field("N", "nLen=\"1\" psPad=\"0\""), loop("L", "CsvField", "", "", {}, "N")}),
       rows({field("A", "nLen=\"2\" psPad=\" \""), field("B")})});
  add(config, "Lines", "", {rows({field("A", "psKind=\"rest\"")})});
  add(config, "Joined", "psTagFront=\"{\" psTagBack=\"}\" psQuote=\"\"",
      {record("A", "psTag=\"1\" nMandatory=\"1\"", {field("AA")}),
       record("B", "psTag=\"2\"", {field("BA", "nLen=\"2\""), field("BB", "psKind=\"rest\"")})});
  add(config, "OneLine",
      "psLineEnd=\"none\" psRecordEnd=\"'\" psSeparator=\"+\" psQuote=\"\" psEscape=\"?\" psOrder=\"any\"",
      {record("A", "psTag=\"A\" nMandatory=\"1\" nShort=\"1\"", fields({"AA", "AB"}, "nKeepEmpty=\"2\"")),
       loop("C", "CsvRecord", "psTag=\"C\"", "", fields({"CA", "CB"}))});
  add(config, "Braces",
      "psSeparator=\"*\" nTerminated=\"1\" psQuote=\"\" psTagFront=\"{\" psTagBack=\"}\" nShort=\"1\" "
      "psLineEnd=\"none\"",
      {record("A", "psTag=\"1\"",
              {field("AA", "nLen=\"2\""), field("AB", "nLen=\"3\" psPad=\" \""), field("AC")}),
       record("B", "psTag=\"2\"",
              {field("BA", "nKeepEmpty=\"2\""), field("BB"), field("BC", "nLen=\"1\"")})});
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  static const bool started = [] {
    for (const char *const table : {"Abc", "Places"}) {
      config.add("examples/csv-spectrum/Message/" + std::string(table) + ".xml", "Message");
    }
    config.add("examples/bai2/Message", "Message");
    config.add("examples/fedwire/Message/FedWire.xml", "Message");
    addTables(config);
    addRecords(config);
    return config.start();
  }();
  fuzz::require(started, "the library starts");
  for (const std::string &name : fuzz::definitions()) fuzz::expectRoundTrip(name, fuzz::text(data, size));
  return 0;
}
