#include "tests/support/machine/HeldFile.h"

#include <cerrno>
#include <string_view>
#include <vector>

#define FUSE_USE_VERSION 312
#include <fuse_lowlevel.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace vornic::test {

namespace {

constexpr fuse_ino_t kFile = 2;
constexpr double kForAnHour = 3600;

const HeldFile& fileOf(fuse_req_t request) {
    return *static_cast<const HeldFile*>(fuse_req_userdata(request));
}

struct stat attributes(fuse_ino_t node, std::uint64_t size) {
    struct stat status {};
    status.st_ino = node;
    status.st_mode = node == kFile ? S_IFREG | 0644U : S_IFDIR | 0755U;
    status.st_size = node == kFile ? static_cast<off_t>(size) : 0;
    status.st_nlink = 1;
    status.st_blksize = 4096;
    return status;
}

void lookUp(fuse_req_t request, fuse_ino_t, const char* name) {
    if (std::string_view(name) != "file") {
        fuse_reply_err(request, ENOENT);
        return;
    }
    fuse_entry_param entry{};
    entry.ino = kFile;
    entry.attr = attributes(kFile, fileOf(request).size());
    entry.attr_timeout = entry.entry_timeout = kForAnHour;
    fuse_reply_entry(request, &entry);
}

void tellAttributes(fuse_req_t request, fuse_ino_t node, fuse_file_info*) {
    const struct stat status = attributes(node, fileOf(request).size());
    fuse_reply_attr(request, &status, kForAnHour);
}

void openFile(fuse_req_t request, fuse_ino_t, fuse_file_info* info) {
    // Each read of the program is one of the file.
    info->direct_io = 1;
    fuse_reply_open(request, info);
}

void readFile(fuse_req_t request, fuse_ino_t, std::size_t size, off_t offset, fuse_file_info*) {
    const std::int64_t count = fileOf(request).read()(static_cast<std::uint64_t>(offset), size);
    if (count < 0) {
        fuse_reply_err(request, static_cast<int>(-count));
        return;
    }
    const std::vector<char> zeros(static_cast<std::size_t>(count));
    fuse_reply_buf(request, zeros.data(), zeros.size());
}

fuse_lowlevel_ops operations() {
    fuse_lowlevel_ops answers{};
    answers.lookup = lookUp;
    answers.getattr = tellAttributes;
    answers.open = openFile;
    answers.read = readFile;
    return answers;
}

}  // namespace

HeldFile::HeldFile(std::string folder, std::uint64_t size, Read read)
    : folder_(std::move(folder)), size_(size), read_(std::move(read)) {
    std::string program = "held-file";
    std::string option = "-oallow_other";
    char* arguments[]{program.data(), option.data(), nullptr};
    fuse_args taken FUSE_ARGS_INIT(2, arguments);
    const fuse_lowlevel_ops answers = operations();
    session_ = fuse_session_new(&taken, &answers, sizeof answers, this);
    fuse_opt_free_args(&taken);
    mounted_ = session_ != nullptr && fuse_session_mount(session_, folder_.c_str()) == 0;
    if (mounted_) {
        server_ = std::thread([this] { fuse_session_loop(session_); });
    }
}

HeldFile::~HeldFile() {
    if (mounted_) {
        // The loop ends when nothing can be asked any more.
        umount2(folder_.c_str(), MNT_DETACH);
        server_.join();
        fuse_session_unmount(session_);
    }
    if (session_ != nullptr) {
        fuse_session_destroy(session_);
    }
}

}  // namespace vornic::test
