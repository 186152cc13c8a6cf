#ifndef VORNIC_TESTS_SUPPORT_TEXTS_SAMPLE_FILES_H
#define VORNIC_TESTS_SUPPORT_TEXTS_SAMPLE_FILES_H

#include <optional>
#include <string>
#include <vector>

namespace vornic::test {

/// The folder of real files that the environment variable `VORNIC_SAMPLES` names, or nothing when
/// it is not set.
[[nodiscard]] std::optional<std::string> samplesFolder();

/// The paths of all regular files in a folder and the folders in it, sorted.
[[nodiscard]] std::vector<std::string> filesBelow(const std::string& folder);

}  // namespace vornic::test

#endif
