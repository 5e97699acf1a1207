#include "kit/shape.h"

#include <gtest/gtest.h>

#include <memory>

#include "definition_xml.h"
#include "kit/fault.h"
#include "kit/path.h"
#include "log_capture.h"

using namespace cvt::kit;
using namespace test::model;

namespace {

// Loads one definition and hands it to compileShape.
struct Compiled {
  Level level;
  std::string error;

  std::string names(const Level &of) const {
    std::string all;
    for (const cvt::kit::Node &node : of.nodes) {
      all += std::string(node.name) + ":" + std::to_string(node.slot) + ">" + std::to_string(node.next) + " ";
    }
    return all;
  }
};

Compiled *f_compiled;

int compileFlat(Msg *msg) {
  try {
    f_compiled->level = compileShape(*msg);
  } catch (const Misconfigured &error) {
    f_compiled->error = error.text();
  }
  return 0;
}

// The definitions live as long as the process: a shape's names are theirs.
Compiled compile(const std::vector<NodeXml> &nodes,
                 const std::vector<std::pair<std::string, std::vector<NodeXml>>> &more = {}) {
  Compiled result;
  f_compiled = &result;
  static std::vector<std::unique_ptr<Definitions>> kept;
  kept.push_back(std::make_unique<Definitions>());
  Definitions &definitions = *kept.back();
  Definitions::format("flat", compileFlat);
  Definitions::format("other");
  for (const auto &[name, body] : more) {
    definitions.file("msg/" + name + ".xml", "<other>" + msgXml(name, body) + "</other>");
  }
  definitions.add("M" + std::to_string(kept.size()), nodes);
  EXPECT_NE(definitions.load(), nullptr);
  return result;
}

}  // namespace

TEST(KitShape, GroupsStandInTheLevelAndLoopsHaveTheirOwn) {
  const Compiled c = compile({field("A"), group("B", {field("B1"), field("B2")}),
                              loop("C", "", {field("C1"), field("C2")}), field("D")});
  ASSERT_EQ(c.error, "");
  EXPECT_EQ(c.names(c.level), "A:0>1 B:1>4 B1:2>3 B2:3>4 C:4>5 D:7>6 ");
  EXPECT_EQ(c.level.slots, 8);
  const cvt::kit::Node &loopNode = c.level.nodes[4];
  EXPECT_EQ(loopNode.kind, NodeKind::Loop);
  EXPECT_EQ(c.names(*loopNode.body), "C1:0>1 C2:1>2 ");
  EXPECT_EQ(loopNode.body->slots, 2);
  EXPECT_EQ(loopNode.countNode, -1);
  EXPECT_EQ(c.level.nodes[1].kind, NodeKind::Group);
}

TEST(KitShape, NestedLoopsSkipTheSlotsOfTheirBodies) {
  const Compiled c = compile(
      {loop("L", "", {field("N"), group("G", {loop("K", "N", {field("X")})}), field("Z")}), field("End")});
  ASSERT_EQ(c.error, "");
  EXPECT_EQ(c.names(c.level), "L:0>1 End:6>2 ");
  const Level &body = *c.level.nodes[0].body;
  EXPECT_EQ(c.names(body), "N:0>1 G:1>3 K:2>3 Z:4>4 ");
  EXPECT_EQ(body.nodes[2].countNode, 0);
  EXPECT_EQ(c.names(*body.nodes[2].body), "X:0>1 ");
}

TEST(KitShape, LoopWithoutChildrenRepeatsItself) {
  const Compiled c = compile({field("N"), loop("L", "N", {})});
  ASSERT_EQ(c.error, "");
  const Level &body = *c.level.nodes[1].body;
  EXPECT_EQ(c.names(body), "L:0>1 ");
  EXPECT_EQ(body.nodes[0].kind, NodeKind::Field);
  EXPECT_EQ(body.slots, 1);
  EXPECT_EQ(c.level.nodes[1].countNode, 0);
}

TEST(KitShape, CountedNodeKnowsItsCountField) {
  const Compiled c = compile({field("N"), counted("V", "N")});
  ASSERT_EQ(c.error, "");
  EXPECT_TRUE(c.level.nodes[1].counted);
  EXPECT_EQ(c.level.nodes[1].countNode, 0);
}

TEST(KitShape, CountFieldIsFoundWithoutRegardToCase) {
  EXPECT_EQ(compile({field("Number"), loop("L", "NUMBER", {field("X")})}).level.nodes[1].countNode, 0);
}

TEST(KitShape, ReferencesShareTheirNodes) {
  const Compiled c =
      compile({field("A"), reference("Part")}, {{"Part", {field("P"), group("G", {field("Q")})}}});
  ASSERT_EQ(c.error, "");
  EXPECT_EQ(c.names(c.level), "A:0>1 P:1>2 G:2>4 Q:3>4 ");
}

TEST(KitShape, CountFieldMustStandBeforeItsLoop) {
  EXPECT_EQ(
      compile({loop("L", "N", {field("X")}), field("N")}).error,
      "Node[L]: expected a count field that stands before it, outside of other loops, found psLoopNumName "
      "\"N\". Name a field of the same level.");
}

TEST(KitShape, CountFieldInsideAnotherLoopIsRefused) {
  EXPECT_NE(compile({loop("K", "", {field("N")}), loop("L", "N", {field("X")})})
                .error.find("Node[L]: expected a count"),
            std::string::npos);
}

TEST(KitShape, CountFieldInTheEnclosingLevelIsRefused) {
  EXPECT_NE(compile({field("N"), loop("K", "", {field("Y"), loop("L", "N", {field("X")})})})
                .error.find("Node[K.L]: expected a count"),
            std::string::npos);
}

TEST(KitShape, CountFieldNameMustBeUnique) {
  EXPECT_EQ(compile({loop("K", "", {field("N")}), field("N"), loop("L", "N", {field("X")})}).error,
            "Node[L]: expected one node named N, found several. Give the count field a name of its own.");
}

TEST(KitShape, SecondSubtreeIsRefused) {
  NodeXml node = group("G", {field("A")});
  node.other = {field("B")};
  EXPECT_NE(compile({node}).error.find("Node[G]: expected one subtree, found a second one"),
            std::string::npos);
}

TEST(KitShape, NodeWithoutNameIsRefused) {
  EXPECT_NE(compile({field("A"), field("")}).error.find("expected a node with a name"), std::string::npos);
}

TEST(KitShape, TooDeepNestingIsRefused) {
  NodeXml inner = field("F");
  for (int i = 0; i < Path::kMaxDepth; ++i) inner = group("G", {inner});
  EXPECT_NE(compile({inner}).error.find("expected at most 64 levels of nesting"), std::string::npos);
  NodeXml fits = field("F");
  for (int i = 0; i < Path::kMaxDepth - 1; ++i) fits = group("G", {fits});
  EXPECT_EQ(compile({fits}).error, "");
}

TEST(KitShape, DefinitionWithoutIndexIsRefused) {
  Msg msg{};
  EXPECT_THROW(compileShape(msg), Misconfigured);
}

TEST(KitShape, NodePathJoinsNames) {
  cvt::kit::Node node{};
  node.name = "B";
  EXPECT_EQ(nodePath("", node), "B");
  EXPECT_EQ(nodePath("A", node), "A.B");
}
