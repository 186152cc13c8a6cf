#include "platform/processes/LargePages.h"

#include <cstdint>

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

void reserveInLargePages(std::string& text, std::size_t size) {
    text.reserve(size);
    preferLargePages(text.data(), text.capacity());
}

}  // namespace vornic::platform
