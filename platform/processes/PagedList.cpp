#include "platform/processes/PagedList.h"

#include <algorithm>
#include <new>

#include <sys/mman.h>

#include "platform/processes/LargePages.h"

namespace vornic::platform {

namespace {

constexpr std::size_t kSmallest = std::size_t{64} << 10U;
// A large page is cleared when its first byte is written.
constexpr std::size_t kManyPages = std::size_t{4} << 20U;

}  // namespace

GrowingPages::~GrowingPages() {
    if (memory_ != nullptr) {
        munmap(memory_, size_);
    }
}

void GrowingPages::growTo(std::size_t size) {
    std::size_t wanted = std::max(kSmallest, 2 * size_);
    while (wanted < size) {
        wanted *= 2;
    }
    void* const grown = memory_ == nullptr ? mmap(nullptr, wanted, PROT_READ | PROT_WRITE,
                                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                                           : mremap(memory_, size_, wanted, MREMAP_MAYMOVE);
    if (grown == MAP_FAILED) {
        throw std::bad_alloc();
    }
    memory_ = grown;
    size_ = wanted;
    if (size_ >= kManyPages) {
        preferLargePages(memory_, size_);
    }
}

}  // namespace vornic::platform
