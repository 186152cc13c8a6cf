// Loaded before the C library into a program under test: makes allocations fail. Which ones is
// written in the file that the environment names, beside the numbers of those that were made. Can
// also make it later than it is.

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <unwind.h>

#include "tests/faults/AllocationPlan.h"

extern "C" {
// The C library's own names for what stands in front of them here.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

using vornic::test::AllocationPlan;

AllocationPlan* plan = nullptr;

[[gnu::constructor]] void findPlan() {
    const char* path = std::getenv(vornic::test::kAllocationPlanVariable);
    const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
    if (file < 0) {
        return;
    }
    void* mapped =
        mmap(nullptr, sizeof(AllocationPlan), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    plan = mapped == MAP_FAILED ? nullptr : static_cast<AllocationPlan*>(mapped);
}

_Unwind_Reason_Code lookAtFrame(_Unwind_Context* context, void* found) {
    Dl_info info{};
    void* address = reinterpret_cast<void*>(_Unwind_GetIP(context));
    if (dladdr(address, &info) != 0 && std::strstr(info.dli_fname, "libplist") != nullptr) {
        *static_cast<bool*>(found) = true;
    }
    return _URC_NO_REASON;
}

bool isForLibplist() {
    bool found = false;
    _Unwind_Backtrace(lookAtFrame, &found);
    return found;
}

bool isToFail() {
    const bool isMain = getpid() == static_cast<pid_t>(syscall(SYS_gettid));
    const std::size_t thread = isMain ? 0 : 1;
    const std::uint64_t number = plan->made[thread]++;
    // When all fail from one on, those of the other threads do so too.
    if (plan->all != 0 && plan->failed != 0) {
        return true;
    }
    if (plan->thread != thread || plan->number != number) {
        return false;
    }
    ++plan->failed;
    return true;
}

bool fails() {
    // What is looked up meanwhile may allocate too.
    static thread_local bool isLooking = false;
    if (plan == nullptr || isLooking || !isToFail()) {
        return false;
    }
    isLooking = true;
    plan->ofLibplist += isForLibplist() ? 1 : 0;
    isLooking = false;
    return true;
}

void* outOfMemory() {
    errno = ENOMEM;
    return nullptr;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    return fails() ? outOfMemory() : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    return fails() ? outOfMemory() : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    return fails() ? outOfMemory() : __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return fails() ? outOfMemory() : __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    if (fails()) {
        return ENOMEM;
    }
    *memory = __libc_memalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}

time_t time(time_t* result) noexcept {
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    const char* later = std::getenv(vornic::test::kLaterVariable);
    const time_t told = now.tv_sec + (later == nullptr ? 0 : std::strtol(later, nullptr, 10));
    if (result != nullptr) {
        *result = told;
    }
    return told;
}
}
