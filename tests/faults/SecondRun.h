#ifndef VORNIC_TESTS_FAULTS_SECOND_RUN_H
#define VORNIC_TESTS_FAULTS_SECOND_RUN_H

#include <chrono>

#include "tests/faults/TracedProgram.h"

namespace vornic::test {

/// A program that runs beside a traced one.
class SecondRun {
  public:
    SecondRun(const ProgramStart& start, std::chrono::seconds longest);
    ~SecondRun();
    SecondRun(const SecondRun&) = delete;
    SecondRun& operator=(const SecondRun&) = delete;

    /// Waits until it has ended, but no longer than this.
    void waitFor(std::chrono::milliseconds longest) const;
    /// Waits for its end. Its status and signal alone are told.
    [[nodiscard]] ProgramEnd finish();

  private:
    int answer_ = -1;
};

}  // namespace vornic::test

#endif
