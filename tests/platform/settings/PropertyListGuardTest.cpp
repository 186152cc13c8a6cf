#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/settings/PropertyListGuard.h"

namespace vornic::platform {
namespace {

std::string repeat(const std::string& text, int times) {
    std::string result;
    for (int count = 0; count < times; ++count) {
        result += text;
    }
    return result;
}

TEST(PropertyListGuardTest, takes512LevelsOfXMLAndNoMore) {
    EXPECT_TRUE(isHarmlessXML("<plist>" + repeat("<array>", 512)));
    EXPECT_FALSE(isHarmlessXML("<plist>" + repeat("<array>", 513)));
    EXPECT_FALSE(isHarmlessXML(repeat("<dict >", 300) + repeat("<array\n>", 213)));
}

TEST(PropertyListGuardTest, takesAnyNumberOfContainersBesideEachOther) {
    EXPECT_TRUE(isHarmlessXML("<plist version=\"1.0\"><array>" + repeat("<dict></dict>", 10'000) +
                              repeat("<array/>", 10'000) + "</array></plist>"));
}

TEST(PropertyListGuardTest, countsNoEndTagThatTheLibraryPassesOver) {
    for (const std::string hidden :
         {"<!-- </array> -->", "<!--></array> -->", "<? \"?>\" </array> ?>", "<?x </array> ?>",
          "<!DOCTYPE a [</array>]>", "<string a='>' b='</array>'/>", "<![CDATA[</array>]]>"}) {
        EXPECT_FALSE(isHarmlessXML(repeat("<array>" + hidden, 600))) << hidden;
    }
    EXPECT_FALSE(isHarmlessXML(repeat("<array a=\">\" b=\"</array>\">", 600)));
}

TEST(PropertyListGuardTest, refusesNamesThatANulByteCutsShort) {
    EXPECT_FALSE(isHarmlessXML(std::string("<array\0x>", 9)));
}

TEST(PropertyListGuardTest, refusesATextWithTooManyReferences) {
    EXPECT_TRUE(isHarmlessXML("<string>" + repeat("&amp;", 20'000) + "</string>"));
    EXPECT_FALSE(isHarmlessXML("<string>" + repeat("&amp;", 200'000) + "</string>"));
    EXPECT_TRUE(isHarmlessXML(repeat("<string>&amp;</string>", 200'000)));
}

/// Puts objects together to a binary list whose first object is its root; two bytes for each
/// reference and four for each offset.
std::string binary(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string offsets;
    const auto number = [](std::size_t value, unsigned width) {
        std::string text;
        for (unsigned shift = width * 8; shift > 0; shift -= 8) {
            text += static_cast<char>(value >> (shift - 8) & 0xFFU);
        }
        return text;
    };
    for (const std::string& object : objects) {
        offsets += number(bytes.size(), 4);
        bytes += object;
    }
    const std::size_t table = bytes.size();
    return bytes + offsets + std::string(6, '\0') + "\x04\x02" + number(objects.size(), 8) +
           number(0, 8) + number(table, 8);
}

/// An array with references to the given objects.
std::string array(const std::vector<unsigned>& references) {
    std::string bytes(1, static_cast<char>(0xA0U + references.size()));
    for (const unsigned reference : references) {
        bytes += static_cast<char>(reference >> 8U & 0xFFU);
        bytes += static_cast<char>(reference & 0xFFU);
    }
    return bytes;
}

/// A chain of arrays, each one in the one before.
std::string chain(unsigned levels) {
    std::vector<std::string> objects;
    for (unsigned level = 1; level < levels; ++level) {
        objects.push_back(array({level}));
    }
    objects.push_back(array({}));
    return binary(objects);
}

TEST(PropertyListGuardTest, takes512BinaryLevelsAndNoMore) {
    EXPECT_TRUE(isHarmlessBinary(chain(512)));
    EXPECT_FALSE(isHarmlessBinary(chain(513)));
    EXPECT_FALSE(isHarmlessBinary(chain(60'000)));
}

TEST(PropertyListGuardTest, countsLevelsThroughAnObjectThatWasSeenBefore) {
    // The root leads to the middle of the chain first and then to its beginning.
    std::vector<std::string> objects{array({300, 1})};
    for (unsigned level = 1; level < 600; ++level) {
        objects.push_back(array({level + 1}));
    }
    objects.push_back(array({}));
    EXPECT_FALSE(isHarmlessBinary(binary(objects)));
}

TEST(PropertyListGuardTest, refusesAContainerWithinItself) {
    EXPECT_FALSE(isHarmlessBinary(binary({array({0})})));
    EXPECT_FALSE(isHarmlessBinary(binary({array({1}), array({0})})));
}

TEST(PropertyListGuardTest, takesSharedObjects) {
    EXPECT_TRUE(isHarmlessBinary(binary({array({1, 1, 2, 2}), array({2, 2}), "\x51x"})));
}

TEST(PropertyListGuardTest, refusesSharingThatUnfoldsWithoutEnd) {
    std::vector<std::string> objects;
    for (unsigned level = 1; level <= 40; ++level) {
        objects.push_back(array({level, level}));
    }
    objects.push_back("\x51x");
    EXPECT_FALSE(isHarmlessBinary(binary(objects)));
}

TEST(PropertyListGuardTest, refusesALargeTextSharedByMany) {
    std::string text = "\x5F\x12";
    text += std::string("\x00\x10\x00\x00", 4) + std::string(0x100000, 'x');
    std::vector<std::string> objects{array({1, 1, 1, 1, 1, 1, 1, 1, 1, 1})};
    objects.push_back(array({2, 2, 2, 2, 2, 2, 2, 2, 2, 2}));
    objects.push_back(array({3, 3, 3, 3, 3, 3, 3, 3, 3, 3}));
    objects.push_back(text);
    EXPECT_FALSE(isHarmlessBinary(binary(objects)));
    objects[0] = array({1});
    EXPECT_TRUE(isHarmlessBinary(binary(objects)));
}

TEST(PropertyListGuardTest, refusesATextWithANulCharacter) {
    EXPECT_FALSE(
        isHarmlessBinary(binary({std::string("\x53"
                                             "a\0b",
                                             4)})));
    EXPECT_FALSE(isHarmlessBinary(binary({std::string("\x62\0a\0\0", 5)})));
    EXPECT_TRUE(isHarmlessBinary(binary({std::string("\x62\0a\1\0", 5)})));
    EXPECT_TRUE(isHarmlessBinary(binary({std::string("\x41\0", 2)})));
}

TEST(PropertyListGuardTest, refusesReferencesAndCountsBeyondTheEnd) {
    EXPECT_FALSE(isHarmlessBinary(binary({array({7})})));
    EXPECT_FALSE(
        isHarmlessBinary(binary({std::string("\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF")})));
    EXPECT_FALSE(
        isHarmlessBinary(binary({std::string("\xDF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF")})));
    EXPECT_FALSE(isHarmlessBinary(binary({std::string("\xAF\x1F")})));
    EXPECT_FALSE(isHarmlessBinary(binary({std::string("\xAF")})));
    EXPECT_FALSE(isHarmlessBinary(binary({std::string("\x5F\x10\x7Fx")})));
    EXPECT_FALSE(isHarmlessBinary(binary({})));
}

TEST(PropertyListGuardTest, refusesABrokenTrailer) {
    const std::string sound = binary({array({})});
    ASSERT_TRUE(isHarmlessBinary(sound));
    for (std::size_t at = sound.size() - 32; at < sound.size(); ++at) {
        std::string broken = sound;
        broken[at] = static_cast<char>(0xFF);
        // The first bytes of the trailer mean nothing.
        EXPECT_EQ(isHarmlessBinary(broken), at < sound.size() - 26) << at;
    }
    EXPECT_FALSE(isHarmlessBinary(sound.substr(0, 39)));
}

}  // namespace
}  // namespace vornic::platform
