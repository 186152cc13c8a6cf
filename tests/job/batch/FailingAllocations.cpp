#include "tests/job/batch/FailingAllocations.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace vornic::test {

namespace {

constexpr std::size_t kNone = SIZE_MAX;

std::atomic<std::size_t> firstFailing = kNone;
std::atomic<std::size_t> lastFailing = kNone;
std::atomic<std::size_t> count = 0;
std::atomic<std::size_t> failures = 0;

bool fails() {
    const std::size_t number = count++;
    if (number < firstFailing || number > lastFailing) {
        return false;
    }
    ++failures;
    return true;
}

}  // namespace

FailingAllocations::FailingAllocations(std::size_t number, Which which) {
    lastFailing = which == Which::one ? number : kNone - 1;
    failures = 0;
    count = 0;
    firstFailing = number;
}

FailingAllocations::~FailingAllocations() {
    end();
}

void FailingAllocations::end() {
    firstFailing = kNone;
}

std::size_t FailingAllocations::made() {
    return count;
}

std::size_t FailingAllocations::failed() {
    return failures;
}

void* allocate(std::size_t size) noexcept {
    return fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

}  // namespace vornic::test

// The program's own operators. All of them, since a sanitizer brings its own for those that are
// left, which would not match. Those for larger alignments stay as they are, as pairs.

void* operator new(std::size_t size) {
    void* const memory = vornic::test::allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return vornic::test::allocate(size);
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
    std::free(memory);
}
