#ifndef VORNIC_TESTS_SUPPORT_MACHINE_HELD_FILE_H
#define VORNIC_TESTS_SUPPORT_MACHINE_HELD_FILE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>

struct fuse_session;

namespace vornic::test {

/// A volume with one readable file of zero bytes, "file", whose reads the test decides on: they can
/// be held up, cut short or made to fail. Needs `PrivateMounts` that are available.
class HeldFile {
  public:
    /// Called for each read of the file, on a thread of its own.
    /// @return how many bytes there are to be read, or minus an errno value.
    using Read = std::function<std::int64_t(std::uint64_t offset, std::size_t size)>;

    /// @param folder that exists, over which the volume is mounted
    /// @param size that the file is told to have
    HeldFile(std::string folder, std::uint64_t size, Read read);
    ~HeldFile();
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    /// False where the system has no such volumes.
    [[nodiscard]] bool isAvailable() const { return mounted_; }
    [[nodiscard]] std::string path() const { return folder_ + "/file"; }
    [[nodiscard]] std::uint64_t size() const { return size_; }
    [[nodiscard]] const Read& read() const { return read_; }

  private:
    std::string folder_;
    std::uint64_t size_;
    Read read_;
    fuse_session* session_ = nullptr;
    bool mounted_ = false;
    std::thread server_;
};

}  // namespace vornic::test

#endif
