#include "life_config.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <stdexcept>

#include "convert_xml.h"
#include "cvt.h"
#include "fix_config.h"
#include "xml_config.h"

namespace life {

namespace {

std::string orderDefinition() {
  using namespace test::fix;
  const auto tag = [](const char *psName, const char *psTag) {
    return field(psName, std::string("nTag=\"1\" psConst=\"") + psTag + "\"");
  };
  const std::string sAmount = "psType=\"number\" nDecimals=\"2\" nPoint=\"1\" psPad=\" \"";
  const FormatNode head = record("Head", "",
                                 {tag("HeadTag", "H"), field("OrderId", "nLen=\"8\" psType=\"number\""),
                                  field("Customer", "nLen=\"20\""), field("Kind", "nLen=\"1\"")});
  const FormatNode item =
      record("Item", "",
             {tag("ItemTag", "I"), field("Article", "nLen=\"8\""), field("Amount", "nLen=\"10\" " + sAmount),
              field("LotCount", "nLen=\"1\" psType=\"number\""),
              loop("Lots", "", {field("Lot", "nLen=\"4\"")}, "LotCount")});
  const FormatNode tail = record("Tail", "", {tag("TailTag", "T"), field("Total", "nLen=\"12\" " + sAmount)});
  return "<fix><Msg psMsgName=\"Order\">" +
         chain({head, loop("Items", "psUntil=\"tag\"", {item}), tail}, "ptHead") +
         "<FixMsg __ID=\"pInfo\" psSeparator=\"lf\" nWhole=\"1\"/></Msg></fix>";
}

std::string invoiceDefinition() {
  using namespace test::xmldoc;
  const auto text = [](const char *psNode, const char *psElement) {
    return field(psNode, std::string("psName=\"") + psElement + "\"");
  };
  const auto attribute = [](const char *psNode, const char *psName) {
    return field(psNode, std::string("psKind=\"attribute\" psName=\"") + psName + "\"");
  };
  const FormatNode lots = loop("InvoiceLots", "psName=\"lot\"", "", {attribute("No", "no")});
  const FormatNode lines = loop("Lines", "psName=\"line\"", "",
                                {attribute("LineArticle", "article"), text("LineAmount", "amount"), lots});
  return "<xml><Msg psMsgName=\"Invoice\"><XmlMsg __ID=\"pInfo\" psRoot=\"invoice\" nDeclaration=\"0\"/>" +
         chain(
             {attribute("Id", "id"), text("Buyer", "customer"), text("Sort", "kind"), text("Label", "label"),
              text("Terms", "terms"), text("Count", "count"), lines, text("Sum", "total")},
             "ptHead") +
         "</Msg></xml>";
}

// What the order's kind means is looked up, and what the order is worth is kept.
test::xml::Args statements() {
  using namespace test::xml;
  return {
      sql({value("select terms from kinds where kind = "), func("sqlQuote", {src("Kind")})}, {dst("Terms")}),
      sql({value("update audit set orders = orders + 1, cents = cents + cast(round(100 * "),
           func("sqlNumber", {src("Total")}), value(") as integer)")})};
}

std::string converter(int nGeneration) {
  using namespace test::xml;
  const Args sql = statements();
  const ArgXml lots = loopRule(src("Lots"), dst("InvoiceLots"), {copy(src("Lot"), dst("No"))});
  const ArgXml lines =
      loopRule(src("Items"), dst("Lines"),
               {copy(src("Article"), dst("LineArticle")), copy(src("Amount"), dst("LineAmount")), lots});
  const ArgXml kinds =
      mapping({src("Kind")},
              {tagged(value("A"), {copy(value("standard"), dst("Sort"))}),
               tagged(value("B"), {copy(value("express " + std::to_string(nGeneration)), dst("Sort"))})});
  const ArgXml special = cases({when({equal(src("Kind"), value("C")), equal(src("Kind"), value("D"))},
                                     {copy(value("special"), dst("Sort"))})});
  return test::xml::converter(
      "bill", "Order", "Invoice",
      {copy(src("OrderId"), dst("Id")), copy(src("Customer"), dst("Buyer")), kinds, special,
       copy(func("join", {src("OrderId"), value("/"), src("Customer")}), dst("Label")), sql[0], sql[1],
       copy(loopNum(src("Items")), dst("Count")), lines, copy(src("Total"), dst("Sum"))});
}

std::string root(const std::string &sLastPlug) {
  test::RootFile root;
  root.sAttributes = "nReload=\"1\"";
  root.sPlug = test::plugSection(
      {"psName=\"fix\"", "psName=\"xml\"", "psName=\"std\"", "psName=\"" + sLastPlug + "\""});
  root.sMessage = test::messageSection({"msg"});
  root.sConvert = "<Convert __ID=\"ptConvert\" psCvtPath=\"cvt\"/>";
  root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\" psIdInfoPath=\"idinfo\"/>";
  return root.text();
}

}  // namespace

LifeConfig::LifeConfig() : m_tRoot(std::time(nullptr)) {
  file("msg/Order.xml", orderDefinition());
  file("msg/Invoice.xml", invoiceDefinition());
  file("id/pipelines.xml", test::pipelines({{"fix", {"pubParse"}, {}},
                                            {"xml", {"pubParse"}, {"pubConvert", "pubGenerate"}},
                                            {"02", {}, {"pubGenerate"}}}));
  file("idinfo/choice.xml", test::xml::choices({{"Order", {{"xml", "bill"}}}}));
  generation(0);
}

void LifeConfig::generation(int nGeneration) {
  file("cvt/bill.xml", converter(nGeneration));
  writeRoot(root("life"));
}

void LifeConfig::breakRoot() {
  writeRoot("<AllInfo><AllInfo>");
}

void LifeConfig::breakPlug() {
  writeRoot(root("nowhere"));
}

void LifeConfig::breakConverter() {
  file("cvt/bill.xml",
       test::xml::converter("bill", "Order", "Invoice",
                            {test::xml::copy(test::xml::src("Nowhere"), test::xml::dst("Id"))}));
  writeRoot(root("life"));
}

int LifeConfig::start() {
  return cvtInit(arg());
}

// The library compares times in whole seconds, which would have to pass otherwise.
void LifeConfig::writeRoot(const std::string &sText) {
  file("All/root.xml", sText);
  const timespec times[] = {{++m_tRoot, 0}, {m_tRoot, 0}};
  if (utimensat(AT_FDCWD, path("All/root.xml").c_str(), times, 0) != 0)
    throw std::runtime_error("utimensat failed");
}

}  // namespace life
