// Definitions made at random are numbered, and their count fields found, as a second and simpler reading of
// the rules says.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "definition_xml.h"
#include "log_capture.h"

using namespace test;
using namespace test::model;
using Names = std::vector<std::string>;

namespace {

// --- The second reading ----------------------------------------------------------------------------------

struct Said;
using Chain = std::vector<std::shared_ptr<Said>>;

// A node. Chains that end in a reference end in the nodes of the other definition themselves.
struct Said {
  std::string sName;
  int nKind = 0;       // 1 loop, 5 counted
  std::string sCount;  // count field of these; may be empty
  Chain children;
  Chain other;
  int nIndex = -1;
  int nCount = -1;  // position of the count field
  Chain body;       // of a loop with children; one without is its own body
};

void visit(const Chain &chain, Chain &all) {
  for (const auto &node : chain) {
    all.push_back(node);
    visit(node->children, all);
    visit(node->other, all);
  }
}

Chain number(const Chain &chain) {
  Chain all;
  visit(chain, all);
  for (size_t i = 0; i < all.size(); ++i) {
    Said &node = *all[i];
    const int nPosition = static_cast<int>(i);
    if (node.nIndex == -1) {
      if (node.children.empty() || node.nKind == 1) {
        node.nIndex = nPosition;
      } else {
        node.nIndex = node.children[0]->nIndex == -1 ? 0 : nPosition + 1;
      }
    }
    if (node.nKind == 1 && !node.children.empty()) node.body = number(node.children);
  }
  return all;
}

std::string lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return s;
}

int position(const Chain &index, const std::string &sName) {
  for (size_t i = 0; i < index.size(); ++i)
    if (lower(index[i]->sName) == lower(sName)) return static_cast<int>(i);
  return -1;
}

// The result of resolving, with the line of a failure.
int resolve(const Chain &index, Names &lines) {
  for (const auto &node : index) {
    if ((node->nKind != 1 && node->nKind != 5) || node->sCount.empty()) continue;
    if (node->nCount < 0) node->nCount = position(index, node->sCount);
    if (node->nCount < 0) {
      lines.push_back("Loop Node[" + node->sName + "] Loop Num Field[" + node->sCount +
                      "] Node Not Define!!");
      return -3;
    }
    if (node->nKind != 1) continue;
    const int nResult = resolve(node->body, lines);
    if (nResult != 0) return nResult;
  }
  return 0;
}

// --- Definitions at random -------------------------------------------------------------------------------

struct Definition {
  std::string sName;
  std::vector<NodeXml> nodes;
  Chain chain;
  Chain index;
};

class Maker {
 public:
  explicit Maker(unsigned nSeed) : m_random(nSeed) {}

  int below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }

  std::string name() {
    static const Names some = {"a", "A", "b", "cd", "Cd", "CD", "e", "f1", "F1", "g", "h", "i", "j_", "K.l"};
    return some[static_cast<size_t>(below(static_cast<int>(some.size())))];
  }

  // A definition that may refer to those before it.
  Definition definition(const std::vector<Definition> &before) {
    Definition made;
    made.sName = "D";
    made.sName += std::to_string(before.size());
    chain(before, 3, made.nodes, made.chain);
    return made;
  }

 private:
  void chain(const std::vector<Definition> &before, int nDepth, std::vector<NodeXml> &nodes, Chain &said) {
    const int nNum = 1 + below(4);
    for (int i = 0; i < nNum; ++i) {
      if (!before.empty() && below(12) == 0) return refer(before, nodes, said);
      node(before, nDepth, nodes, said);
    }
  }

  // A reference, and nodes behind it that are dropped.
  void refer(const std::vector<Definition> &before, std::vector<NodeXml> &nodes, Chain &said) {
    const Definition &to = before[static_cast<size_t>(below(static_cast<int>(before.size())))];
    nodes.push_back(reference(to.sName));
    said.insert(said.end(), to.chain.begin(), to.chain.end());
    for (int i = below(3); i > 0; --i) nodes.push_back(field("dropped"));
  }

  void node(const std::vector<Definition> &before, int nDepth, std::vector<NodeXml> &nodes, Chain &said) {
    const auto made = std::make_shared<Said>();
    made->sName = name();
    NodeXml xml = field(made->sName);
    const int nKind = below(6);
    if (nKind == 1 || nKind == 5) {
      made->nKind = nKind;
      if (below(3) != 0) made->sCount = name();
      xml.sStruct = "nType=\"" + std::to_string(nKind) + "\"";
      xml.sInfo = loopType(made->sCount);
    }
    if (nDepth > 0 && below(3) == 0) chain(before, nDepth - 1, xml.children, made->children);
    if (nDepth > 0 && below(8) == 0) chain(before, nDepth - 1, xml.other, made->other);
    if (below(10) == 0) xml.loopNodes.push_back(field("apart"));
    nodes.push_back(xml);
    said.push_back(made);
  }

  std::mt19937 m_random;
};

// --- The comparison --------------------------------------------------------------------------------------

class RandomDefinitions : public ::testing::Test, public testing::WithParamInterface<unsigned> {
 protected:
  void SetUp() override { Definitions::format("flat"); }

  static LoopType *typeOf(const Message *pt) { return static_cast<LoopType *>(pt->ptStructAttr->pInfo); }

  // One index, and those of the loops in it.
  void compare(Message **pptIdx, const Chain &index) {
    for (size_t i = 0; i < index.size(); ++i) {
      Message *const pt = cvtIdxNode(pptIdx, static_cast<int>(i));
      ASSERT_NE(pt, nullptr);
      const auto known = m_nodes.emplace(index[i].get(), pt).first;
      EXPECT_EQ(known->second, pt) << "node " << index[i]->sName << " is one in all definitions";
      EXPECT_EQ(pt->psNodeName, index[i]->sName);
      EXPECT_EQ(pt->nIndex, index[i]->nIndex) << pt->psNodeName;
      if (index[i]->nKind != 1) continue;
      const bool bOwnBody = index[i]->body.empty();
      EXPECT_EQ(cvtLoopGetFieldNum(pt), bOwnBody ? 1 : static_cast<int>(index[i]->body.size()));
      EXPECT_EQ(cvtIdxNode(cvtLoopGetIdx(pt), 0) == pt, bOwnBody);
      if (!bOwnBody) compare(cvtLoopGetIdx(pt), index[i]->body);
    }
    EXPECT_EQ(cvtIdxNode(pptIdx, static_cast<int>(index.size())), nullptr);
    for (const char *ps : {"a", "B", "cD", "E", "f1", "F1", "J_", "k.L", "z", ""})
      EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs(ps)), position(index, ps)) << ps;
  }

  void compareCounts(Definition &made) {
    Names lines;
    clearLog();
    const int nResult = resolve(made.index, lines);
    EXPECT_EQ(cvtLoopSetLoopNumIndex(cvtGetMsg(cs(made.sName.c_str()))->pptMessageIdx), nResult)
        << made.sName;
    EXPECT_EQ(logTexts(), lines) << made.sName;
    ++m_results[nResult];
    for (const auto &[pSaid, ptNode] : m_nodes) {
      if (pSaid->nKind == 0) continue;
      EXPECT_EQ(typeOf(ptNode)->nLoopNumIndex, pSaid->nCount) << pSaid->sName;
    }
  }

  Definitions m_definitions;
  std::map<const Said *, Message *> m_nodes;
  std::map<int, int> m_results;
};

TEST_P(RandomDefinitions, AreNumberedAndResolvedAsTheRulesSay) {
  constexpr int kDefinitions = 60;
  Maker maker(GetParam());
  std::vector<Definition> all;
  for (int i = 0; i < kDefinitions; ++i) {
    all.push_back(maker.definition(all));
    m_definitions.add(all.back().sName, all.back().nodes);
  }
  ASSERT_NE(m_definitions.load(), nullptr) << logTexts().at(0);
  size_t nMost = 0;
  for (Definition &made : all) {
    made.index = number(made.chain);
    nMost = std::max(nMost, made.index.size());
    const Msg *const ptMsg = cvtGetMsg(cs(made.sName.c_str()));
    EXPECT_EQ(ptMsg->nFieldNum, static_cast<int>(made.index.size()));
    compare(ptMsg->pptMessageIdx, made.index);
    ASSERT_FALSE(HasFailure()) << made.sName;
  }
  EXPECT_EQ(gnMaxValueNum, static_cast<int>(nMost));
  std::set<const Message *> apart;
  for (const auto &[pSaid, ptNode] : m_nodes) apart.insert(ptNode);
  EXPECT_EQ(apart.size(), m_nodes.size());
  for (Definition &made : all) compareCounts(made);
  EXPECT_GT(m_results[0], 5);  // or the comparison shows little
  EXPECT_GT(m_results[-3], 5);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomDefinitions, testing::Range(1U, 7U));

}  // namespace
