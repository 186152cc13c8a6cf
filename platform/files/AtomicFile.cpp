#include "platform/files/AtomicFile.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/TemporaryFile.h"
#include "platform/items/FileMetadata.h"

namespace vornic::platform {

struct AtomicFile::State : TemporaryFile {
    /// @return 0 or the errno value.
    [[nodiscard]] int takeName(Durability durability);
    [[nodiscard]] int putInPlace(Durability durability, FileIdentity& identity);
};

// Gives the temporary file the name of the target. File systems take a rename over another file for
// a program that wants its data safe, and send them to the disk; an exchange writes nothing.
int AtomicFile::State::takeName(Durability durability) {
    if (durability == Durability::passing) {
        if (const int errorNumber = becomeExchangeable(); errorNumber != 0) {
            return errorNumber;
        }
    }
    const auto exchange = [this] {
        return renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) ==
               0;
    };
    if (durability == Durability::passing && exchange()) {
        if (unlink(temporary.c_str()) == 0) {
            temporary.clear();
            return 0;
        }
        // What has come in the target's place meanwhile, a folder say, stays there.
        const int errorNumber = errno;
        static_cast<void>(exchange());
        return errorNumber;
    }
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        return errno;
    }
    temporary.clear();
    return 0;
}

int AtomicFile::State::putInPlace(Durability durability, FileIdentity& identity) {
    struct stat status {};
    if (old && fstat(old.get(), &status) == 0) {
        copyOwnerAttributesAndMode(old.get(), status, file.get());
    }
    int errorNumber = durability == Durability::synced ? synchronize(file.get()) : 0;
    identity = identityOf(file.get());
    const int closeError = file.close();
    if (errorNumber == 0) {
        errorNumber = closeError;
    }
    if (errorNumber != 0) {
        return errorNumber;
    }
    errorNumber = takeName(durability);
    if (errorNumber != 0) {
        return errorNumber;
    }
    if (durability == Durability::synced) {
        // The new contents are in place and safe on the disk; a folder that cannot be synced can
        // at worst bring the old ones back after a loss of power, so that this is no failure.
        static_cast<void>(synchronizeFolder(parentFolder(target)));
    }
    return 0;
}

AtomicFile::AtomicFile() = default;
AtomicFile::~AtomicFile() = default;

bool AtomicFile::open(const std::string& path, ErrorSlot& error) {
    identity_.reset();
    state_ = std::make_unique<State>();
    if (state_->open(path, error)) {
        removeDeadTemporaries(parentFolder(state_->target));
        return true;
    }
    state_.reset();
    return false;
}

bool AtomicFile::write(std::string_view bytes, ErrorSlot& error) {
    if (!state_) {
        error = posixError("Nothing can be written", EBADF);
        return false;
    }
    const int errorNumber = writeAll(state_->file.get(), bytes.data(), bytes.size());
    if (errorNumber == 0) {
        return true;
    }
    failFile(error, state_->path, "written", errorNumber);
    abort();
    return false;
}

bool AtomicFile::commit(Durability durability, ErrorSlot& error) {
    if (!state_) {
        error = posixError("Nothing can be written", EBADF);
        return false;
    }
    FileIdentity identity;
    const int errorNumber = state_->putInPlace(durability, identity);
    if (errorNumber == 0) {
        identity_ = identity;
    } else {
        failFile(error, state_->path, "written", errorNumber);
    }
    abort();
    return errorNumber == 0;
}

void AtomicFile::abort() {
    state_.reset();
}

bool writeFileAtomically(const std::string& path, std::string_view bytes, Durability durability,
                         ErrorSlot& error) {
    AtomicFile file;
    return file.open(path, error) && file.write(bytes, error) && file.commit(durability, error);
}

}  // namespace vornic::platform
