#include "platform/processes/LargePages.h"

#include <cstdint>
#include <system_error>

#include <sys/mman.h>

namespace vornic::platform {

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20U;

}  // namespace

void preferLargePages(void* memory, std::size_t size) noexcept {
    // Only whole large pages count.
    const std::size_t before =
        (kLargePage - reinterpret_cast<std::uintptr_t>(memory) % kLargePage) % kLargePage;
    if (size < before + kLargePage) {
        return;
    }
    const std::size_t length = (size - before) / kLargePage * kLargePage;
    // A system without large pages refuses, and nothing is lost.
    static_cast<void>(madvise(static_cast<char*>(memory) + before, length, MADV_HUGEPAGE));
}

PagesAhead::PagesAhead(void* memory, std::size_t size) {
    constexpr std::size_t kWorthAThread = std::size_t{8} << 20U;
    // What a broken volume tells may be more than there is memory.
    constexpr std::size_t kLikely = std::size_t{1} << 30U;
    if (size < kWorthAThread || size > kLikely || std::thread::hardware_concurrency() < 2) {
        return;
    }
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (begin + size / 2) / kLargePage * kLargePage;
    const std::uintptr_t end = (begin + size) / kLargePage * kLargePage;
    try {
        thread_ = std::thread([first, end] {
            // Whoever fills the memory touches what this could not.
            static_cast<void>(
                madvise(reinterpret_cast<void*>(first), end - first, MADV_POPULATE_WRITE));
        });
    } catch (const std::system_error&) {
        // The system has no thread to give.
    }
}

PagesAhead::~PagesAhead() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

void reserveInLargePages(std::string& text, std::size_t size) {
    text.reserve(size);
    preferLargePages(text.data(), text.capacity());
}

}  // namespace vornic::platform
