#include "job/Journal.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <set>
#include <sstream>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/RandomBytes.h"
#include "platform/settings/Directories.h"
#include "platform/settings/OwnFolder.h"

namespace vornic {
namespace {

/// The lock for writing; the numbers of entries are larger.
constexpr std::uint64_t kWriter = 0;
constexpr std::chrono::seconds kWriterLimit{10};
constexpr std::chrono::milliseconds kNoWaiting{0};

bool fail(ErrorSlot& error, const std::string& path, const char* verb, int errorNumber) {
    error = posixError("The journal " + path + " cannot be " + verb, errorNumber);
    return false;
}

void failBecauseForeign(ErrorSlot& error, const std::string& path) {
    error = Error{
        .domain = std::string(kPosixErrorDomain),
        .code = EPERM,
        .description = "The journal " + path + " cannot be used: it belongs to somebody else."};
}

/// Root leaves nothing in the home of a user, who could not write it afterwards.
bool isInAnothersHome(std::string folder) {
    struct stat status {};
    bool isForeign = false;
    for (; geteuid() == 0 && !isForeign && folder.size() > 1; folder = parentFolder(folder)) {
        isForeign = stat(folder.c_str(), &status) == 0 && status.st_uid != 0;
    }
    return isForeign;
}

std::int64_t now() {
    return static_cast<std::int64_t>(std::time(nullptr));
}

std::uint64_t newId() {
    std::uint64_t id = 0;
    while (id <= kWriter) {
        std::array<unsigned char, sizeof id> bytes{};
        platform::fillWithRandomBytes(bytes.data(), bytes.size());
        std::memcpy(&id, bytes.data(), sizeof id);
        id >>= 2U;  // fits the range of a lock
    }
    return id;
}

/// A last line that a crash has torn must not swallow the one that is written now.
bool endsInTheMiddleOfALine(int file) {
    struct stat status {};
    char last = '\n';
    return fstat(file, &status) == 0 && status.st_size > 0 &&
           pread(file, &last, 1, status.st_size - 1) == 1 && last != '\n';
}

/// How far the journal has been read with nothing left to settle.
struct Settled {
    std::uint64_t inode = 0;
    std::size_t offset = 0;
    std::size_t entries = 0;
    /// Of the first entry.
    std::int64_t oldest = 0;
};

/// A text that was cut off while it was written counts for nothing.
Settled readSettled(const std::string& path) {
    ErrorSlot ignored;
    const std::string text = platform::readFile(path, ignored).value_or("");
    Settled settled;
    std::istringstream fields(text);
    fields >> settled.inode >> settled.offset >> settled.entries >> settled.oldest;
    return fields && text.ends_with('\n') ? settled : Settled();
}

/// In place: it can be made again, and a temporary file could be left by a program that is killed.
void writeSettled(const std::string& path, const Settled& settled) {
    const std::string text = std::to_string(settled.inode) + " " + std::to_string(settled.offset) +
                             " " + std::to_string(settled.entries) + " " +
                             std::to_string(settled.oldest) + "\n";
    const platform::FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (file) {
        static_cast<void>(platform::writeAll(file.get(), text.data(), text.size()));
    }
}

}  // namespace

std::optional<Journal> Journal::ofUser() {
    const std::vector<std::string> library = platform::searchPathForDirectories(
        platform::SearchPathDirectory::library, platform::SearchPathDomain::user);
    return library.empty()
               ? std::nullopt
               : std::optional<Journal>(joinPath(library.front(), "Journal/Vornic.journal"));
}

std::string Journal::lockPath() const {
    return joinPath(parentFolder(path_), "." + lastComponent(path_) + ".lock");
}

std::string Journal::settledPath() const {
    return path_ + ".settled";
}

std::optional<platform::ByteLock> Journal::claim(const std::string& file,
                                                 std::chrono::milliseconds limit,
                                                 ErrorSlot& error) const {
    // Beyond the numbers of entries.
    constexpr std::uint64_t kFirst = std::uint64_t{1} << 62U;
    return platform::ByteLock::acquire(
        lockPath(), kFirst | platform::ContentDigest::of(file)[0] >> 2U, limit, error);
}

std::optional<Journal::Run> Journal::begin(JournalEntry entry, ErrorSlot& error) const {
    const std::string folder = parentFolder(path_);
    if (isInAnothersHome(folder)) {
        failBecauseForeign(error, path_);
        return std::nullopt;
    }
    if (!platform::isDirectory(folder) && !platform::createPrivateFolder(folder, error) &&
        !platform::isDirectory(folder)) {
        return std::nullopt;
    }
    entry.id = newId();
    entry.date = now();
    entry.state = JournalEntry::State::begun;
    std::optional<platform::ByteLock> lock =
        platform::ByteLock::acquire(lockPath(), entry.id, kNoWaiting, error);
    if (!lock || !append(beginLine(entry), error)) {
        return std::nullopt;
    }
    error.reset();
    return Run(std::move(entry), std::move(*lock));
}

bool Journal::finish(Run run, const std::string& original, ErrorSlot& error) const {
    run.entry_.state = JournalEntry::State::done;
    run.entry_.original = original;
    return end(std::move(run), error);
}

bool Journal::takeBack(Run run, ErrorSlot& error) const {
    run.entry_.state = JournalEntry::State::takenBack;
    return end(std::move(run), error);
}

bool Journal::end(Run run, ErrorSlot& error) const {
    return append(endLine(run.entry_), error);
}

bool Journal::append(std::string_view line, ErrorSlot& error) const {
    platform::FileDescriptor file;
    bool isNew = false;
    {
        const auto writer = platform::ByteLock::acquire(lockPath(), kWriter, kWriterLimit, error);
        if (!writer) {
            return false;
        }
        isNew = !platform::nodeExists(path_);
        file = open(O_RDWR | O_APPEND | O_CREAT, error);
        if (!file) {
            return false;
        }
        const std::string whole =
            (endsInTheMiddleOfALine(file.get()) ? "\n" : "") + std::string(line);
        const int errorNumber = platform::writeAll(file.get(), whole.data(), whole.size());
        if (errorNumber != 0) {
            return fail(error, path_, "written", errorNumber);
        }
    }
    int errorNumber = platform::synchronize(file.get());
    if (errorNumber == 0 && isNew) {
        errorNumber = platform::synchronizeFolder(parentFolder(path_));
    }
    return errorNumber == 0 || fail(error, path_, "written", errorNumber);
}

bool Journal::isWithinLimits(const JournalEntry& entry) const {
    return entry.date > now() - limits_.age;
}

void Journal::keepLimits(std::vector<JournalEntry>& entries) const {
    std::erase_if(entries, [this](const JournalEntry& entry) { return !isWithinLimits(entry); });
    if (entries.size() > limits_.entries) {
        entries.erase(entries.begin(),
                      entries.end() - static_cast<std::ptrdiff_t>(limits_.entries));
    }
}

std::optional<std::vector<JournalEntry>> Journal::entries(ErrorSlot& error) const {
    Position start;
    std::optional<News> news = entriesSince(start, error);
    return news ? std::optional(std::move(news->entries)) : std::nullopt;
}

std::optional<Journal::News> Journal::entriesSince(Position& position, ErrorSlot& error) const {
    struct stat status {};
    News news;
    if (lstat(path_.c_str(), &status) != 0 && errno == ENOENT) {
        news.isAnew = std::exchange(position, Position()).inode != 0;
        return news;
    }
    if (position.inode != status.st_ino ||
        position.offset > static_cast<std::size_t>(status.st_size)) {
        position = {.inode = status.st_ino};
        news.isAnew = true;
    }
    std::optional<JournalContents> contents = read(position.offset, error);
    if (!contents) {
        return std::nullopt;
    }
    position.offset += contents->settled;
    news.entries = std::move(contents->entries);
    keepLimits(news.entries);
    return news;
}

std::vector<Journal::Run> Journal::takeInterrupted() const {
    struct stat status {};
    if (stat(path_.c_str(), &status) != 0 || status.st_uid != geteuid()) {
        return {};
    }
    Settled settled = readSettled(settledPath());
    const auto size = static_cast<std::size_t>(status.st_size);
    if (settled.inode != status.st_ino || settled.offset > size) {
        settled = {.inode = status.st_ino};
    }
    ErrorSlot ignored;
    std::optional<JournalContents> contents;
    if (settled.offset < size) {
        contents = read(settled.offset, ignored);
    }
    if (!contents) {
        return {};
    }
    std::vector<Run> runs = takeOver(*contents);
    if (!runs.empty()) {
        dropEnded(runs, settled.offset);
    }
    if (settled.oldest == 0 && !contents->entries.empty()) {
        settled.oldest = contents->entries.front().date;
    }
    // An entry that is counted twice, since one before it was still open, only makes the next trim
    // come sooner.
    settled.entries += contents->entries.size();
    settled.offset += contents->settled;
    if (settled.entries > limits_.entries ||
        (settled.oldest != 0 && settled.oldest < now() - limits_.age)) {
        trim();
    } else {
        writeSettled(settledPath(), settled);
    }
    return runs;
}

platform::FileDescriptor Journal::open(int flags, ErrorSlot& error) const {
    platform::FileDescriptor file(::open(path_.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, 0600));
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0) {
        fail(error, path_, "opened", errno);
        return {};
    }
    if (status.st_uid != geteuid()) {
        failBecauseForeign(error, path_);
        return {};
    }
    return file;
}

std::optional<JournalContents> Journal::read(std::size_t offset, ErrorSlot& error) const {
    constexpr std::size_t kBlock = std::size_t{1} << 20U;
    const platform::FileDescriptor file = open(O_RDONLY | O_NONBLOCK, error);
    if (!file) {
        return std::nullopt;
    }
    std::string text;
    int errorNumber = lseek(file.get(), static_cast<off_t>(offset), SEEK_SET) < 0 ? errno : 0;
    for (std::size_t got = kBlock; errorNumber == 0 && got == kBlock;) {
        const std::size_t length = text.size();
        text.resize(length + kBlock);
        const platform::BlockRead block =
            platform::readBlock(file.get(), text.data() + length, kBlock);
        got = block.length;
        errorNumber = block.errorNumber;
        text.resize(length + got);
    }
    if (errorNumber != 0) {
        fail(error, path_, "read", errorNumber);
        return std::nullopt;
    }
    return parseJournal(text);
}

std::vector<Journal::Run> Journal::takeOver(const JournalContents& contents) const {
    std::vector<Run> runs;
    for (const JournalEntry& entry : contents.entries) {
        ErrorSlot held;
        std::optional<platform::ByteLock> lock;
        if (entry.state == JournalEntry::State::begun) {
            lock = platform::ByteLock::acquire(lockPath(), entry.id, kNoWaiting, held);
        }
        if (lock) {
            runs.push_back(Run(entry, std::move(*lock)));
        }
    }
    return runs;
}

// Between the reading and the lock another program may have ended the change and let go.
void Journal::dropEnded(std::vector<Run>& runs, std::size_t offset) const {
    ErrorSlot ignored;
    const std::optional<JournalContents> contents = read(offset, ignored);
    std::set<std::uint64_t> open;
    for (const JournalEntry& entry : contents ? contents->entries : std::vector<JournalEntry>()) {
        if (entry.state == JournalEntry::State::begun) {
            open.insert(entry.id);
        }
    }
    std::vector<Run> left;
    for (Run& run : runs) {
        if (open.contains(run.entry().id)) {
            left.push_back(std::move(run));
        }
    }
    runs.swap(left);
}

void Journal::trim() const {
    // Fewer than may be kept, so that not every start has to do it.
    constexpr std::size_t kTenths = 9;
    ErrorSlot error;
    const auto writer = platform::ByteLock::acquire(lockPath(), kWriter, kWriterLimit, error);
    const std::optional<JournalContents> contents = writer ? read(0, error) : std::nullopt;
    if (!contents) {
        return;
    }
    const std::size_t most = limits_.entries / 10 * kTenths;
    const std::size_t count = contents->entries.size();
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
        const JournalEntry& entry = contents->entries[index];
        const bool isOpen = entry.state == JournalEntry::State::begun;
        if (isOpen || (isWithinLimits(entry) && count - index <= most)) {
            text += beginLine(entry) + (isOpen ? "" : endLine(entry));
        }
    }
    std::ignore = platform::writeFileAtomically(path_, text, platform::Durability::synced, error);
}

}  // namespace vornic
