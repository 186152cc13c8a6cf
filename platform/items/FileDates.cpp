#include "platform/items/FileDates.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/items/ExtendedAttributes.h"
#include "platform/items/OwnerAccess.h"

namespace vornic::platform {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr std::size_t kFractionDigits = 9;

seconds wholeSeconds(FileDate date) {
    return std::chrono::floor<seconds>(date.time_since_epoch());
}

nanoseconds fraction(FileDate date) {
    return date.time_since_epoch() - wholeSeconds(date);
}

std::string textOf(FileDate date) {
    const std::string digits = std::to_string(fraction(date).count());
    return std::to_string(wholeSeconds(date).count()) + "." +
           std::string(kFractionDigits - digits.size(), '0') + digits;
}

/// The number that the whole text is.
std::optional<std::int64_t> numberIn(std::string_view text) {
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [last, fault] = std::from_chars(text.data(), end, number);
    return fault == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

std::optional<FileDate> dateIn(std::string_view text) {
    // What fits into the clock's nanoseconds, with room for the fraction.
    constexpr std::int64_t kMostSeconds = INT64_MAX / 1'000'000'000 - 1;
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos || text.size() != dot + 1 + kFractionDigits) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> whole = numberIn(text.substr(0, dot));
    const std::optional<std::int64_t> part = numberIn(text.substr(dot + 1));
    if (!whole || !part || *part < 0 || *whole < -kMostSeconds || *whole > kMostSeconds) {
        return std::nullopt;
    }
    return FileDate(seconds(*whole) + nanoseconds(*part));
}

}  // namespace

std::optional<FileDate> chosenCreationDate(const std::string& path) {
    const ErrnoOr<FileDescriptor> file = openForMetadata(path, true);
    if (!file) {
        return std::nullopt;
    }
    const ErrnoOr<std::string> text = extendedAttribute(file->get(), kCreationDateAttribute);
    return text ? dateIn(*text) : std::nullopt;
}

bool setCreationDate(const std::string& path, FileDate date, ErrorSlot& error) {
    const ErrnoOr<FileDescriptor> file = openForMetadata(path, true);
    if (!file) {
        return failFile(error, path, "opened", file.errorNumber());
    }
    const int errorNumber = withOwnerAccess(file->get(), [&] {
        return setExtendedAttribute(file->get(), kCreationDateAttribute, textOf(date));
    });
    return errorNumber == 0 || failFile(error, path, "given its creation date", errorNumber);
}

std::optional<FileDate> modificationDate(const std::string& path) {
    struct stat status {};
    if (path.find('\0') != std::string::npos || lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileDate(seconds(status.st_mtim.tv_sec) + nanoseconds(status.st_mtim.tv_nsec));
}

bool setModificationDate(const std::string& path, FileDate date, ErrorSlot& error) {
    constexpr std::string_view kVerb = "given its modification date";
    if (path.find('\0') != std::string::npos) {
        return failFile(error, path, kVerb, EINVAL);
    }
    const std::array<struct timespec, 2> times{
        {{.tv_sec = 0, .tv_nsec = UTIME_OMIT},
         {.tv_sec = wholeSeconds(date).count(), .tv_nsec = fraction(date).count()}}};
    return utimensat(AT_FDCWD, path.c_str(), times.data(), 0) == 0 ||
           failFile(error, path, kVerb, errno);
}

}  // namespace vornic::platform
