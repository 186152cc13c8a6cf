#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "base/FormatString.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic {
namespace {

TEST(FormatString, writesTextWithoutConversionsAsItIs) {
    EXPECT_EQ(formatString(""), "");
    EXPECT_EQ(formatString("Grüße 🎬\n"), "Grüße 🎬\n");
}

TEST(FormatString, writesEveryKindOfArgumentInItsPlainFormForAnObject) {
    const std::string text = "clip";
    EXPECT_EQ(formatString("%@|%@|%@|%@", text, "file", std::string_view("b%d"), -3),
              "clip|file|b%d|-3");
    EXPECT_EQ(formatString("%@ %@", std::numeric_limits<std::uint64_t>::max(), 0.1),
              "18446744073709551615 0.1");
    EXPECT_EQ(formatString("%@ %@", 3.0, true), "3 1");
}

TEST(FormatString, readsANullPointerAsNull) {
    const char* none = nullptr;
    EXPECT_EQ(formatString("%s %@", none, none), "(null) (null)");
}

TEST(FormatString, writesIntegersWithAnyLengthWord) {
    EXPECT_EQ(formatString("%d %i %ld %li %lld %qd %zd %td %jd", -1, 2, 3L, 4L, 5LL, 6LL, 7, 8, 9),
              "-1 2 3 4 5 6 7 8 9");
    EXPECT_EQ(formatString("%lu %llu %zu %qu %D %U", 1UL, 2ULL, std::size_t{3}, 4ULL, 5, 6),
              "1 2 3 4 5 6");
    EXPECT_EQ(formatString("%li %lld", std::numeric_limits<std::int64_t>::min(),
                           std::numeric_limits<std::int64_t>::max()),
              "-9223372036854775808 9223372036854775807");
}

TEST(FormatString, narrowsToTheLengthWordsHAndHh) {
    EXPECT_EQ(formatString("%hhd %hd %hhu %hu", 300, 70000, 300, 70000), "44 4464 44 4464");
    EXPECT_EQ(formatString("%hhx", -1), "ff");
}

TEST(FormatString, writesNegativeNumbersUnsignedInTheWidthOfTheLengthWord) {
    EXPECT_EQ(formatString("%u %lu", -1, -1L), "4294967295 18446744073709551615");
    EXPECT_EQ(formatString("%x %lx %o", -1, -1L, -1), "ffffffff ffffffffffffffff 37777777777");
}

TEST(FormatString, neverCutsAValueThatIsWiderThanItsConversion) {
    EXPECT_EQ(formatString("%d", std::int64_t{5'000'000'000}), "5000000000");
    EXPECT_EQ(formatString("%d", std::numeric_limits<std::uint64_t>::max()),
              "18446744073709551615");
    EXPECT_EQ(formatString("%u", std::int64_t{-5'000'000'000}), "18446744068709551616");
}

TEST(FormatString, padsIntegersByFlagsWidthAndPrecision) {
    EXPECT_EQ(formatString("[%5d][%-5d][%05d][%+d][% d]", 42, 42, 42, 42, 42),
              "[   42][42   ][00042][+42][ 42]");
    EXPECT_EQ(formatString("[%05ld][%05d][%-05d]", -42L, -42, 42), "[-0042][-0042][42   ]");
    EXPECT_EQ(formatString("[%.5d][%8.3d][%08.3d][%.0d]", 42, 42, 42, 0),
              "[00042][     042][     042][]");
    EXPECT_EQ(formatString("%02x %02X %#x %#X %#o %#x %'d", 10, 171, 255, 255, 8, 0, 1000),
              "0a AB 0xff 0XFF 010 0 1000");
}

TEST(FormatString, takesWidthAndPrecisionFromArguments) {
    EXPECT_EQ(formatString("[%*d][%-*d][%*d]", 5, 42, 5, 42, -5, 42), "[   42][42   ][42   ]");
    EXPECT_EQ(formatString("[%.*f][%*.*f][%.*d]", 1, 2.25, 6, 1, 2.25, -1, 7), "[2.2][   2.2][7]");
}

TEST(FormatString, writesFloatingPointNumbers) {
    EXPECT_EQ(formatString("%f %0.2f %5.2f|%-7.1f|%+.1f", 1.5, 7.804, 3.14159, 2.5, 1.0),
              "1.500000 7.80  3.14|2.5    |+1.0");
    EXPECT_EQ(formatString("%e %E %g %G %07.2f", 12345.678, 0.5, 0.0001, 1e20, -1.5),
              "1.234568e+04 5.000000E-01 0.0001 1E+20 -001.50");
    EXPECT_EQ(formatString("%f %F %a", std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity(), 1.0),
              "inf -INF 0x1p+0");
    EXPECT_EQ(formatString("%f", 1e300).size(), 308U);
}

/// A locale with a decimal comma for the time of a test: an installed one, else one compiled from
/// the system's sources.
class DecimalComma {
  public:
    explicit DecimalComma(const std::string& folder) : previous_(std::setlocale(LC_ALL, nullptr)) {
        isThere_ = std::setlocale(LC_ALL, kName) != nullptr;
        if (!isThere_) {
            const std::string command =
                "localedef -i de_DE -f UTF-8 '" + folder + "/" + kName + "' >/dev/null 2>&1";
            setenv("LOCPATH", folder.c_str(), 1);
            isThere_ =
                std::system(command.c_str()) == 0 && std::setlocale(LC_ALL, kName) != nullptr;
            unsetenv("LOCPATH");
        }
    }
    ~DecimalComma() { std::setlocale(LC_ALL, previous_.c_str()); }
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;
    [[nodiscard]] bool isThere() const { return isThere_; }

  private:
    static constexpr const char* kName = "de_DE.UTF-8";
    std::string previous_;
    bool isThere_ = false;
};

using FormatStringSandbox = test::SandboxTest;

TEST_F(FormatStringSandbox, writesAPointWhateverTheLocale) {
    const DecimalComma comma(sandbox.folder());
    if (!comma.isThere()) {
        GTEST_SKIP() << "no locale with a decimal comma can be had";
    }
    std::array<char, 16> byTheLocale{};
    static_cast<void>(std::snprintf(byTheLocale.data(), byTheLocale.size(), "%0.2f", 7.8));
    ASSERT_STREQ(byTheLocale.data(), "7,80");
    EXPECT_EQ(formatString("%0.2f %@ %0.1f", 7.8, 0.5, "2.5"), "7.80 0.5 2.5");
}

TEST(FormatString, cutsAndPadsTextByCharacters) {
    EXPECT_EQ(formatString("[%5s][%-5@][%.2s][%4.1@]", "äö", "äö", "äöü", "🎬🎬"),
              "[   äö][äö   ][äö][   🎬]");
    EXPECT_EQ(formatString("[%.0s]", "abc"), "[]");
}

TEST(FormatString, writesCharacters) {
    EXPECT_EQ(formatString("%c%c%c", 'A', 0xE9, 0x1E9), "Aéé");
    EXPECT_EQ(formatString("%C %C|%3C", 0x41, 0x20AC, 0x42), "A €|  B");
    EXPECT_EQ(formatString("%C", 0xD800), "\xEF\xBF\xBD");
    EXPECT_EQ(formatString("%c", "clip"), "c");
    EXPECT_EQ(formatString("a%cb", 0), std::string("a\0b", 3));
}

TEST(FormatString, convertsAnArgumentThatDoesNotFitItsConversion) {
    EXPECT_EQ(formatString("%d %d %d", "12 frames", 7.9, "none"), "12 7 0");
    EXPECT_EQ(formatString("%s %s", 12, 1.25), "12 1.25");
    EXPECT_EQ(formatString("%0.1f %0.1f %0.1f", 3, "2.5", 4U), "3.0 2.5 4.0");
    EXPECT_EQ(formatString("%ld %ld %ld", 1e30, -1e30, std::nan("")),
              "9223372036854775807 -9223372036854775808 0");
}

TEST(FormatString, writesAConversionWithoutItsArgumentAsItStands) {
    EXPECT_EQ(formatString("%@ and %5.2f"), "%@ and %5.2f");
    EXPECT_EQ(formatString("%d %d", 1), "1 %d");
    EXPECT_EQ(formatString("%*d", 5), "%*d");
    EXPECT_EQ(formatString("%*d %d"), "%*d %d");
    EXPECT_EQ(formatString("%.*f", 2), "%.*f");
}

TEST(FormatString, writesAnUnknownConversionAsItStandsAndGoesOnBehindIt) {
    EXPECT_EQ(formatString("%y %@", "a"), "%y a");
    EXPECT_EQ(formatString("%n%5%@", "a"), "%n%5a");
    EXPECT_EQ(formatString("100%€ %d", 1), "100%€ 1");
    // What was taken as a width before the conversion turned out unknown is there again.
    EXPECT_EQ(formatString("%*y %d", 7), "%*y 7");
}

TEST(FormatString, writesALonePercentSignAtTheEndAsItStands) {
    EXPECT_EQ(formatString("100%"), "100%");
    EXPECT_EQ(formatString("%d%", 5), "5%");
    EXPECT_EQ(formatString("%-5.2l", 5), "%-5.2l");
}

TEST(FormatString, writesADoubledPercentSignOnce) {
    EXPECT_EQ(formatString("50%% of %d%%", 3), "50% of 3%");
}

TEST(FormatString, ignoresSurplusArguments) {
    EXPECT_EQ(formatString("%d", 1, "two", 3.0), "1");
}

TEST(FormatString, neverReadsTheTextOfAnArgumentAsAFormat) {
    EXPECT_EQ(formatString("%@ %@", "%@ %d %%", 1), "%@ %d %% 1");
}

TEST(FormatString, holdsHugeWidthsAndPrecisions) {
    EXPECT_EQ(formatString("%999999999999d", 1).size(), 65535U);
    EXPECT_EQ(formatString("%*d", std::numeric_limits<std::uint64_t>::max(), 1).size(), 65535U);
    EXPECT_EQ(formatString("%*d", std::numeric_limits<std::int64_t>::min(), 1).size(), 65535U);
    EXPECT_EQ(formatString("%.99999999999f", 1.0).size(), 65537U);
}

TEST(FormatString, keepsBytesThatAreNoUtf8) {
    EXPECT_EQ(formatString("%@",
                           "a\xFF"
                           "b"),
              "a\xFF"
              "b");
    EXPECT_EQ(formatString("[%3s]", "\xFF"), "[  \xFF]");
}

}  // namespace
}  // namespace vornic
