#include "tests/faults/SystemCall.h"

#include <algorithm>
#include <map>
#include <set>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vornic::test {

namespace {

const std::map<long, std::string>& fileCalls() {
    static const std::map<long, std::string> calls = {
        {SYS_access, "access"},
        {SYS_chdir, "chdir"},
        {SYS_chmod, "chmod"},
        {SYS_close, "close"},
        {SYS_copy_file_range, "copy_file_range"},
        {SYS_dup, "dup"},
        {SYS_dup2, "dup2"},
        {SYS_dup3, "dup3"},
        {SYS_faccessat, "faccessat"},
        {SYS_faccessat2, "faccessat2"},
        {SYS_fallocate, "fallocate"},
        {SYS_fchmod, "fchmod"},
        {SYS_fchmodat, "fchmodat"},
        {SYS_fchown, "fchown"},
        {SYS_fchownat, "fchownat"},
        {SYS_fcntl, "fcntl"},
        {SYS_fdatasync, "fdatasync"},
        {SYS_fgetxattr, "fgetxattr"},
        {SYS_flistxattr, "flistxattr"},
        {SYS_flock, "flock"},
        {SYS_fremovexattr, "fremovexattr"},
        {SYS_fsetxattr, "fsetxattr"},
        {SYS_fstat, "fstat"},
        {SYS_fstatfs, "fstatfs"},
        {SYS_fsync, "fsync"},
        {SYS_ftruncate, "ftruncate"},
        {SYS_getcwd, "getcwd"},
        {SYS_getdents64, "getdents64"},
        {SYS_getxattr, "getxattr"},
        {SYS_ioctl, "ioctl"},
        {SYS_lgetxattr, "lgetxattr"},
        {SYS_link, "link"},
        {SYS_linkat, "linkat"},
        {SYS_listxattr, "listxattr"},
        {SYS_llistxattr, "llistxattr"},
        {SYS_lseek, "lseek"},
        {SYS_lsetxattr, "lsetxattr"},
        {SYS_lstat, "lstat"},
        {SYS_mkdir, "mkdir"},
        {SYS_mkdirat, "mkdirat"},
        {SYS_newfstatat, "newfstatat"},
        {SYS_open, "open"},
        {SYS_openat, "openat"},
        {SYS_openat2, "openat2"},
        {SYS_pipe2, "pipe2"},
        {SYS_poll, "poll"},
        {SYS_pread64, "pread64"},
        {SYS_pwrite64, "pwrite64"},
        {SYS_read, "read"},
        {SYS_readlink, "readlink"},
        {SYS_readlinkat, "readlinkat"},
        {SYS_rename, "rename"},
        {SYS_renameat, "renameat"},
        {SYS_renameat2, "renameat2"},
        {SYS_rmdir, "rmdir"},
        {SYS_sendfile, "sendfile"},
        {SYS_setxattr, "setxattr"},
        {SYS_stat, "stat"},
        {SYS_statfs, "statfs"},
        {SYS_statx, "statx"},
        {SYS_symlink, "symlink"},
        {SYS_symlinkat, "symlinkat"},
        {SYS_sync_file_range, "sync_file_range"},
        {SYS_unlink, "unlink"},
        {SYS_unlinkat, "unlinkat"},
        {SYS_utimensat, "utimensat"},
        {SYS_write, "write"},
        {SYS_writev, "writev"},
    };
    return calls;
}

const std::map<long, std::string>& otherCalls() {
    static const std::map<long, std::string> calls = {
        {SYS_brk, "brk"},           {SYS_mmap, "mmap"},
        {SYS_mprotect, "mprotect"}, {SYS_mremap, "mremap"},
        {SYS_munmap, "munmap"},     {SYS_clone, "clone"},
        {SYS_clone3, "clone3"},     {SYS_getrandom, "getrandom"},
        {SYS_futex, "futex"},       {SYS_exit_group, "exit_group"},
    };
    return calls;
}

bool isAnyOf(long number, const std::set<long>& calls) {
    return calls.contains(number);
}

}  // namespace

std::string textOf(CallPlace place) {
    return std::to_string(place.thread) + "." + std::to_string(place.ordinal);
}

std::string nameOfCall(long number) {
    for (const auto* calls : {&fileCalls(), &otherCalls()}) {
        if (const auto found = calls->find(number); found != calls->end()) {
            return found->second;
        }
    }
    return "call " + std::to_string(number);
}

std::string textOf(const SystemCall& call) {
    return nameOfCall(call.number) + (call.paths.empty() ? "" : " " + call.paths);
}

CallKind kindOfCall(long number) {
    if (fileCalls().contains(number)) {
        return CallKind::file;
    }
    if (isAnyOf(number, {SYS_brk, SYS_mmap, SYS_mprotect, SYS_mremap})) {
        return CallKind::memory;
    }
    return isAnyOf(number, {SYS_clone, SYS_clone3}) ? CallKind::thread : CallKind::other;
}

bool opensDescriptor(long number) {
    return isAnyOf(number,
                   {SYS_open, SYS_openat, SYS_openat2, SYS_dup, SYS_dup2, SYS_dup3, SYS_pipe2});
}

bool takesRoom(const SystemCall& call) {
    if (call.number == SYS_openat) {
        return (call.arguments[2] & O_CREAT) != 0;
    }
    return isAnyOf(
        call.number,
        {SYS_write,  SYS_pwrite64,  SYS_writev,   SYS_copy_file_range, SYS_sendfile, SYS_fallocate,
         SYS_fsync,  SYS_fdatasync, SYS_close,    SYS_fsetxattr,       SYS_setxattr, SYS_lsetxattr,
         SYS_mkdir,  SYS_mkdirat,   SYS_link,     SYS_linkat,          SYS_symlink,  SYS_symlinkat,
         SYS_rename, SYS_renameat,  SYS_renameat2});
}

bool canBeInterrupted(long number) {
    return isAnyOf(
        number, {SYS_open, SYS_openat, SYS_openat2, SYS_read, SYS_pread64, SYS_write, SYS_pwrite64,
                 SYS_writev, SYS_close, SYS_fsync, SYS_fdatasync, SYS_flock, SYS_fcntl,
                 SYS_ftruncate, SYS_copy_file_range, SYS_sendfile, SYS_fallocate, SYS_poll});
}

bool mayFailAfterwards(long number) {
    return isAnyOf(number, {SYS_rename, SYS_renameat, SYS_renameat2, SYS_unlink, SYS_unlinkat,
                            SYS_link, SYS_linkat, SYS_mkdir, SYS_fsetxattr, SYS_fchmod, SYS_fsync});
}

bool mayFallShort(long number) {
    return isAnyOf(number, {SYS_read, SYS_pread64, SYS_write, SYS_pwrite64});
}

bool isOnStandardStream(const SystemCall& call) {
    return isAnyOf(call.number, {SYS_write, SYS_writev, SYS_fstat, SYS_ioctl, SYS_fcntl, SYS_close,
                                 SYS_lseek}) &&
           (call.arguments[0] == STDOUT_FILENO || call.arguments[0] == STDERR_FILENO);
}

}  // namespace vornic::test
