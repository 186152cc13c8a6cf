#ifndef VORNIC_PLATFORM_PROCESSES_LARGE_PAGES_H
#define VORNIC_PLATFORM_PROCESSES_LARGE_PAGES_H

#include <cstddef>
#include <string>

namespace vornic::platform {

/// Asks the system to back memory with large pages where it has any (madvise(2),
/// MADV_HUGEPAGE): a text of 50 MB is then touched for the first time in 25 steps instead of
/// 12,000. Nothing happens to memory that is small, and none of it is touched. Any thread.
void preferLargePages(void* memory, std::size_t size) noexcept;

/// `std::string::reserve` of memory that is preferably backed by large pages. What it raises passes
/// on.
void reserveInLargePages(std::string& text, std::size_t size);

}  // namespace vornic::platform

#endif
