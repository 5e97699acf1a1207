// extent.h: what can be known of a plan's nodes without a message: their size, and the bytes they start with.
#pragma once

#include "plan.h"

namespace cvt::fix {

struct Extent {
  size_t bytes;  // at least
  bool exact;    // exactly
};

// Of the siblings from position `from` up to `to`, separators of records included.
Extent extentOf(const LevelPlan &level, size_t from, size_t to);

// How the node at that position starts, if it is there at all. An empty Start: with any bytes.
std::vector<Start> startsOf(const LevelPlan &level, size_t position);

// How the siblings start; one that may be missing lets the next one begin.
std::vector<Start> startsAt(const LevelPlan &level, size_t from, size_t to);

}  // namespace cvt::fix
