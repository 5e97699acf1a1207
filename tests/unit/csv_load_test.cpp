// Loading large definitions of the format `csv`: memory in proportion to their records.
#include <gtest/gtest.h>

#include "csv_config.h"
#include "heap_use.h"

namespace {

using namespace test::csvtext;

FormatNode tagged(int nNumber) {
  const std::string sNumber = std::to_string(nNumber);
  return record("R" + sNumber, "psTag=\"" + sNumber + "\"", {field("F")});
}

// Bytes of the heap while a definition of so many records is loaded, which must convert.
long heapWith(const std::vector<FormatNode> &nodes, int nRecords) {
  CsvConfig config;
  config.message("M", "", nodes);
  EXPECT_EQ(config.start(), 0) << told();
  const long nBytes = test::heapInUse();
  for (const std::string s : {"0,a\n", "1,b\n"}) EXPECT_EQ(pass("M", s), s) << told();
  const std::string sLast = std::to_string(nRecords - 1) + ",z\n";
  EXPECT_EQ(pass("M", sLast), sLast) << told();
  cvtEnd();
  return nBytes;
}

// What a record takes. The plug-in lets its definitions go when others come.
double bytesOfOne(const std::vector<FormatNode> &nodes, int nRecords) {
  const long nBefore = heapWith({tagged(0), tagged(1)}, 2);
  return static_cast<double>(heapWith(nodes, nRecords) - nBefore) / nRecords;
}

double inOrder(int nRecords) {
  std::vector<FormatNode> records;
  for (int i = 0; i < nRecords; ++i) records.push_back(tagged(i));
  return bytesOfOne(records, nRecords);
}

double inGroups(int nRecords) {
  std::vector<FormatNode> groups;
  for (int i = 0; i < nRecords; i += 2)
    groups.push_back(group("G" + std::to_string(i), "psKind=\"any\"", {tagged(i), tagged(i + 1)}));
  return bytesOfOne(groups, nRecords);
}

// Twice leaves room for what earlier definitions left behind.
void expectProportion(double (*bytesEach)(int)) {
  const double few = bytesEach(2000);
  const double many = bytesEach(32000);
  std::printf("of 2000 records: %.0f bytes each, of 32000: %.0f\n", few, many);
  EXPECT_LT(many, 2 * few);
}

TEST(CsvLoad, TaggedRecordsTakeMemoryInProportion) {
  REQUIRE_HEAP_USE();
  expectProportion(inOrder);
}

TEST(CsvLoad, GroupsOfTaggedRecordsInAnyOrderTakeMemoryInProportion) {
  REQUIRE_HEAP_USE();
  expectProportion(inGroups);
}

}  // namespace
