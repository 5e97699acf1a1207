// Plug-ins with faults, and files that are none. Each is told by one clear line; a fault that nobody can stop
// ends the process. What comes after it, in the same process, is right.
#include <gtest/gtest.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "allocator.h"
#include "child.h"
#include "cvt.h"
#include "toy_config.h"

namespace {

using faults::Report;
using test::cs;

const std::string kPlug = CVT2_PLUGIN_DIR "/libcvt_plug_badFormat.so";

enum class Fails { kStart, kParse, kGenerate, kNothing };

struct Fault {
  const char *psName;  // of bad_format.cpp
  Fails fails;
  const char *psLine;  // stands in a line of level 1; empty: none is logged
};

constexpr Fault kFaults[] = {
    {"", Fails::kNothing, ""},
    {"registers twice", Fails::kNothing, ""},
    {"null dispatchers", Fails::kNothing, "[fpParseVoid] is NULL"},
    {"initialiser fails", Fails::kStart, "Func[badFormatInit] in ["},
    {"initialiser throws", Fails::kStart, "Plug[badFormat] let an exception out: no licence"},
    {"registers nothing", Fails::kStart, "SttInfo no Type[bad] Info!!"},
    {"null step", Fails::kStart, "[ptInfo] is NULL"},
    {"null format initialiser", Fails::kParse, "[ptInMsg->ptMsgInfo->fParse] is NULL"},
    {"definition fails", Fails::kStart, "Format [bad] Init Err!!"},
    {"definition throws", Fails::kStart, "Format[bad] let an exception out: no such currency"},
    {"no parse function", Fails::kParse, "[ptInMsg->ptMsgInfo->fParse] is NULL"},
    {"no generate function", Fails::kGenerate, "[ptInMsg->ptMsgInfo->fGen] is NULL"},
    {"step fails", Fails::kParse, "Do Func[badStep] err!!"},
    {"step throws", Fails::kParse, "Step[badStep] let an exception out: no such currency"},
    {"parse fails", Fails::kParse, "Msg[Note] Parse Buffer err!!"},
    {"parse throws", Fails::kParse, "Msg[Note] let an exception out: no such currency"},
    {"parse ends behind the buffer", Fails::kNothing, "Message Len[5] > Message Define Len[105]"},
    {"parse ends before the buffer", Fails::kNothing, "Message Len[5] > Message Define Len[-1]"},
    {"parse loops past the limit", Fails::kParse, "Loop Num is Max then Define[999]"},
    {"parse asks for a field that is not there", Fails::kParse, "Value Index[99] < 0 or >= max [3] err!!"},
    {"parse gives a value a negative length", Fails::kParse, "Value Length[-5] is not in [0] .. "},
    {"generate fails", Fails::kGenerate, "Message[Note] generate to Buf err!!"},
    {"generate throws", Fails::kGenerate, "Message[Note] let an exception out"},
    {"generate ends behind the buffer", Fails::kGenerate,
     "Message[Note]: its format ended at [17] of [16] bytes"},
    {"generate ends before the buffer", Fails::kGenerate,
     "Message[Note]: its format ended at [-1] of [16] bytes"},
};

// A configuration of the format "bad" with the message Note, whose name its one pipeline knows.
class BadConfig : public test::ToyConfig {
 public:
  explicit BadConfig(const std::string &sFault, const std::string &sFile = kPlug) {
    root.sPlug =
        test::plugSection({"psName=\"badFormat\" psPath=\"" + sFile + "\" psFault=\"" + sFault + "\""});
    root.sConvert.clear();
    root.sId = "<Id __ID=\"ptId\" psIdPath=\"badid\"/>";
    root.sMessage = test::messageSection({"badmsg"});
    writeRoot();
    file("badmsg/Note.xml",
         test::definition("bad", "Note", {test::field("Text"), test::loop("Items", {test::field("Item")})}));
    file("badid/pipelines.xml",
         test::pipelines({{"02", {"badStep", "badName", "pubParse"}, {"pubGenerate"}}}));
  }
};

// Names the message: the buffers of these tests do not.
int nameNote(InnerMessage *ptMsg, InnerMessage *, void *) {
  std::strcpy(ptMsg->sMsgName, "Note");
  return 0;
}

// Starts, reads a message, writes it. Returns the call that failed.
Fails use(BadConfig &config, Report &report) {
  cvtIdAddFunction(cs("badName"), nameNote);
  if (config.start() != 0) return Fails::kStart;
  char sIn[] = "hello";
  int nError = 0;
  InnerMessage *const pt = cvtParseMessasge(cs("02"), sIn, 5, &nError);
  if (pt == nullptr && nError != -1) report.wrong("error %d", nError);
  if (pt == nullptr) return Fails::kParse;
  char sOut[16];
  int nOut = sizeof sOut;
  const int nResult = cvtGenMessage(pt, sOut, &nOut);
  const bool bWhole = nError == 0;  // else the position was wrong, but the message is there
  if (nResult == 0 && bWhole && std::string_view(sOut, static_cast<size_t>(nOut)) != "hello")
    report.wrong("wrong bytes");
  cvtFreeMessage(pt);
  return nResult == 0 ? Fails::kNothing : Fails::kGenerate;
}

// Afterwards a good configuration works.
void useToy(test::ToyConfig &good, Report &report) {
  char sIn[] = "Order,Ann,Rome,[A,1,[];],hi";
  int nError = 0;
  if (cvtEnd() != 0 || good.start() != 0) return report.wrong("no start afterwards: %s", report.sLine);
  InnerMessage *const pt = cvtParseMessasge(cs("02"), sIn, static_cast<int>(std::strlen(sIn)), &nError);
  if (pt == nullptr || nError != 0) return report.wrong("no message afterwards: %s", report.sLine);
  cvtFreeMessage(pt);
  cvtEnd();
}

void told(const Fault &fault, BadConfig &config) {
  SCOPED_TRACE(fault.psName);
  test::ToyConfig good;
  const faults::Ending ending = faults::inChild([&](Report &report) {
    report.psWanted = fault.psLine;
    if (use(config, report) != fault.fails) report.wrong("another call failed");
    if (*fault.psLine == '\0' ? report.nLines > 0 : !report.bSeen) report.wrong("without its line");
    useToy(good, report);
  });
  EXPECT_EQ(ending.outcome, faults::Outcome::kRight) << ending.sText;
}

TEST(BadPlugIns, AreToldByALine) {
  for (const Fault &fault : kFaults) {
    BadConfig config(fault.psName);
    told(fault, config);
  }
  std::cout << "RESULT bad_plugins_told: " << std::size(kFaults) << " kinds\n";
}

// --- Faults that nobody can stop
// -------------------------------------------------------------------------------

constexpr bool kWatched = TEST_SANITIZED != 0;

TEST(BadPlugIns, EndTheProcessWhereNothingElseIsLeft) {
  struct Kind {
    const char *psName;
    bool bOnlyWatched;  // shows where the sanitizer watches
  };
  int nTried = 0;
  for (const Kind &kind : {Kind{"initialiser aborts", false},
                           {"parse aborts", false},
                           {"parse frees the caller's buffer", false},
                           {"generate frees the library's memory", false},
                           {"generate writes behind the buffer", true}}) {
    if (kind.bOnlyWatched && !kWatched) continue;
    ++nTried;
    SCOPED_TRACE(kind.psName);
    BadConfig config(kind.psName);
    const faults::Ending ending = faults::inChild([&](Report &report) {
      use(config, report);
      report.wrong("the process went on");
    });
    EXPECT_EQ(ending.sText.find("the process went on"), std::string::npos);
    EXPECT_EQ(ending.report.nLines, 0) << ending.sText;  // nothing was wrong before
  }
  std::cout << "RESULT bad_plugins_ended: " << nTried << " kinds\n";
}

// --- Files that are no plug-ins
// --------------------------------------------------------------------------------

std::string plugBytes() {
  std::ifstream in(kPlug, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// Where the last segment that is mapped ends.
size_t endOf(const std::string &sObject) {
  size_t nEnd = 0;
  ElfW(Ehdr) header;
  std::memcpy(&header, sObject.data(), sizeof header);
  for (size_t i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment;
    std::memcpy(&segment, sObject.data() + header.e_phoff + i * sizeof segment, sizeof segment);
    if (segment.p_type == PT_LOAD) nEnd = std::max<size_t>(nEnd, segment.p_offset + segment.p_filesz);
  }
  return nEnd;
}

TEST(BadPlugIns, FilesThatAreNone) {
  const std::string sWhole = plugBytes();
  const auto with = [&](size_t nAt, char c) {
    std::string s = sWhole;
    s[nAt] = c;
    return s;
  };
  const std::vector<std::string> files = {
      "",
      "no plug-in",
      sWhole.substr(0, 40),                   // in its header
      sWhole.substr(0, 4096),                 // in its first page
      sWhole.substr(0, endOf(sWhole) - 1),    // in its last segment
      sWhole.substr(0, sWhole.size() - 100),  // in its section table, which the loader does not need
      with(0, 'e'),                           // no ELF file
      with(4, 1),                             // of 32 bits
      with(5, 2),                             // of another byte order
      with(16, 2),                            // no shared object
      with(18, '\xB7'),                       // of another processor
  };
  for (size_t i = 0; i < files.size(); ++i) {
    SCOPED_TRACE("file " + std::to_string(i));
    test::ConfigTree tree;
    tree.file("plug.so", files[i]);
    BadConfig config("", tree.path("plug.so"));
    told({"", i == 5 ? Fails::kNothing : Fails::kStart, i == 5 ? "" : "dlopen Err:"}, config);
  }
  BadConfig directory("", CVT2_PLUGIN_DIR);
  told({"a directory", Fails::kStart, "dlopen Err:"}, directory);
  BadConfig missing("", CVT2_PLUGIN_DIR "/nowhere.so");
  told({"nothing", Fails::kStart, "nowhere.so: cannot open shared object file: No such file or directory!!"},
       missing);
  BadConfig other("", CVT2_PLUGIN_DIR "/libcvt_plug_toy.so");
  told({"without the initialiser", Fails::kStart, "Function [badFormatInit] Not Find in ["}, other);
  std::cout << "RESULT bad_plugins_files: " << files.size() + 3 << " kinds\n";
}

}  // namespace
