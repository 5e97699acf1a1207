#include "campaign.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <numeric>

#include "markup.h"
#include "mutation.h"
#include "trial.h"

namespace hostile {

namespace {

constexpr int kSeconds = 20;  // the slowest takes a tenth of one, under the sanitizers
constexpr size_t kMostShown = 20;

bool names(const std::vector<std::string> &lines, const std::string &sFile) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string &sLine) { return sLine.find(sFile) != std::string::npos; });
}

std::string refusalClass(Scenario &scenario, const std::string &sFile, const Outcome &outcome) {
  if (names(outcome.refusal, scenario.tree().path(sFile))) return kRefusedHere;
  for (const auto &[sOther, sText] : scenario.files()) {
    if (names(outcome.refusal, scenario.tree().path(sOther))) return kRefusedThere;
  }
  return kRefusedNowhere;
}

std::string loadedClass(const std::vector<std::string> &results, const std::vector<std::string> &before) {
  if (results == before) return kSame;
  if (std::find(results.begin(), results.end(), "failed:") != results.end()) return kMessageSilent;
  return std::all_of(results.begin(), results.end(), isConverted) ? kDifferent : kMessageRefused;
}

std::string classOf(Scenario &scenario, const std::string &sFile, const Outcome &outcome,
                    const Outcome &before) {
  switch (outcome.end) {
    case End::Refused:
      return refusalClass(scenario, sFile, outcome);
    case End::Loaded:
      return loadedClass(outcome.results, before.results);
    case End::Hung:
      return kHang;
    case End::Crashed:
      return kCrash;
  }
  return kCrash;
}

// Whether the damage is to something that the manual says is trusted: the numbers of the buffer steps, the
// length of a constant, and a record that is handed to a function as it is.
bool isTrusted(const std::string &sText, const std::string &sDamaged) {
  const std::vector<ElementAt> elements = elementsOf(sDamaged);
  return std::any_of(elements.begin(), elements.end(), [&](const ElementAt &element) {
    const std::string sTag = cut(sDamaged, element.startTag);
    if (sText.find(sTag) != std::string::npos) return false;
    const std::string sName = cut(sDamaged, element.name);
    return sName == "IpcNameArgs" || sName == "XmlNameArgs" || sName == "MoveBufferArgs" ||
           sName == "SetOffsetArgs" || sName == "Value" ||
           (sName == "Arg" && sTag.find("nType=\"5\"") != std::string::npos);
  });
}

bool isBad(const std::string &sClass) {
  return sClass == kCrash || sClass == kHang || sClass == kRefusedNowhere || sClass == kMessageSilent;
}

// The first line, and the first that names a place.
std::string causeOf(const Outcome &outcome) {
  std::string sCause = outcome.sDeath;
  if (outcome.end == End::Refused && !outcome.refusal.empty()) {
    sCause = outcome.refusal[0];
    const auto place = std::find_if(outcome.refusal.begin(), outcome.refusal.end(), [](const std::string &s) {
      return s.find("File[") != std::string::npos;
    });
    if (place != outcome.refusal.end() && *place != sCause) sCause += " | " + *place;
  }
  for (const std::string &sResult : outcome.results) {
    if (!isConverted(sResult)) sCause += sResult.substr(0, sResult.find('\n')) + " ";
  }
  return sCause;
}

void report(const std::string &sLine) {
  static const char *const psFile = std::getenv("CVT2_HOSTILE_REPORT");
  if (psFile != nullptr) std::ofstream(psFile, std::ios::app) << sLine << '\n';
}

}  // namespace

int Tally::count() const {
  return std::accumulate(classes.begin(), classes.end(), 0,
                         [](int n, const auto &each) { return n + each.second; });
}

void Tally::add(const Tally &other) {
  for (const auto &[sClass, n] : other.classes) classes[sClass] += n;
  bad.insert(bad.end(), other.bad.begin(), other.bad.end());
}

std::string Tally::figures() const {
  std::string s = std::to_string(count()) + " mutants";
  for (const char *psClass : {kRefusedHere, kRefusedThere, kRefusedNowhere, kSame, kDifferent,
                              kMessageRefused, kMessageSilent, kTrusted, kCrash, kHang}) {
    const auto found = classes.find(psClass);
    s += "; " + std::to_string(found == classes.end() ? 0 : found->second) + " " + psClass;
  }
  return s;
}

Tally run(Scenario &scenario, unsigned nFirst, unsigned nCount) {
  Tally tally;
  const Outcome before = tryOut(scenario, kSeconds);
  std::vector<std::string> names;
  std::vector<std::string> texts;
  for (const auto &[sFile, sText] : scenario.files()) {
    names.push_back(sFile);
    texts.push_back(sText);
  }
  for (unsigned nNumber = nFirst; nNumber < nFirst + nCount; ++nNumber) {
    const size_t nFile = nNumber % names.size();
    const Mutant mutant = mutate(texts[nFile], texts, nNumber);
    scenario.tree().file(names[nFile], mutant.sText);
    const Outcome outcome = tryOut(scenario, kSeconds);
    std::string sClass = classOf(scenario, names[nFile], outcome, before);
    if (sClass == kCrash && isTrusted(texts[nFile], mutant.sText)) sClass = kTrusted;
    const std::string sLine = sClass + "\t" + scenario.name() + "\t" + std::to_string(nNumber) + "\t" +
                              names[nFile] + "\t" + mutant.sKind + "\t" + mutant.sWhat + "\t" +
                              causeOf(outcome);
    report(sLine);
    ++tally.classes[sClass];
    if (isBad(sClass) && tally.bad.size() < kMostShown) tally.bad.push_back(sLine);
    scenario.tree().file(names[nFile], texts[nFile]);
  }
  return tally;
}

}  // namespace hostile
