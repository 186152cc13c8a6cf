#include "foundation/tasks/TaskOutput.h"

#include <utility>

namespace vornic {

void TaskOutput::addOutput(const std::string& chunk) {
    output_ += chunk;
    if (!error_.empty() && !errorEnded_) {
        ++error_.back().times;
    }
}

void TaskOutput::addError(std::string chunk) {
    if (chunk.empty()) {
        errorEnded_ = true;
    } else {
        error_.push_back({.bytes = std::move(chunk), .times = 1});
    }
}

std::string TaskOutput::error() const {
    std::string buffer;
    for (const Repeated& chunk : error_) {
        for (std::size_t time = 0; time < chunk.times; ++time) {
            buffer += chunk.bytes;
        }
    }
    return buffer;
}

std::string TaskOutput::result() && {
    return output_.empty() ? error() : std::move(output_);
}

}  // namespace vornic
