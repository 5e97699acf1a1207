// xml_layer.h: what the tests of the library's XML layer share.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "log_capture.h"
#include "stt.h"

namespace test {

// The layer never logs and never prints.
class XmlLayer : public testing::Test {
 protected:
  void SetUp() override { testing::internal::CaptureStderr(); }
  void TearDown() override {
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(logLines().empty());
  }
};

// A document, freed with its owner.
struct DocFree {
  void operator()(void *pt) const { xmlDocFree(pt); }
};
using Doc = std::unique_ptr<void, DocFree>;

}  // namespace test
