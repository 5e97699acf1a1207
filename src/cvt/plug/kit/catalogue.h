// catalogue.h: the manual of conversion functions, written from their tables.
#pragma once

#include <span>
#include <string>

#include "function.h"

namespace cvt::kit {

// The functions in Markdown, a chapter each topic: arguments, result, examples, errors.
std::string catalogue(std::span<const Topic *const> topics);

// A call as the catalogue shows it: NAME("a", "b").
std::string shownCall(const FunctionRow &function, const Arguments &arguments);

}  // namespace cvt::kit
