#include "platform/crash/CrashBacktrace.h"

#include <array>
#include <cstdint>
#include <string_view>

#include <sys/uio.h>
#include <ucontext.h>
#include <unistd.h>
#include <unwind.h>

#include "platform/crash/LoadedModule.h"

namespace vornic::platform {
namespace {

constexpr std::size_t kAddressDigits = 2 * sizeof(std::uintptr_t);

/// The registers that tell where the signal came; zeros on a machine that is not known here.
struct Place {
    std::uintptr_t instruction = 0;
    /// Where a function that has just been entered will return to.
    std::uintptr_t returnAddress = 0;
};

/// A word of this process's memory, or 0 when nothing is there.
[[maybe_unused]] std::uintptr_t wordAt(std::uintptr_t address) {
    std::uintptr_t word = 0;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the address is a register's value
    iovec there{.iov_base = reinterpret_cast<void*>(address), .iov_len = sizeof word};
    iovec here{.iov_base = &word, .iov_len = sizeof word};
    const bool isRead = process_vm_readv(getpid(), &here, 1, &there, 1, 0) == sizeof word;
    return isRead ? word : 0;
}

Place placeOf([[maybe_unused]] const void* signalContext) {
#if defined(__x86_64__)
    const mcontext_t& registers = static_cast<const ucontext_t*>(signalContext)->uc_mcontext;
    return {.instruction = static_cast<std::uintptr_t>(registers.gregs[REG_RIP]),
            .returnAddress = wordAt(static_cast<std::uintptr_t>(registers.gregs[REG_RSP]))};
#elif defined(__aarch64__)
    const mcontext_t& registers = static_cast<const ucontext_t*>(signalContext)->uc_mcontext;
    return {.instruction = registers.pc, .returnAddress = registers.regs[30]};
#else
    return {};
#endif
}

/// Writes frames one after the other.
class FrameWriter {
  public:
    explicit FrameWriter(SignalSafeWriter& writer) : writer_(writer) {}

    /// @param address where the frame goes on
    /// @param within an address inside the instruction that it is at, which for a call is the one
    /// before
    void write(std::uintptr_t address, std::uintptr_t within) {
        writer_.decimal(count_++).text("  ").hexadecimal(address, kAddressDigits);
        if (module_.contains(within) || module_.find(within)) {
            writer_.text("  ").text(module_.path()).text(" + ");
            writer_.hexadecimal(module_.offsetOf(address));
            std::array<char, 512> name;
            const std::size_t length =
                module_.findSymbol(module_.offsetOf(within), name.data(), name.size());
            writer_.text(length > 0 ? "  " : "").text({name.data(), length});
        }
        writer_.text("\n").flush();
    }
    [[nodiscard]] unsigned count() const { return count_; }
    [[nodiscard]] SignalSafeWriter& writer() { return writer_; }

  private:
    SignalSafeWriter& writer_;
    LoadedModule module_;
    unsigned count_ = 0;
};

/// What goes from frame to frame while the stack is walked.
struct Walk {
    FrameWriter& frames;
    /// The innermost frame, which is written already; those before it are the handler's own.
    std::uintptr_t start;
    bool isReached;
};

_Unwind_Reason_Code visitFrame(_Unwind_Context* context, void* argument) {
    Walk& walk = *static_cast<Walk*>(argument);
    int isAtInstruction = 0;
    const std::uintptr_t address = _Unwind_GetIPInfo(context, &isAtInstruction);
    if (!walk.isReached) {
        walk.isReached = address == walk.start;
        return _URC_NO_REASON;
    }
    if (address == 0) {
        return _URC_END_OF_STACK;
    }
    if (walk.frames.count() == kMostCrashFrames) {
        walk.frames.writer().text("Further frames are left out.\n");
        return _URC_END_OF_STACK;
    }
    walk.frames.write(address, isAtInstruction != 0 ? address : address - 1);
    return _URC_NO_REASON;
}

bool isCode(std::uintptr_t address) {
    LoadedModule module;
    return module.find(address) && module.isExecutable();
}

}  // namespace

void writeCrashBacktrace(SignalSafeWriter& writer, const void* signalContext) {
    FrameWriter frames(writer);
    const Place place = placeOf(signalContext);
    if (place.instruction != 0 || place.returnAddress != 0) {
        frames.write(place.instruction, place.instruction);
        if (!isCode(place.instruction)) {
            // A jump into nowhere: only who made it can be told.
            frames.write(place.returnAddress, place.returnAddress - 1);
            return;
        }
    }
    Walk walk{.frames = frames, .start = place.instruction, .isReached = frames.count() == 0};
    _Unwind_Backtrace(visitFrame, &walk);
}

}  // namespace vornic::platform
