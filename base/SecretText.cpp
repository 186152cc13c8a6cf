#include "base/SecretText.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

namespace vornic::platform {
namespace {

std::size_t wholePages(std::size_t length) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (length + page - 1) / page * page;
}

}  // namespace

SecretText::SecretText(std::string_view text) : length_(text.size()) {
    if (text.empty()) {
        return;
    }
    const std::size_t size = wholePages(text.size());
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {  // NOLINT: as the system's header has it
        throw std::bad_alloc();
    }
    mapped_ = size;
    bytes_ = static_cast<char*>(memory);
    // A limit on locked memory is no reason to refuse a password.
    static_cast<void>(mlock(memory, size));
    static_cast<void>(madvise(memory, size, MADV_DONTDUMP));
    static_cast<void>(madvise(memory, size, MADV_DONTFORK));
    std::copy(text.begin(), text.end(), bytes_);
}

SecretText::SecretText(std::string&& text) : SecretText(std::string_view(text)) {
    explicit_bzero(text.data(), text.capacity());
    text.clear();
}

SecretText::SecretText(SecretText&& other) noexcept
    : bytes_(std::exchange(other.bytes_, nullptr)),
      length_(std::exchange(other.length_, 0)),
      mapped_(std::exchange(other.mapped_, 0)) {}

SecretText& SecretText::operator=(SecretText&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(length_, other.length_);
    std::swap(mapped_, other.mapped_);
    return *this;
}

void SecretText::wipe() {
    if (bytes_ != nullptr) {
        explicit_bzero(bytes_, mapped_);
        munmap(bytes_, mapped_);
    }
    bytes_ = nullptr;
    length_ = 0;
    mapped_ = 0;
}

}  // namespace vornic::platform
