#include "tests/support/machine/HeldFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <linux/fuse.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace vornic::test {

namespace {

constexpr std::uint64_t kFile = 2;
constexpr std::uint32_t kLargestWrite = 1U << 17U;
constexpr std::uint64_t kForAnHour = 3600;

struct fuse_attr attributesOf(std::uint64_t node, std::uint64_t size) {
    struct fuse_attr attributes {};
    attributes.ino = node;
    attributes.mode = node == kFile ? S_IFREG | 0644U : S_IFDIR | 0755U;
    attributes.size = node == kFile ? size : 0;
    attributes.nlink = 1;
    attributes.blksize = 4096;
    return attributes;
}

template <typename Structure>
Structure bodyAs(const char* body) {
    Structure structure{};
    std::memcpy(&structure, body, sizeof structure);
    return structure;
}

}  // namespace

HeldFile::HeldFile(std::string folder, std::uint64_t size, Read read)
    : folder_(std::move(folder)),
      size_(size),
      read_(std::move(read)),
      device_(open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
    const std::string options =
        "fd=" + std::to_string(device_) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
    mounted_ = device_ >= 0 && mount("held-file", folder_.c_str(), "fuse", MS_NODEV | MS_NOSUID,
                                     options.c_str()) == 0;
    if (mounted_) {
        server_ = std::thread([this] { serve(); });
    }
}

HeldFile::~HeldFile() {
    if (mounted_) {
        umount2(folder_.c_str(), MNT_DETACH);
        server_.join();
    }
    close(device_);
}

void HeldFile::serve() {
    std::vector<char> request(kLargestWrite + 4096);
    for (;;) {
        const ssize_t length = ::read(device_, request.data(), request.size());
        if (length < 0 && (errno == EINTR || errno == EAGAIN || errno == ENOENT)) {
            continue;
        }
        if (length < static_cast<ssize_t>(sizeof(fuse_in_header))) {
            return;  // unmounted
        }
        answer(bodyAs<fuse_in_header>(request.data()), request.data() + sizeof(fuse_in_header));
    }
}

void HeldFile::reply(std::uint64_t request, int errorNumber, const void* body,
                     std::size_t size) const {
    struct fuse_out_header header {};
    header.unique = request;
    header.error = -errorNumber;
    header.len = static_cast<std::uint32_t>(sizeof header + size);
    std::array<struct iovec, 2> parts{{{&header, sizeof header}, {const_cast<void*>(body), size}}};
    static_cast<void>(writev(device_, parts.data(), parts.size()));
}

void HeldFile::answer(const fuse_in_header& request, const char* body) {
    switch (request.opcode) {
        case FUSE_INIT: {
            const auto offer = bodyAs<fuse_init_in>(body);
            struct fuse_init_out agreed {};
            agreed.major = FUSE_KERNEL_VERSION;
            agreed.minor = FUSE_KERNEL_MINOR_VERSION;
            agreed.max_readahead = offer.max_readahead;
            agreed.max_write = kLargestWrite;
            return reply(request.unique, 0, &agreed, sizeof agreed);
        }
        case FUSE_LOOKUP: {
            if (std::strcmp(body, "file") != 0) {
                return reply(request.unique, ENOENT, nullptr, 0);
            }
            struct fuse_entry_out entry {};
            entry.nodeid = kFile;
            entry.entry_valid = kForAnHour;
            entry.attr_valid = kForAnHour;
            entry.attr = attributesOf(kFile, size_);
            return reply(request.unique, 0, &entry, sizeof entry);
        }
        case FUSE_GETATTR: {
            struct fuse_attr_out attributes {};
            attributes.attr_valid = kForAnHour;
            attributes.attr = attributesOf(request.nodeid, size_);
            return reply(request.unique, 0, &attributes, sizeof attributes);
        }
        case FUSE_OPEN: {
            struct fuse_open_out opened {};
            // Each read of the program is one of the file.
            opened.open_flags = FOPEN_DIRECT_IO;
            return reply(request.unique, 0, &opened, sizeof opened);
        }
        case FUSE_READ: {
            const auto wish = bodyAs<fuse_read_in>(body);
            const std::int64_t count = read_(wish.offset, wish.size);
            const std::vector<char> zeros(count > 0 ? static_cast<std::size_t>(count) : 0);
            return reply(request.unique, count < 0 ? static_cast<int>(-count) : 0, zeros.data(),
                         zeros.size());
        }
        case FUSE_FLUSH:
        case FUSE_RELEASE:
        case FUSE_ACCESS:
            return reply(request.unique, 0, nullptr, 0);
        case FUSE_FORGET:
        case FUSE_BATCH_FORGET:
        case FUSE_INTERRUPT:
            return;
        default:
            return reply(request.unique, ENOSYS, nullptr, 0);
    }
}

}  // namespace vornic::test
