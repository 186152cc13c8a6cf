#include "tests/support/fakes/FailingSystemCall.h"

#include <future>
#include <memory>
#include <thread>
#include <utility>

#include <seccomp.h>

namespace vornic::test {

namespace {

class Filter {
  public:
    /// Answers one system call, or only those of its calls that have any of the flags.
    bool answer(std::uint32_t action, long number, std::uint32_t flags = 0, unsigned argument = 0) {
        const int call = static_cast<int>(number);
        if (flags == 0) {
            return context_ && seccomp_rule_add(context_.get(), action, call, 0) == 0;
        }
        bool isAdded = context_ != nullptr;
        for (std::uint64_t bit = 1; bit <= flags; bit <<= 1U) {
            if ((flags & bit) != 0 && isAdded) {
                const scmp_arg_cmp hasBit{
                    .arg = argument, .op = SCMP_CMP_MASKED_EQ, .datum_a = bit, .datum_b = bit};
                isAdded = seccomp_rule_add_array(context_.get(), action, call, 1, &hasBit) == 0;
            }
        }
        return isAdded;
    }

    bool load() { return seccomp_load(context_.get()) == 0; }
    /// The descriptor that tells of calls which are notified, or -1.
    int listener() { return seccomp_notify_fd(context_.get()); }

  private:
    struct Release {
        void operator()(void* context) const { seccomp_release(context); }
    };
    std::unique_ptr<void, Release> context_{seccomp_init(SCMP_ACT_ALLOW)};
};

/// Answers calls until the descriptor tells of none any more.
void answerCalls(int listener, const std::function<int()>& act) {
    seccomp_notif* call = nullptr;
    seccomp_notif_resp* answer = nullptr;
    if (listener < 0 || seccomp_notify_alloc(&call, &answer) != 0) {
        return;
    }
    for (;;) {
        *call = {};  // the kernel takes no other
        if (seccomp_notify_receive(listener, call) != 0) {
            break;
        }
        answer->id = call->id;
        answer->val = 0;
        answer->error = -act();
        answer->flags = answer->error == 0 ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
        if (seccomp_notify_respond(listener, answer) != 0) {
            break;
        }
    }
    seccomp_notify_free(call, answer);
}

}  // namespace

bool failSystemCall(long number, int errorNumber, std::uint32_t flags, unsigned argument) {
    Filter filter;
    return filter.answer(SCMP_ACT_ERRNO(static_cast<std::uint32_t>(errorNumber)), number, flags,
                         argument) &&
           filter.load();
}

bool interceptSystemCall(long number, std::function<int()> act) {
    std::promise<int> loaded;
    // Started before the filter, which it is therefore not under.
    std::thread([listener = loaded.get_future(), act = std::move(act)]() mutable {
        answerCalls(listener.get(), act);
    }).detach();
    Filter filter;
    const bool isLoaded = filter.answer(SCMP_ACT_NOTIFY, number) && filter.load();
    const int listener = isLoaded ? filter.listener() : -1;
    loaded.set_value(listener);
    return listener >= 0;
}

bool failSystemCallOnce(long number, int errorNumber) {
    return interceptSystemCall(number,
                               [errorNumber]() mutable { return std::exchange(errorNumber, 0); });
}

}  // namespace vornic::test
