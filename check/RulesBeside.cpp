#include "check/RulesBeside.h"

#include <system_error>
#include <utility>

#include "platform/crash/CrashStack.h"

namespace vornic {

RulesBeside::RulesBeside(bool onThread, const Findings& findings, Rules rules) {
    const auto run = [empty = findings.emptyCopy(), rules = std::move(rules)]() mutable {
        const platform::CrashStack crashStack;
        rules(empty);
        return std::move(empty);
    };
    if (onThread) {
        try {
            found_ = std::async(std::launch::async, run);
            return;
        } catch (const std::system_error&) {
            // The system has no thread to give.
        }
    }
    found_ = std::async(std::launch::deferred, run);
}

}  // namespace vornic
