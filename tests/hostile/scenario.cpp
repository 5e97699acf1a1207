#include "scenario.h"

#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace hostile {

namespace {

namespace fs = std::filesystem;

const std::string kSource = CVT2_SOURCE_DIR "/";
const std::string kFix = "src/cvt/plug/fix/samples/";
const std::string kXml = "src/cvt/plug/xml/samples/";

std::string content(const fs::path &file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  if (!in) throw std::runtime_error("cannot read " + file.string());
  return all.str();
}

std::string source(const std::string &sFile) {
  return content(kSource + sFile);
}

// The plug-ins of this build.
std::string withPlugins(std::string sRoot) {
  const std::string sSection = "__ID=\"ptPlug\"";
  const size_t nAt = sRoot.find(sSection);
  if (nAt != std::string::npos) {
    sRoot.insert(nAt + sSection.size(), " psBasePlugPath=\"" CVT2_PLUGIN_DIR "/\"");
  }
  return sRoot;
}

// A database as the example's own schema makes it.
void makeShop(const std::string &sFile) {
  sqlite3 *db = nullptr;
  char *psError = nullptr;
  const std::string sSchema = source("examples/lookup/schema.sql");
  if (sqlite3_open(sFile.c_str(), &db) != SQLITE_OK ||
      sqlite3_exec(db, sSchema.c_str(), nullptr, nullptr, &psError) != SQLITE_OK) {
    throw std::runtime_error("cannot make " + sFile + ": " + (psError == nullptr ? "" : psError));
  }
  sqlite3_close(db);
}

Scenario lookup() {
  Scenario scenario("lookup", "examples/lookup",
                    {{"Order", "order", "invoice", source("examples/lookup/data/order.dat")}});
  const std::string sShop = scenario.tree().path("shop.db");
  makeShop(sShop);
  setenv("VEL_DBS_URL", ("sqlite:" + sShop).c_str(), 1);
  return scenario;
}

Scenario payments() {
  Scenario scenario("xml payments", kXml + "order",
                    {{"Pacs008", "xml", "", source(kXml + "pacs008/pacs008.xml")},
                     {"Camt053", "xml", "", source(kXml + "camt/camt053.v2.minimal.xml")},
                     {"Order", "xml", "", source(kXml + "order/order.xml")}});
  std::string sPipelines =
      source(kFix + "Id/pipelines.xml");  // the sample has none that writes in its own format
  sPipelines.replace(sPipelines.find("\"fix\""), 5, "\"xml\"");
  scenario.add("Id/pipelines.xml", sPipelines);
  for (const char *psName : {"Pacs008", "Camt053"}) {
    scenario.add(std::string("Message/") + psName + ".xml", source(kXml + "definitions/" + psName + ".xml"));
  }
  return scenario;
}

Scenario reversal() {
  const std::string sData = "examples/iso8583/data/iso_reversal_message.";
  return Scenario("iso8583", "examples/iso8583",
                  {{"IsoReversal", "iso", "json", source(sData + "dat")},
                   {"JsonReversal", "json", "xml", source(sData + "json")},
                   {"XmlReversal", "xml", "iso", source(sData + "xml")}});
}

std::string firstLine(const std::string &s) {
  return s.substr(0, s.find('\n'));
}

}  // namespace

Scenario::Scenario(std::string sName, const std::string &sFolder, std::vector<Job> jobs)
    : m_name(std::move(sName)), m_jobs(std::move(jobs)), m_tree(std::make_unique<test::ConfigTree>()) {
  for (const char *psFolder : {"All", "Message", "Convert", "Id", "IdInfo"}) {
    const fs::path folder = fs::path(kSource + sFolder) / psFolder;
    if (!fs::exists(folder)) continue;
    for (const auto &entry : fs::directory_iterator(folder)) {
      const std::string sText = content(entry.path());
      add(std::string(psFolder) + "/" + entry.path().filename().string(),
          std::string_view(psFolder) == "All" ? withPlugins(sText) : sText);
    }
  }
}

void Scenario::add(const std::string &sFile, const std::string &sText) {
  m_files[sFile] = sText;
  m_tree->file(sFile, sText);
}

std::vector<Scenario> allScenarios() {
  std::vector<Scenario> all;
  all.push_back(Scenario("envelope", "examples/envelope",
                         {{"", "line", "xml", firstLine(source("examples/envelope/data/day.txt"))}}));
  all.push_back(lookup());
  all.push_back(Scenario("fix", kFix,
                         {{"Order", "fix", "", source(kFix + "data/order.dat")},
                          {"Accounts", "fix", "", source(kFix + "data/accounts.bin").substr(0, 2202)},
                          {"Amounts", "fix", "", source(kFix + "data/amounts.bin").substr(0, 80)}}));
  all.push_back(reversal());
  all.push_back(payments());
  all.push_back(
      Scenario("nacha", "examples/nacha",
               {{"NachaFile", "nacha", "pain", source("examples/nacha/data/ppd-mixedDebitCredit.ach")},
                {"NachaFile", "nacha", "pain", source("examples/nacha/data/iat-debit.ach")}}));
  return all;
}

}  // namespace hostile
