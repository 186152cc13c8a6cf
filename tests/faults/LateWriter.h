#ifndef VORNIC_TESTS_FAULTS_LATE_WRITER_H
#define VORNIC_TESTS_FAULTS_LATE_WRITER_H

#include <string>
#include <string_view>

namespace vornic::test {

/// Another program that opens a file as soon as it may and writes it anew, in a process of its own.
class LateWriter {
  public:
    /// @param first written at once, `rest` when the run is over
    LateWriter(const std::string& path, std::string_view first, std::string_view rest);
    ~LateWriter();
    LateWriter(const LateWriter&) = delete;
    LateWriter& operator=(const LateWriter&) = delete;

    /// Lets it write the rest, and waits until it has ended.
    void finish();

  private:
    // The other process waits for the end of the one, and this one for the end of the other.
    int go_ = -1;
    int done_ = -1;
};

}  // namespace vornic::test

#endif
