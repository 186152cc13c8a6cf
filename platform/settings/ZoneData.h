#ifndef VORNIC_PLATFORM_SETTINGS_ZONE_DATA_H
#define VORNIC_PLATFORM_SETTINGS_ZONE_DATA_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vornic::platform {

/// The rules of one time zone, as a TZif file has them (RFC 8536).
class TimeZone {
  public:
    /// Nothing for bytes that are no such file.
    [[nodiscard]] static std::optional<TimeZone> read(std::string_view bytes);

    /// How many seconds clocks of the zone that show a time can be ahead of Universal Time: one
    /// number mostly, two in the hour that is passed twice, none in one that is left out, and none
    /// where the file gives a rule in place of the dates.
    /// @param local what the clocks show, as if it were Universal Time, in seconds since 1970
    /// @param abbreviation only while the zone calls its time that ("CEST"); nothing for any name
    void addOffsetsAt(std::int64_t local, std::optional<std::string_view> abbreviation,
                      std::set<std::int32_t>& offsets) const;

  private:
    struct Setting {
        std::int32_t offset = 0;
        std::string abbreviation;
    };

    [[nodiscard]] const Setting* settingAtUniversalTime(std::int64_t time) const;

    std::vector<std::int64_t> changes_;
    // Which setting each change brings.
    std::vector<std::uint8_t> changedTo_;
    std::vector<Setting> settings_;
    bool isDefinedAfterLastChange_ = false;
};

/// The time zones that the system knows. Reading them takes some milliseconds. Any thread.
class ZoneData {
  public:
    /// @param folder such as /usr/share/zoneinfo; one that cannot be read has no zones.
    explicit ZoneData(const std::string& folder);

    /// Those of the folder that TZDIR names, else of /usr/share/zoneinfo; read on first use.
    [[nodiscard]] static const ZoneData& ofSystem();

    /// How far ahead of Universal Time clocks were that showed a time.
    /// @param name of a zone ("Europe/Berlin") or an abbreviation ("CEST")
    /// @param local as for `TimeZone::addOffsetsAt`
    /// @return seconds; nothing for an unknown name, for an abbreviation that zones with different
    ///     clocks used at the time, and in an hour that was passed twice.
    [[nodiscard]] std::optional<std::int32_t> offsetAt(std::string_view name,
                                                       std::int64_t local) const;

  private:
    std::map<std::string, TimeZone, std::less<>> zones_;
};

}  // namespace vornic::platform

#endif
