// Converters made at random do what the model of the rules says: result, whole trail, and both messages.
#include <map>
#include <random>

#include "convert_fixture.h"
#include "rule_model.h"
#include "vel_dbs.h"

// --- The database ----------------------------------------------------------------------------------------

// A statement with an "x" cannot be prepared, one with a "y" not be opened, one with a "z" has no row; the
// others find their own text, and how long it is.
model::Answer model::ask(const std::string &sStatement) {
  const auto has = [&](char c) { return sStatement.find(c) != std::string::npos; };
  if (has('x')) return {"dbsPrepare", false, {}};
  if (has('y')) return {"dbsOpens", false, {}};
  return {"", !has('z'), {sStatement, std::to_string(sStatement.size())}};
}

namespace {
model::Answer g_answer;
}

#define DBS(type) extern "C" __attribute__((visibility("default"))) type

DBS(int) dbsExecute(char *psSql) {
  return model::ask(psSql).sFailing.empty() ? 0 : -1;
}
DBS(int) dbsPrepare(char *psSql) {
  g_answer = model::ask(psSql);
  return g_answer.sFailing == "dbsPrepare" ? -1 : 0;
}
DBS(int) dbsOpen() {
  return g_answer.sFailing == "dbsOpens" ? -1 : 0;
}
DBS(int) dbsColumnBuffer() {
  return 0;
}
DBS(int) dbsFetch() {
  return g_answer.bRow ? 0 : -3001;
}
DBS(int) dbsColumnCount() {
  return static_cast<int>(g_answer.columns.size());
}
DBS(char *) dbsGetField(int nColumn, int *pnLen) {
  std::string &sColumn = g_answer.columns.at(static_cast<size_t>(nColumn));
  *pnLen = static_cast<int>(sColumn.size());
  return sColumn.data();
}
DBS(int) dbsClose() {
  return 0;
}
DBS(int) dbsSqlCode() {
  return 7;
}
DBS(char *) dbsErrStr() {
  return test::cs("no");
}

namespace {

namespace xml = test::xml;
using model::Kind;
using model::Operand;
using model::Rule;
using test::cs;
using Texts = std::vector<std::string>;

// --- Definitions -----------------------------------------------------------------------------------------

const Kind kParts{{{"Part"}, {"Note"}}};
const Kind kItems{{{"Code"}, {"Qty"}, {"Parts", &kParts}, {"Part"}, {"Note"}}};
const Kind kIn{{{"A"}, {"B"}, {"Items", &kItems}, {"Code"}, {"Qty"}, {"Parts", &kParts}, {"Part"}, {"Note"}}};
const Kind kCells{{{"Cell"}, {"Mark"}}};
const Kind kRows{{{"Name"}, {"Cells", &kCells}, {"Cell"}, {"Mark"}}};
const Kind kOut{{{"X"}, {"Y"}, {"Rows", &kRows}, {"Name"}, {"Cells", &kCells}, {"Cell"}, {"Mark"}}};
constexpr size_t kCapacity = 8;  // of a value list: the larger definition

// --- Converters ------------------------------------------------------------------------------------------

// A rule or an operand, for the model and for the file.
struct MadeOperand {
  Operand op;
  xml::ArgXml file;
};
struct MadeRule {
  Rule rule;
  xml::ArgXml file;
};
struct MadeRules {
  std::vector<Rule> rules;
  xml::Args file;
};

class Maker {
 public:
  explicit Maker(unsigned nSeed) : m_random(nSeed) {}

  int below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }
  std::string text() {
    static const Texts some = {"", "a", "b", "1", "2", "ab", "x", "y", "z"};
    return some[static_cast<size_t>(below(static_cast<int>(some.size())))];
  }

  // Rules that stand where these two levels are the current ones.
  MadeRules rules(const Kind &src, const Kind &dst, int nDepth, int nMost) {
    MadeRules made;
    for (int n = below(nMost + 1); n > 0; --n) {
      MadeRule one = rule(src, dst, nDepth);
      made.rules.push_back(one.rule);
      made.file.push_back(one.file);
    }
    return made;
  }

 private:
  // The name as somebody may write it: letter case does not count.
  std::string written(std::string s) {
    for (char &c : s)
      c = static_cast<char>(below(4) == 0 ? (below(2) == 0 ? std::toupper(c) : std::tolower(c)) : c);
    return s;
  }

  // The position of a field, or of a loop, of a level.
  int pick(const Kind &kind, bool bLoop) {
    std::vector<int> some;
    for (size_t i = 0; i < kind.nodes.size(); ++i)
      if ((kind.nodes[i].pBody != nullptr) == bLoop) some.push_back(static_cast<int>(i));
    return some.empty() ? -1 : some[static_cast<size_t>(below(static_cast<int>(some.size())))];
  }

  MadeOperand node(int nCode, const Kind &kind, int nPosition) {
    const std::string sName = written(kind.nodes[static_cast<size_t>(nPosition)].sName);
    return {{nCode, sName, nPosition}, xml::node(nCode, nCode, sName)};
  }
  MadeOperand field(int nCode, const Kind &kind) { return node(nCode, kind, pick(kind, false)); }

  MadeOperand operand(const Kind &src, const Kind &dst, int nDepth) {
    switch (below(nDepth > 0 ? 12 : 8)) {
      case 0:
      case 1:
        return field(1, dst);
      case 2: {
        const std::string s = text();
        return {{3, s}, xml::value(s)};
      }
      case 3:
        return below(6) == 0 ? MadeOperand{{2, ""}, xml::level()} : field(0, src);
      case 8:
      case 9:
        return function(src, dst, nDepth - 1);
      case 10:
      case 11:
        return count(src, dst);
      default:
        return field(0, src);
    }
  }

  MadeOperand function(const Kind &src, const Kind &dst, int nDepth) {
    const std::string sName = below(8) == 0 ? "fail" : "join";
    MadeOperand made{{4, sName}, {}};
    xml::Args args;
    for (int n = below(5); n > 0; --n) {
      const MadeOperand arg = operand(src, dst, nDepth);
      made.op.args.push_back(arg.op);
      args.push_back(arg.file);
    }
    made.file = xml::func(sName, args);
    return made;
  }

  // Mostly of a loop; of a destination's position now and then, and of a field.
  MadeOperand count(const Kind &src, const Kind &dst) {
    const int nCode = below(5) == 0 ? 1 : 0;
    const Kind &kind = nCode == 0 ? src : dst;
    int nPosition = below(5) == 0 ? pick(kind, false) : pick(kind, true);
    if (nPosition < 0) nPosition = pick(kind, false);
    const MadeOperand of = node(nCode, kind, nPosition);
    return {{10, "", nPosition}, xml::loopNum(of.file)};
  }

  MadeRule rule(const Kind &src, const Kind &dst, int nDepth) {
    switch (below(nDepth > 0 ? 10 : 4)) {
      case 3:
        return sql(src, dst);
      case 4:
      case 5:
        return choice(src, dst, nDepth - 1);
      case 6:
        return mapping(src, dst, nDepth - 1);
      case 7:
      case 8:
        return loop(src, dst, nDepth - 1);
      case 9: {
        const MadeOperand skipped = operand(src, dst, 2);
        return {{skipped.op.nCode}, skipped.file};
      }
      default:
        return copy(src, dst);
    }
  }

  MadeOperand target(const Kind &src, const Kind &dst) {
    const int n = below(30);
    return n == 0 ? MadeOperand{{2, ""}, xml::level()} : n < 3 ? field(0, src) : field(1, dst);
  }

  MadeRule copy(const Kind &src, const Kind &dst) {
    const MadeOperand from = operand(src, dst, 3);
    const MadeOperand to = target(src, dst);
    return {{6, {from.op}, {to.op}}, xml::copy(from.file, to.file)};
  }

  MadeRule choice(const Kind &src, const Kind &dst, int nDepth) {
    MadeRule made{{7}, {}};
    std::vector<xml::CaseXml> cases;
    for (int n = 1 + below(3); n > 0; --n) {
      Rule::Choice one;
      std::vector<xml::JudgeXml> judges;
      for (int i = below(3); i > 0; --i) {
        const MadeOperand from = operand(src, dst, 2);
        const MadeOperand to = operand(src, dst, 2);
        one.judges.emplace_back(from.op, to.op);
        judges.push_back(xml::equal(from.file, to.file));
      }
      const MadeRules inner = rules(src, dst, nDepth, 2);
      one.rules = inner.rules;
      made.rule.choices.push_back(one);
      cases.push_back(xml::when(judges, inner.file));
    }
    made.file = xml::cases(cases);
    return made;
  }

  MadeRule mapping(const Kind &src, const Kind &dst, int nDepth) {
    const MadeOperand of = operand(src, dst, 3);
    MadeRule made{{11, {of.op}}, {}};
    std::vector<xml::Entry> entries;
    for (int n = below(4); n > 0; --n) {
      Rule::Choice one;
      const MadeRules inner = rules(src, dst, nDepth, 2);
      one.rules = inner.rules;
      xml::Entry entry = xml::untagged(inner.file);
      if (below(15) != 0) {
        const MadeOperand tag = operand(src, dst, 2);
        one.tag = tag.op;
        entry.tag = {tag.file};
      }
      made.rule.choices.push_back(one);
      entries.push_back(entry);
    }
    made.file = xml::mapping({of.file}, entries);
    return made;
  }

  MadeRule loop(const Kind &src, const Kind &dst, int nDepth) {
    MadeRule made{{8}, {}};
    const Kind *pSrc = &src;
    const Kind *pDst = &dst;
    const auto side = [&](int nCode, const Kind *&pKind, int &nSlot, std::string &sName) {
      const int nPosition = below(3) == 0 ? -1 : pick(*pKind, true);
      if (nPosition < 0) {
        static const Texts names = {"Set", "level", "s", "S1"};
        sName = names[static_cast<size_t>(below(4))];
        return xml::level(sName);
      }
      const MadeOperand of = node(nCode, *pKind, nPosition);
      nSlot = nPosition;
      sName = of.op.sText;
      pKind = pKind->nodes[static_cast<size_t>(nPosition)].pBody;
      return of.file;
    };
    const xml::ArgXml from = side(0, pSrc, made.rule.nFrom, made.rule.sFrom);
    const xml::ArgXml to = side(1, pDst, made.rule.nTo, made.rule.sTo);
    const MadeRules inner = rules(*pSrc, *pDst, nDepth, 3);
    made.rule.rules = inner.rules;
    made.file = xml::loopRule(from, to, inner.file);
    return made;
  }

  MadeRule sql(const Kind &src, const Kind &dst) {
    MadeRule made{{9}, {}};
    xml::Args pieces;
    xml::Args fields;
    for (int n = below(4); n > 0; --n) {
      const MadeOperand piece = operand(src, dst, 1);
      made.rule.from.push_back(piece.op);
      pieces.push_back(piece.file);
    }
    for (int n = below(4); n > 0; --n) {
      const MadeOperand to = below(8) == 0 ? field(0, src) : field(1, dst);
      made.rule.to.push_back(to.op);
      fields.push_back(to.file);
    }
    made.file = xml::sql(pieces, fields);
    return made;
  }

  std::mt19937 m_random;
};

// --- Messages --------------------------------------------------------------------------------------------

// The same values at random in a message of the library and in one of the model.
void fill(Maker &maker, const Kind &kind, const test::Level &level, model::Level &said) {
  for (size_t i = 0; i < kind.nodes.size(); ++i) {
    const char *const psName = kind.nodes[i].sName.c_str();
    if (level.position(psName) != static_cast<int>(i)) continue;
    if (kind.nodes[i].pBody == nullptr) {
      said.slots[i].sText = maker.below(2) == 0 ? maker.text() : "";
      level.set(psName, said.slots[i].sText);
      continue;
    }
    const Kind &body = *kind.nodes[i].pBody;
    for (int n = maker.below(4); n > 0; --n) {
      said.slots[i].bLoop = true;
      said.slots[i].repetitions.push_back(std::make_shared<model::Level>(body.nodes.size()));
      fill(maker, body, level.add(psName), *said.slots[i].repetitions.back());
    }
  }
}

std::string bracketed(const std::string &s) {
  return "[" + s + "]";
}

std::string shown(const Kind &kind, ValueList *ptList) {
  std::string s;
  for (size_t i = 0; i < kind.nodes.size(); ++i) {
    const int nSlot = static_cast<int>(i);
    const Value *const pt = cvtGetListValue(ptList, nSlot);
    s += kind.nodes[i].sName + "=";
    if (pt->nLen > 0) s += std::string(pt->psValue, static_cast<size_t>(pt->nLen));
    for (int n = 0; pt->nLen == -1 && n < cvtGetLoopValueListNum(ptList, nSlot); ++n)
      s += bracketed(shown(*kind.nodes[i].pBody, cvtGetLoopValueList(ptList, nSlot, n)));
    s += " ";
  }
  return s;
}

std::string shown(const Kind &kind, const model::Level &level) {
  std::string s;
  for (size_t i = 0; i < kind.nodes.size(); ++i) {
    s += kind.nodes[i].sName + "=" + level.slots[i].sText;
    for (const auto &repetition : level.slots[i].repetitions)
      s += bracketed(shown(*kind.nodes[i].pBody, *repetition));
    s += " ";
  }
  return s;
}

// --- The comparison --------------------------------------------------------------------------------------

std::string joined(int nArgs, Value **pptArgs) {
  std::string s;
  for (int i = 0; i < nArgs; ++i) {
    const Value *const pt = pptArgs[i];
    if (pt == nullptr) s += "~";
    if (pt != nullptr && pt->nLen > 0) s.append(pt->psValue, static_cast<size_t>(pt->nLen));
    s += "|";
  }
  return s;
}
int join(Value *ptResult, int nArgs, Value **pptArgs, MemPort ptNode) {
  std::string s = joined(nArgs, pptArgs);
  return cvtDumpValue(ptResult, s.data(), static_cast<int>(s.size()), ptNode);
}
int fail(Value *, int, Value **, MemPort) {
  return 1;
}

std::string converterName(int n) {
  std::string s = "C";
  return s += std::to_string(n);
}

class RandomRules : public test::ConvertTest, public testing::WithParamInterface<unsigned> {
 protected:
  void SetUp() override {
    using namespace test::xml;
    ConvertTest::SetUp();
    cvtConvertAddFunction(cs("join"), join);
    cvtConvertAddFunction(cs("fail"), fail);
    define("In",
           {field("A"), field("B"),
            loop("Items", {field("Code"), field("Qty"), loop("Parts", {field("Part"), field("Note")})})});
    define("Out", {field("X"), field("Y"),
                   loop("Rows", {field("Name"), loop("Cells", {field("Cell"), field("Mark")})})});
  }

  // Converts one message by converter C0, C1 ...
  void compare(Maker &maker, int nConverter) {
    const std::string sName = converterName(nConverter);
    const test::Level from = test::newMessage("In");
    const test::Level to = test::newMessage("Out");
    model::Level saidFrom(kIn.nodes.size());
    model::Level saidTo(kOut.nodes.size());
    fill(maker, kIn, from, saidFrom);
    fill(maker, kOut, to, saidTo);

    model::Run said(kCapacity);
    const bool bDone = said.rules(saidFrom, saidTo, m_rules[static_cast<size_t>(nConverter)]);
    if (!bDone) said.lines.push_back("Convert [" + sName + "] From struct[In] tp Struct[Out] err!!");
    for (const std::string &sLine : said.lines) ++m_seen[sLine.substr(0, sLine.find_first_of("[0"))];
    ++m_seen[bDone ? "done" : "failed"];

    EXPECT_EQ(run(sName.c_str(), from, to), bDone ? 0 : -1);
    EXPECT_EQ(test::logTexts(1), said.lines);
    EXPECT_EQ(shown(kIn, from.ptList), shown(kIn, saidFrom));
    EXPECT_EQ(shown(kOut, to.ptList), shown(kOut, saidTo));
    for (const test::Level &level : {from, to}) {
      cvtFreeValue(level.ptList);
      cvtMemDelNode(level.ptNode);
    }
  }

  std::vector<std::vector<Rule>> m_rules;
  std::map<std::string, int> m_seen;  // lines, up to their first argument
};

TEST_P(RandomRules, DoWhatTheModelSays) {
  constexpr int kConverters = 150;
  Maker maker(GetParam());
  for (int i = 0; i < kConverters; ++i) {
    const MadeRules made = maker.rules(kIn, kOut, 4, 6);
    m_rules.push_back(made.rules);
    convert(converterName(i), made.file);
  }
  ASSERT_EQ(start(), 0) << test::logTexts(1).at(0);
  for (int i = 0; i < kConverters; ++i) {
    for (int n = 0; n < 6; ++n) compare(maker, i);
    ASSERT_FALSE(HasFailure()) << "seed " << GetParam() << ", converter " << i;
  }
  EXPECT_GT(m_seen["done"], kConverters);  // or the comparison shows little
  EXPECT_GT(m_seen["failed"], kConverters);
  for (const char *psLine : {"CvtCopy Err!!", "CvtCase Err!!", "CVT_TYPE_LOOP Err!!", "CvtSql Err!!",
                             "CvtMapping err!!", "Do Func", "StructConvert err!!\n", "Convert Loop",
                             "Warning: sql", "Get Field Index", "No Defined Arg Type "}) {
    EXPECT_GT(m_seen[psLine], 0) << psLine;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomRules, testing::Values(1, 2, 3, 4));

}  // namespace
