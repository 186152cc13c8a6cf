#include "platform/crash/SignalSafeWriter.h"

#include <charconv>
#include <chrono>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

SignalSafeWriter& SignalSafeWriter::text(std::string_view text) {
    while (!text.empty()) {
        const std::size_t count = text.copy(buffer_.data() + used_, buffer_.size() - used_);
        used_ += count;
        text.remove_prefix(count);
        if (used_ == buffer_.size()) {
            flush();
        }
    }
    return *this;
}

SignalSafeWriter& SignalSafeWriter::digits(std::uint64_t number, int base, std::size_t width) {
    constexpr std::string_view kZeros = "0000000000000000";
    std::array<char, 20> written{};
    const auto end = std::to_chars(written.begin(), written.end(), number, base).ptr;
    const auto count = static_cast<std::size_t>(end - written.begin());
    text(kZeros.substr(0, width > count ? width - count : 0));
    return text({written.data(), count});
}

SignalSafeWriter& SignalSafeWriter::decimal(std::uint64_t number, std::size_t width) {
    return digits(number, 10, width);
}

SignalSafeWriter& SignalSafeWriter::hexadecimal(std::uint64_t number, std::size_t width) {
    return text("0x").digits(number, 16, width);
}

SignalSafeWriter& SignalSafeWriter::date(std::time_t seconds) {
    const CivilTime time = civilTime(seconds);
    decimal(time.year, 4).text("-").decimal(time.month, 2).text("-").decimal(time.day, 2);
    text(" ").decimal(time.hour, 2).text(":").decimal(time.minute, 2).text(":");
    return decimal(time.second, 2).text(" +0000");
}

void SignalSafeWriter::flush() {
    static_cast<void>(writeAll(descriptor_, buffer_.data(), used_));
    used_ = 0;
}

CivilTime civilTime(std::time_t seconds) {
    // The calendar of the language's library is arithmetic alone.
    const std::chrono::sys_seconds moment{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(moment - day);
    return {.year = static_cast<unsigned>(static_cast<int>(date.year())),
            .month = static_cast<unsigned>(date.month()),
            .day = static_cast<unsigned>(date.day()),
            .hour = static_cast<unsigned>(time.hours().count()),
            .minute = static_cast<unsigned>(time.minutes().count()),
            .second = static_cast<unsigned>(time.seconds().count())};
}

}  // namespace vornic::platform
