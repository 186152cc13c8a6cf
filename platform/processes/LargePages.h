#ifndef VORNIC_PLATFORM_PROCESSES_LARGE_PAGES_H
#define VORNIC_PLATFORM_PROCESSES_LARGE_PAGES_H

#include <cstddef>
#include <string>
#include <thread>

namespace vornic::platform {

/// Asks the system to back memory with large pages where it has any (madvise(2),
/// MADV_HUGEPAGE): a text of 50 MB is then touched for the first time in 25 steps instead of
/// 12,000. Nothing happens to memory that is small, and none of it is touched. Any thread.
void preferLargePages(void* memory, std::size_t size) noexcept;

/// `std::string::reserve` of memory that is preferably backed by large pages. What it raises passes
/// on.
void reserveInLargePages(std::string& text, std::size_t size);

/// Touches fresh memory ahead of who fills it from its beginning: the second half is made ready on
/// a thread (madvise(2), MADV_POPULATE_WRITE). Without a second processor, for less than a few
/// megabytes or more than a gigabyte, or on a system that cannot do it, nothing happens. What the
/// memory holds stays.
class PagesAhead {
  public:
    /// @param memory which nobody frees or moves before this has gone.
    PagesAhead(void* memory, std::size_t size);
    /// Waits.
    ~PagesAhead();
    PagesAhead(const PagesAhead&) = delete;
    PagesAhead& operator=(const PagesAhead&) = delete;

  private:
    std::thread thread_;
};

}  // namespace vornic::platform

#endif
