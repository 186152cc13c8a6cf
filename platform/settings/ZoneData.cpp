#include "platform/settings/ZoneData.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/Error.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kHeaderSize = 44;
constexpr std::uintmax_t kLargestFile = 1U << 18U;

// Reads the numbers of a TZif file, which have their highest byte first.
class ByteReader {
  public:
    explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] bool has(std::size_t count) const { return bytes_.size() - at_ >= count; }
    [[nodiscard]] std::string_view take(std::size_t count) {
        const std::string_view taken = bytes_.substr(at_, count);
        at_ += count;
        return taken;
    }
    [[nodiscard]] std::int64_t takeNumber(std::size_t size) {
        std::uint64_t number = 0;
        for (const char byte : take(size)) {
            number = number << 8U | static_cast<unsigned char>(byte);
        }
        return size == 4 ? static_cast<std::int32_t>(number) : static_cast<std::int64_t>(number);
    }
    [[nodiscard]] std::string_view rest() const { return bytes_.substr(at_); }

  private:
    std::string_view bytes_;
    std::size_t at_ = 0;
};

// RFC 8536, section 3.1.
struct Header {
    char version = 0;
    std::size_t universalCount = 0;
    std::size_t standardCount = 0;
    std::size_t leapCount = 0;
    std::size_t timeCount = 0;
    std::size_t typeCount = 0;
    std::size_t characterCount = 0;

    [[nodiscard]] std::size_t bodySize(std::size_t timeSize) const {
        return timeCount * (timeSize + 1) + typeCount * 6 + characterCount +
               leapCount * (timeSize + 4) + standardCount + universalCount;
    }
};

std::optional<Header> takeHeader(ByteReader& reader) {
    if (!reader.has(kHeaderSize) || reader.take(4) != "TZif") {
        return std::nullopt;
    }
    Header header;
    header.version = reader.take(16).front();
    for (std::size_t* const count :
         {&header.universalCount, &header.standardCount, &header.leapCount, &header.timeCount,
          &header.typeCount, &header.characterCount}) {
        *count = static_cast<std::uint32_t>(reader.takeNumber(4));
    }
    return header;
}

}  // namespace

std::optional<TimeZone> TimeZone::read(std::string_view bytes) {
    ByteReader reader(bytes);
    std::optional<Header> header = takeHeader(reader);
    std::size_t timeSize = 4;
    // From version 2 on the same follows in longer numbers.
    if (header && header->version >= '2' && reader.has(header->bodySize(timeSize))) {
        static_cast<void>(reader.take(header->bodySize(timeSize)));
        header = takeHeader(reader);
        timeSize = 8;
    }
    if (!header || header->typeCount == 0 || !reader.has(header->bodySize(timeSize))) {
        return std::nullopt;
    }
    TimeZone zone;
    for (std::size_t index = 0; index < header->timeCount; ++index) {
        zone.changes_.push_back(reader.takeNumber(timeSize));
    }
    for (const char type : reader.take(header->timeCount)) {
        zone.changedTo_.push_back(static_cast<std::uint8_t>(type));
    }
    ByteReader types(reader.take(header->typeCount * 6));
    const std::string names(reader.take(header->characterCount));
    for (std::size_t index = 0; index < header->typeCount; ++index) {
        const auto offset = static_cast<std::int32_t>(types.takeNumber(4));
        const auto name = static_cast<unsigned char>(types.take(2)[1]);
        zone.settings_.push_back({offset, name < names.size() ? names.c_str() + name : ""});
    }
    static_cast<void>(reader.take(header->bodySize(timeSize) - header->timeCount * (timeSize + 1) -
                                  header->typeCount * 6 - header->characterCount));
    // A rule with dates has commas.
    zone.isDefinedAfterLastChange_ = reader.rest().find(',') == std::string_view::npos;
    const bool isWhole =
        std::all_of(zone.changedTo_.begin(), zone.changedTo_.end(),
                    [&zone](std::uint8_t type) { return type < zone.settings_.size(); });
    return isWhole && std::is_sorted(zone.changes_.begin(), zone.changes_.end())
               ? std::optional(std::move(zone))
               : std::nullopt;
}

const TimeZone::Setting* TimeZone::settingAtUniversalTime(std::int64_t time) const {
    const auto next = std::upper_bound(changes_.begin(), changes_.end(), time);
    if (next == changes_.end() && !isDefinedAfterLastChange_) {
        return nullptr;
    }
    const auto index = static_cast<std::size_t>(next - changes_.begin());
    return &settings_[index == 0 ? 0 : changedTo_[index - 1]];
}

void TimeZone::addOffsetsAt(std::int64_t local, std::optional<std::string_view> abbreviation,
                            std::set<std::int32_t>& offsets) const {
    for (const Setting& setting : settings_) {
        if (abbreviation && setting.abbreviation != *abbreviation) {
            continue;
        }
        const Setting* const then = settingAtUniversalTime(local - setting.offset);
        if (then != nullptr && then->offset == setting.offset &&
            then->abbreviation == setting.abbreviation) {
            offsets.insert(setting.offset);
        }
    }
}

ZoneData::ZoneData(const std::string& folder) {
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = fs::path(entry->path()).lexically_relative(folder);
        // The same zones again, once with leap seconds.
        if (name == "posix" || name == "right") {
            entry.disable_recursion_pending();
            continue;
        }
        std::error_code unknown;
        const bool isSmall =
            entry->is_regular_file(unknown) && entry->file_size(unknown) <= kLargestFile;
        ErrorSlot unreadable;
        const std::optional<std::string> bytes =
            isSmall ? readFile(entry->path(), unreadable) : std::nullopt;
        if (std::optional<TimeZone> zone = bytes ? TimeZone::read(*bytes) : std::nullopt) {
            zones_.emplace(name, std::move(*zone));
        }
    }
}

const ZoneData& ZoneData::ofSystem() {
    static const ZoneData data = [] {
        const char* const folder = std::getenv("TZDIR");
        return ZoneData(folder != nullptr && *folder != '\0' ? folder : "/usr/share/zoneinfo");
    }();
    return data;
}

std::optional<std::int32_t> ZoneData::offsetAt(std::string_view name, std::int64_t local) const {
    std::set<std::int32_t> offsets;
    if (const auto zone = zones_.find(name); zone != zones_.end()) {
        zone->second.addOffsetsAt(local, std::nullopt, offsets);
    }
    for (const auto& [ignored, zone] : zones_) {
        zone.addOffsetsAt(local, name, offsets);
    }
    return offsets.size() == 1 ? std::optional(*offsets.begin()) : std::nullopt;
}

}  // namespace vornic::platform
