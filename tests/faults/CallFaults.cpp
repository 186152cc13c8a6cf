#include "tests/faults/CallFaults.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <map>
#include <utility>

#include <sys/syscall.h>

namespace vornic::test {

namespace {

const std::map<std::string, int>& errorNumbers() {
    static const std::map<std::string, int> numbers = {
        {"EIO", EIO},       {"ENOSPC", ENOSPC}, {"EACCES", EACCES}, {"EINTR", EINTR},
        {"ENOMEM", ENOMEM}, {"EMFILE", EMFILE}, {"EAGAIN", EAGAIN}};
    return numbers;
}

constexpr std::string_view kFrom = "from-";
constexpr std::string_view kDone = "done-";

int errorNumberOf(const std::string& name) {
    const auto found = errorNumbers().find(name);
    return found == errorNumbers().end() ? 0 : found->second;
}

// True when a lasting fault of this kind strikes the call.
bool lastsFor(int errorNumber, const SystemCall& call) {
    const CallKind kind = kindOfCall(call.number);
    if (isOnStandardStream(call)) {
        return false;
    }
    switch (errorNumber) {
        case ENOMEM:
            return kind == CallKind::memory || kind == CallKind::thread;
        case EMFILE:
            return opensDescriptor(call.number);
        case ENOSPC:
            return takesRoom(call) && nameOfCall(call.number) != "close" &&
                   !nameOfCall(call.number).starts_with("rename");
        default:
            // Closing what is open does not ask the volume.
            return kind == CallKind::file && nameOfCall(call.number) != "close";
    }
}

}  // namespace

std::vector<std::string> killsFor(const SystemCall& call) {
    return kindOfCall(call.number) == CallKind::file
               ? std::vector<std::string>{"kill-before", "kill-after"}
               : std::vector<std::string>{"kill-before"};
}

std::vector<std::string> errorsFor(const SystemCall& call) {
    switch (kindOfCall(call.number)) {
        case CallKind::memory:
            return {"ENOMEM"};
        case CallKind::thread:
            return {"EAGAIN", "ENOMEM"};
        case CallKind::other:
            return {};
        case CallKind::file:
            break;
    }
    if (call.number == SYS_close) {
        // Whatever it reports, the descriptor is gone.
        return {"done-EIO", "done-ENOSPC", "done-EINTR"};
    }
    std::vector<std::string> errors = {"EIO", "EACCES", "ENOMEM"};
    if (takesRoom(call)) {
        errors.emplace_back("ENOSPC");
    }
    if (canBeInterrupted(call.number)) {
        errors.emplace_back("EINTR");
    }
    if (opensDescriptor(call.number)) {
        errors.emplace_back("EMFILE");
    }
    if (mayFailAfterwards(call.number)) {
        errors.emplace_back("done-EIO");
    }
    if (mayFallShort(call.number)) {
        errors.emplace_back("short");
    }
    return errors;
}

std::vector<std::string> lastingFor(const SystemCall& call) {
    std::vector<std::string> faults;
    for (const char* name : {"EIO", "ENOSPC", "EMFILE", "ENOMEM"}) {
        if (lastsFor(errorNumberOf(name), call)) {
            faults.push_back(std::string(kFrom) + name);
        }
    }
    return faults;
}

namespace {

// In another run, another call may have the place.
bool canStrike(const std::string& fault, const SystemCall& call) {
    for (const auto& faults : {killsFor(call), errorsFor(call), lastingFor(call)}) {
        if (std::find(faults.begin(), faults.end(), fault) != faults.end()) {
            return true;
        }
    }
    return false;
}

}  // namespace

CallFault::CallFault(std::string fault, CallPlace place)
    : fault_(std::move(fault)), place_(place) {}

Verdict CallFault::look(const SystemCall& call) {
    const bool lasts = struck_ && fault_.starts_with(kFrom);
    if (!lasts && (call.place != place_ || !canStrike(fault_, call))) {
        return {};
    }
    const Verdict verdict = verdictFor(call);
    if (!struck_) {
        struck_ = call;
    }
    return verdict;
}

bool CallFault::isDone() const {
    return struck_ && !fault_.starts_with(kFrom);
}

Verdict CallFault::verdictFor(const SystemCall& call) const {
    if (fault_ == "kill-before") {
        return {Verdict::Kind::killBefore};
    }
    if (fault_ == "kill-after") {
        return {Verdict::Kind::killAfter};
    }
    if (fault_ == "short") {
        return {Verdict::Kind::fallShort};
    }
    if (fault_.starts_with(kDone)) {
        return {Verdict::Kind::failAfter, errorNumberOf(fault_.substr(kDone.size()))};
    }
    const bool lasts = fault_.starts_with(kFrom);
    const int errorNumber = errorNumberOf(lasts ? fault_.substr(kFrom.size()) : fault_);
    if (errorNumber == 0 || (lasts && !lastsFor(errorNumber, call))) {
        return {};
    }
    return {Verdict::Kind::fail, errorNumber};
}

std::optional<CallPlace> callPlaceOf(const std::string& text) {
    CallPlace place;
    const char* end = text.data() + text.size();
    const auto thread = std::from_chars(text.data(), end, place.thread);
    if (thread.ec != std::errc() || thread.ptr == end || *thread.ptr != '.') {
        return std::nullopt;
    }
    const auto ordinal = std::from_chars(thread.ptr + 1, end, place.ordinal);
    return ordinal.ec == std::errc() && ordinal.ptr == end ? std::optional(place) : std::nullopt;
}

}  // namespace vornic::test
