// binding_fixture.h: tests of the binding of records: nothing is registered, and nothing has failed.
#pragma once

#include <gtest/gtest.h>

#include "log_capture.h"
#include "stt.h"

namespace test {

// A function as fields of records and files are given it.
template <class F>
void *untyped(F *f) {
  return reinterpret_cast<void *>(f);
}

class EmptyBinding : public testing::Test {
 protected:
  void SetUp() override {
    sttEnd();
    nGRet = 0;
    clearLog();
  }
  void TearDown() override { sttEnd(); }
};

}  // namespace test
