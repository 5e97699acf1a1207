// plan.h: a definition, compiled: what each node of a level needs beside its name and its slot.
#pragma once

#include <memory>
#include <vector>

#include "kit/rule.h"
#include "kit/shape.h"
#include "records.h"

namespace cvt::example {

struct LevelPlan {
  const kit::Level *level = nullptr;
  std::vector<kit::Rule> rules;                    // by node; of fields
  std::vector<int> most;                           // by node; of loops
  std::vector<std::unique_ptr<LevelPlan>> bodies;  // by node; of loops
  std::vector<kit::Count> counts;
};

struct Plan {
  kit::Level shape;
  LevelPlan top;
  size_t maxSize;
};

// Throws Misconfigured.
std::unique_ptr<Plan> compilePlan(const Msg &msg, const ExampleMsg &message);

}  // namespace cvt::example
