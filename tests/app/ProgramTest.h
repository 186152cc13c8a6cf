#ifndef VORNIC_TESTS_APP_PROGRAM_TEST_H
#define VORNIC_TESTS_APP_PROGRAM_TEST_H

#include <gtest/gtest.h>

#include "tests/app/ProgramFiles.h"
#include "tests/app/TestMaterial.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::test {

/// A whole-program test. The programs, and the test with them, run as an unprivileged user even
/// when the tests were started as root.
class ProgramTest : public ::testing::Test {
  protected:
    TestMaterial material;

  private:
    Unprivileged unprivileged_;

  protected:
    ProgramFiles files{material};
};

}  // namespace vornic::test

#endif
