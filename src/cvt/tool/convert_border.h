// convert_border.h: tells converting from generating, which are steps of one call of the library.
#pragma once

#include <string>

#include "library.h"
#include "stopwatch.h"

namespace tool {

// As long as it lives, a step of the command's own stands in the generate chain behind pubConvert and ends
// the stage there.
class ConvertBorder {
 public:
  // The pipeline of that format id; without pubConvert it stays as it is. Throws a usage Failure when there
  // is none.
  ConvertBorder(const std::string &formatId, Stopwatch &stopwatch);
  ~ConvertBorder();
  ConvertBorder(const ConvertBorder &) = delete;
  ConvertBorder &operator=(const ConvertBorder &) = delete;

  // Whether it stands there; no longer when a reload has replaced the pipelines.
  bool stands() const { return before() != nullptr; }

 private:
  IdFunc *before() const;

  IdFunc m_step{};
};

}  // namespace tool
