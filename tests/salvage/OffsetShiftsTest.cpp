#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "salvage/OffsetShifts.h"

namespace vornic::salvage {

TEST(OffsetShifts, areNoneInFrontOfTheFirstOne) {
    OffsetShifts shifts;
    EXPECT_EQ(shifts.of(7), 7U);
    shifts.add(5, -2);
    EXPECT_EQ(shifts.of(4), 4U);
    EXPECT_EQ(shifts.of(5), 3U);
}

TEST(OffsetShifts, takeTheLastOfThoseAtOneOffset) {
    OffsetShifts shifts;
    for (std::ptrdiff_t shift = 0; shift < 500; ++shift) {
        shifts.add(9, shift);
    }
    EXPECT_EQ(shifts.of(9), 508U);
    EXPECT_EQ(shifts.of(8), 8U);
}

TEST(OffsetShifts, keepManyOfThem) {
    std::mt19937_64 random(3);
    OffsetShifts shifts;
    std::vector<std::size_t> expected;
    std::ptrdiff_t shift = 0;
    while (expected.size() < 100000) {
        shift += static_cast<std::ptrdiff_t>(random() % 2000) - 900;
        shift = std::max(shift, -static_cast<std::ptrdiff_t>(expected.size()));
        shifts.add(expected.size(), shift);
        for (std::size_t length = random() % 300; length > 0; --length) {
            expected.push_back(
                static_cast<std::size_t>(static_cast<std::ptrdiff_t>(expected.size()) + shift));
        }
    }
    for (std::size_t offset = 0; offset < expected.size(); ++offset) {
        ASSERT_EQ(shifts.of(offset), expected[offset]) << offset;
    }
}

}  // namespace vornic::salvage
