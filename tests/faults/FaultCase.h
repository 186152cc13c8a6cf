#ifndef VORNIC_TESTS_FAULTS_FAULT_CASE_H
#define VORNIC_TESTS_FAULTS_FAULT_CASE_H

#include <optional>
#include <string>

namespace vornic::test {

/// One thing to try: what goes wrong in which scene and where. As text, "scene/fault/where", it
/// repeats the case.
struct FaultCase {
    /// The name of a `SceneKind`.
    std::string scene;
    /// A name such as "EIO" or "kill-before".
    std::string fault;
    /// A call's place, an allocation's number, a limit: what the fault wants.
    std::string where;
    /// What stands at that place, for people.
    std::string what;
};

[[nodiscard]] inline std::string textOf(const FaultCase& tried) {
    return tried.scene + "/" + tried.fault + "/" + tried.where;
}

/// The case that a text names, or nothing.
[[nodiscard]] inline std::optional<FaultCase> faultCaseOf(const std::string& text) {
    const std::size_t first = text.find('/');
    const std::size_t second = text.find('/', first + 1);
    if (first == std::string::npos || second == std::string::npos) {
        return std::nullopt;
    }
    return FaultCase{.scene = text.substr(0, first),
                     .fault = text.substr(first + 1, second - first - 1),
                     .where = text.substr(second + 1),
                     .what = ""};
}

}  // namespace vornic::test

#endif
