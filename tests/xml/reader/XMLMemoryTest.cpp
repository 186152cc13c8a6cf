#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "xml/tree/XMLDocument.h"

// A change to a tree that memory does not suffice for is told, and nothing half done is written.

namespace vornic::test {

namespace {

// A double for a machine without memory: the tree's blocks, counted from a moment on, are refused
// from the one with this number on.
class ScarceTreeMemory {
  public:
    explicit ScarceTreeMemory(int grants)
        : allocate_(pugi::get_memory_allocation_function()),
          free_(pugi::get_memory_deallocation_function()) {
        grants_ = grants;
        pugi::set_memory_management_functions(allocateWhileGranted, free_);
    }
    ~ScarceTreeMemory() { pugi::set_memory_management_functions(allocate_, free_); }
    ScarceTreeMemory(const ScarceTreeMemory&) = delete;
    ScarceTreeMemory& operator=(const ScarceTreeMemory&) = delete;

  private:
    static void* allocateWhileGranted(std::size_t size) {
        return grants_-- > 0 ? std::malloc(size) : nullptr;
    }

    static inline int grants_ = 0;
    pugi::allocation_function allocate_;
    pugi::deallocation_function free_;
};

// Longer than the blocks in which the tree keeps what is short.
const std::string kLong(100'000, 'x');

std::unique_ptr<XMLDocument> parsed(const std::string& text) {
    ErrorSlot error;
    return XMLDocument::parse(text, XMLMode::strict, error);
}

// With any number of blocks granted, a change is made whole or told and not made at all.
void expectWholeOrNothing(const std::string& text,
                          const std::function<void(XMLDocument&)>& change) {
    const auto changed = parsed(text);
    change(*changed);
    const std::string after = changed->xmlString();
    int refused = 0;
    for (int grants = 0;; ++grants) {
        SCOPED_TRACE(grants);
        ASSERT_LT(grants, 100);
        const auto document = parsed(text);
        const std::string before = document->xmlString();
        EXPECT_TRUE(document->rootElement());
        ASSERT_NE(before, after);
        try {
            const ScarceTreeMemory memory(grants);
            change(*document);
        } catch (const std::bad_alloc&) {
            ++refused;
            EXPECT_EQ(document->xmlString(), before);
            continue;
        }
        EXPECT_EQ(document->xmlString(), after);
        break;
    }
    EXPECT_GT(refused, 0);
}

}  // namespace

TEST(XMLMemory, isWantedForAnAttributesName) {
    expectWholeOrNothing("<a/>", [](XMLDocument& document) {
        EXPECT_TRUE(document.rootElement().addAttribute(kLong, "c"));
    });
}

TEST(XMLMemory, isWantedForAnAddedValue) {
    expectWholeOrNothing("<a b='c'/>", [](XMLDocument& document) {
        document.rootElement().setAttribute("d", kLong);
    });
}

TEST(XMLMemory, isWantedForAChangedValue) {
    expectWholeOrNothing("<a b='c'/>",
                         [](XMLDocument& document) { document.setRootAttribute("b", kLong); });
}

TEST(XMLMemory, isWantedForADocumentType) {
    expectWholeOrNothing("<!DOCTYPE b><a/>",
                         [](XMLDocument& document) { document.setDocumentType(kLong); });
    expectWholeOrNothing("<a/>", [](XMLDocument& document) { document.setDocumentType(kLong); });
}

TEST(XMLMemory, leavesNoHalfTreeBehindWhenItEnds) {
    int refused = 0;
    for (int grants = 0;; ++grants) {
        SCOPED_TRACE(grants);
        ASSERT_LT(grants, 100);
        const auto document = parsed("<!DOCTYPE b><a c='d'><e>f</e></a>");
        document->setRootAttribute("c", kLong);
        document->setRootAttribute("g", kLong);
        document->setDocumentType(kLong);
        const std::string whole = document->xmlString();
        try {
            const ScarceTreeMemory memory(grants);
            EXPECT_TRUE(document->rootElement());
        } catch (const std::bad_alloc&) {
            ++refused;
            EXPECT_ANY_THROW(static_cast<void>(document->xmlString()));
            continue;
        }
        EXPECT_EQ(document->xmlString(), whole);
        break;
    }
    EXPECT_GT(refused, 3);
}

}  // namespace vornic::test
