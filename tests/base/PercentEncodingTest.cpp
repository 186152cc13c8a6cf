#include <string>

#include <gtest/gtest.h>

#include "base/PercentEncoding.h"

namespace vornic::platform {
namespace {

TEST(PercentEncoding, keepsUnreservedCharacters) {
    EXPECT_EQ(percentEncoded("AZaz09-._~"), "AZaz09-._~");
}

TEST(PercentEncoding, encodesWhatHasAMeaningInAddresses) {
    EXPECT_EQ(percentEncoded(" %&=+?#/:@"), "%20%25%26%3D%2B%3F%23%2F%3A%40");
}

TEST(PercentEncoding, encodesTheBytesOfUTF8) {
    EXPECT_EQ(percentEncoded("ü€"), "%C3%BC%E2%82%AC");
}

TEST(PercentEncoding, encodesControlCharacters) {
    EXPECT_EQ(percentEncoded(std::string("\0\n\x7F", 3)), "%00%0A%7F");
}

TEST(PercentEncoding, keepsWhatItIsToldToKeep) {
    EXPECT_EQ(percentEncoded("/a b/c+d", "/+"), "/a%20b/c+d");
}

TEST(PercentEncoding, makesNothingOfNothing) {
    EXPECT_EQ(percentEncoded(""), "");
}

}  // namespace
}  // namespace vornic::platform
