// trial.h: a configuration is loaded and used in a process of its own, and what came of it.
#pragma once

#include <string>
#include <vector>

#include "scenario.h"

namespace hostile {

enum class End { Refused, Loaded, Crashed, Hung };

struct Outcome {
  End end = End::Crashed;
  std::vector<std::string> refusal;  // level 1 of the log, when it was refused
  // What came of each job: "ok:" and the bytes written, or "failed:" and level 1 of the log.
  std::vector<std::string> results;
  std::string sDeath;  // how the process ended, and what it wrote, when it crashed
};

// Loads the scenario's tree as it lies there now, in a child that may take nSeconds.
Outcome tryOut(Scenario &scenario, int nSeconds);

// Whether a job's result is that of a message that was converted.
bool isConverted(const std::string &sResult);

}  // namespace hostile
