// check_texts LIST SEEN: whether every text of the list was logged while the tests ran.
//
// LIST is texts.txt, which describes its own form. SEEN is what the tests' logInfo noted (log_capture.cpp):
// lines LEVEL|FILE|F|FORMAT and LEVEL|FILE|T|TEXT, T where the library's format is no more than "%s".
#include <fstream>
#include <iostream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Seen {
  std::string sLevel;
  std::string sFile;
  bool bFormat;
  std::string sText;
};

struct Text {
  int nLine;
  std::string sFile;
  std::string sLevel;
  std::string sFormat;
  std::string sNeverBecause;  // empty: must be seen
};

std::string part(std::string &s, char cEnd) {
  const size_t nEnd = s.find(cEnd);
  if (nEnd == std::string::npos) throw std::runtime_error(std::string("expected '") + cEnd + "' in: " + s);
  std::string sPart = s.substr(0, nEnd);
  s.erase(0, nEnd + 1);
  return sPart;
}

std::ifstream open(const char *psFile) {
  std::ifstream in(psFile);
  if (!in) throw std::runtime_error(std::string("cannot read ") + psFile);
  return in;
}

std::vector<Seen> readSeen(const char *psFile) {
  std::ifstream in = open(psFile);
  std::set<std::string> lines;
  for (std::string s; std::getline(in, s);) lines.insert(s);
  std::vector<Seen> all;
  for (std::string s : lines) {
    Seen seen;
    seen.sLevel = part(s, '|');
    seen.sFile = part(s, '|');
    seen.bFormat = part(s, '|') == "F";
    seen.sText = s;
    all.push_back(seen);
  }
  return all;
}

std::vector<Text> readList(const char *psFile) {
  std::ifstream in = open(psFile);
  std::vector<Text> all;
  std::string sFile;
  int nLine = 0;
  for (std::string s; std::getline(in, s);) {
    ++nLine;
    if (s.empty() || s[0] == '#') continue;
    if (s.rfind("== ", 0) == 0) {
      s.erase(0, 3);
      sFile = part(s, ':');
      continue;
    }
    Text text{nLine, sFile, "", "", ""};
    if (s.rfind("never (", 0) == 0) {
      s.erase(0, 7);
      text.sNeverBecause = part(s, ')');
      s.erase(0, 1);
    }
    text.sLevel = part(s, '|');
    text.sFormat = s;
    all.push_back(text);
  }
  return all;
}

// What the format looks like when it is printed: anything may stand for a conversion.
std::regex printed(const std::string &sFormat) {
  static const std::regex special(R"([.^$|()\[\]{}*+?\\])");
  static const std::regex conversion("%(\\\\\\.\\\\\\*)?[sd]");  // %s, %d, and %.*s as it is escaped
  const std::string sEscaped = std::regex_replace(sFormat, special, R"(\$&)");
  return std::regex(std::regex_replace(sEscaped, conversion, "[^]*"));
}

bool says(const Seen &seen, const Text &text, const std::regex &form) {
  return seen.bFormat ? seen.sText == text.sFormat : std::regex_match(seen.sText, form);
}

// Where the text was seen; empty when it was seen as listed.
std::string elsewhere(const Text &text, const std::vector<Seen> &all) {
  const std::regex form = printed(text.sFormat);
  std::ostringstream out;
  for (const Seen &seen : all) {
    if (!says(seen, text, form)) continue;
    if (seen.sLevel == text.sLevel && seen.sFile == text.sFile) return "";
    out << ", but at level " << seen.sLevel << " from " << seen.sFile;
  }
  return out.str().empty() ? ", nor anywhere else" : out.str();
}

int check(const char *psList, const char *psSeen) {
  const std::vector<Seen> seen = readSeen(psSeen);
  const std::vector<Text> list = readList(psList);
  int nFaults = 0;
  int nReachable = 0;
  for (const Text &text : list) {
    const std::string sWhere = elsewhere(text, seen);
    nReachable += text.sNeverBecause.empty() ? 1 : 0;
    if (sWhere.empty() == text.sNeverBecause.empty()) continue;
    ++nFaults;
    std::cout << psList << ":" << text.nLine << ": \"" << text.sFormat << "\" ";
    if (text.sNeverBecause.empty()) {
      std::cout << "was not seen at level " << text.sLevel << " from " << text.sFile << sWhere
                << ": test what logs it, or mark it \"never (reason)\"\n";
    } else {
      std::cout << "was seen although it is marked never: take the mark away\n";
    }
  }
  std::cout << list.size() << " texts, " << nReachable << " to be seen, " << nFaults << " faults\n";
  return nFaults == 0 && nReachable > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 3) {
    std::cerr << "usage: check_texts LIST SEEN\n";
    return 2;
  }
  try {
    return check(argv[1], argv[2]);
  } catch (const std::exception &e) {
    std::cerr << "check_texts: " << e.what() << "\n";
    return 2;
  }
}
