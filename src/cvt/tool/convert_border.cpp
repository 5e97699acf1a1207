#include "convert_border.h"

namespace tool {
namespace {

char f_name[] = "the stopwatch of bench";

int endStage(InnerMessage *, InnerMessage *, void *ptArg) {
  static_cast<Stopwatch *>(ptArg)->lap(Stage::convert);
  return 0;
}

}  // namespace

ConvertBorder::ConvertBorder(const std::string &formatId, Stopwatch &stopwatch) {
  IdFunc *const convert = convertStep(generatePipeline(formatId));
  if (convert == nullptr) return;
  m_step.psFunctName = f_name;
  m_step.fIdFunction = endStage;
  m_step.ptArg = &stopwatch;
  m_step.ptNext = convert->ptNext;
  convert->ptNext = &m_step;
}

ConvertBorder::~ConvertBorder() {
  IdFunc *const step = before();
  if (step != nullptr) step->ptNext = m_step.ptNext;
}

// The step that leads here. Looked for among the pipelines that there are: a reload releases the others.
IdFunc *ConvertBorder::before() const {
  for (const FormatInfo *info = gptFormatInfo; info != nullptr; info = info->ptNext) {
    for (IdFunc *step = info->ptGenFunc; step != nullptr; step = step->ptNext) {
      if (step->ptNext == &m_step) return step;
    }
  }
  return nullptr;
}

}  // namespace tool
