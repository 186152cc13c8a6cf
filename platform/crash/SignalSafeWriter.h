#ifndef VORNIC_PLATFORM_CRASH_SIGNAL_SAFE_WRITER_H
#define VORNIC_PLATFORM_CRASH_SIGNAL_SAFE_WRITER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

namespace vornic::platform {

/// Writes text to a descriptor with nothing but what a signal handler may use: no memory is taken,
/// no lock, no locale. A failed write loses its text and nothing else. One thread.
class SignalSafeWriter {
  public:
    explicit SignalSafeWriter(int descriptor) : descriptor_(descriptor) {}
    ~SignalSafeWriter() { flush(); }
    SignalSafeWriter(const SignalSafeWriter&) = delete;
    SignalSafeWriter& operator=(const SignalSafeWriter&) = delete;

    SignalSafeWriter& text(std::string_view text);
    /// A number with leading zeros up to `width` digits.
    SignalSafeWriter& decimal(std::uint64_t number, std::size_t width = 1);
    /// "0x" and hexadecimal digits in lower case.
    SignalSafeWriter& hexadecimal(std::uint64_t number, std::size_t width = 1);
    /// "2026-11-21 07:05:00 +0000".
    SignalSafeWriter& date(std::time_t seconds);
    /// Hands everything so far to the system.
    void flush();

  private:
    SignalSafeWriter& digits(std::uint64_t number, int base, std::size_t width);

    int descriptor_;
    std::size_t used_ = 0;
    std::array<char, 1024> buffer_;
};

/// A date and time of UTC taken apart.
struct CivilTime {
    unsigned year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
};
/// For dates from 1970 on. Safe in a signal handler.
[[nodiscard]] CivilTime civilTime(std::time_t seconds);

}  // namespace vornic::platform

#endif
