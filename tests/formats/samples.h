// samples.h: the messages of the suite, and values for them.
#pragma once

#include <nlohmann/json.hpp>
#include <random>

#include "format.h"

namespace formats {

using Json = nlohmann::ordered_json;

// Type, Id, Customer (Name, City), Lines[ Sku, Quantity, Notes[] ], Remark. Loops may have `more` repetitions more
// than kMostLines and kMostNotes.
Items orderItems(int more = 0);

constexpr int kMostLines = 3;
constexpr int kMostNotes = 2;
constexpr int kMostName = 20;

// A message with as many lines, each with as many notes, and every field filled with something plain. The constant and the counts
// are left to the format.
Json order(int lines, int notes);

// A message at random, with texts that the format can carry.
Json randomOrder(std::mt19937 &random, const Format &format);

}  // namespace formats
