#ifndef VORNIC_FOUNDATION_TASKS_TASK_OUTPUT_H
#define VORNIC_FOUNDATION_TASKS_TASK_OUTPUT_H

#include <cstddef>
#include <string>
#include <vector>

namespace vornic {

/// What a tool has written to its two output streams, chunk by chunk. One thread at a time.
class TaskOutput {
  public:
    /// Takes a chunk of standard output. The last chunk of standard error, while that stream is
    /// open, is appended to the error buffer once more, so that the buffer may hold it many times.
    void addOutput(const std::string& chunk);
    /// Takes a chunk of standard error; an empty one is its end.
    void addError(std::string chunk);

    [[nodiscard]] const std::string& output() const { return output_; }
    /// The error buffer, with its repetitions.
    [[nodiscard]] std::string error() const;
    /// The output if there is any, else what was written to standard error.
    [[nodiscard]] std::string result() &&;

  private:
    /// Chunks repeat many times over where a tool writes lines after a message, hence each is kept
    /// once, with its count.
    struct Repeated {
        std::string bytes;
        std::size_t times = 1;
    };

    std::string output_;
    std::vector<Repeated> error_;
    bool errorEnded_ = false;
};

}  // namespace vornic

#endif
