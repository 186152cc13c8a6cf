#include <cstdint>
#include <utility>

#include <gtest/gtest.h>

#include "platform/processes/PagedList.h"

namespace vornic::platform {
namespace {

struct Entry {
    std::uint32_t number = 7;
    std::uint16_t other = 0;
};

TEST(PagedListTest, keepsItsEntriesWhileItGrowsOverManyPages) {
    PagedList<Entry> list;
    EXPECT_EQ(list.size(), 0U);
    constexpr std::uint32_t kCount = 1'000'000;
    for (std::uint32_t number = 0; number < kCount; ++number) {
        Entry& added = list.add();
        ASSERT_EQ(added.number, 7U);
        added.number = number;
    }
    ASSERT_EQ(list.size(), kCount);
    PagedList<Entry> moved = std::move(list);
    for (std::uint32_t number = 0; number < kCount; ++number) {
        ASSERT_EQ(moved[number].number, number);
    }
}

TEST(PagedListTest, raisesWhenThereIsNoMemory) {
    GrowingPages pages;
    pages.growTo(1);
    *static_cast<char*>(pages.memory()) = 'k';
    EXPECT_THROW(pages.growTo(std::size_t{1} << 60U), std::bad_alloc);
    EXPECT_EQ(*static_cast<char*>(pages.memory()), 'k');
}

}  // namespace
}  // namespace vornic::platform
