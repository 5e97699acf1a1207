#include "plan.h"

namespace cvt::example {

namespace {

constexpr ExampleField kPlainField{};

constexpr ExampleLoop plainLoop() {
  ExampleLoop loop{};
  loop.nMax = kExampleLoopRows[0].fallback;
  return loop;
}
constexpr ExampleLoop kPlainLoop = plainLoop();

LevelPlan compileLevel(const kit::Level &level, const std::string &around) {
  LevelPlan plan;
  plan.level = &level;
  plan.rules.resize(level.nodes.size());
  plan.most.resize(level.nodes.size());
  plan.bodies.resize(level.nodes.size());
  plan.counts = kit::countsOf(level);
  const kit::Rules rules(level);
  for (size_t at = 0; at < level.nodes.size(); ++at) {
    const kit::Node &node = level.nodes[at];
    const std::string path = kit::nodePath(around, node);
    if (node.counted)
      throw kit::Misconfigured(path, node.record, "a field, a group or a loop", "a counted node");
    if (node.kind == kit::NodeKind::Field) {
      const ExampleField &field =
          kit::recordOr(node.record, kExampleField, kPlainField, "FormatAttr.pInfo", path);
      plan.rules[at] = rules.make(at,
                                  {field.nMandatory, field.nKeepEmpty, field.nMaxLen, field.psDefault,
                                   field.psConst, field.nPosition},
                                  path, node.record);
    } else if (node.kind == kit::NodeKind::Loop) {
      plan.most[at] = kit::recordOr(node.loopRecord, kExampleLoop, kPlainLoop, "LoopType.ptInfo", path).nMax;
      plan.bodies[at] = std::make_unique<LevelPlan>(compileLevel(*node.body, path));
    }
  }
  return plan;
}

}  // namespace

std::unique_ptr<Plan> compilePlan(const Msg &msg, const ExampleMsg &message) {
  auto plan = std::make_unique<Plan>();
  plan->shape = kit::compileShape(msg);
  plan->top = compileLevel(plan->shape, "");
  plan->maxSize = static_cast<size_t>(message.nMaxSize);
  return plan;
}

}  // namespace cvt::example
