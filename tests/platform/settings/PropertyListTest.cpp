#include <clocale>
#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

#include "platform/files/FileSystem.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

std::string document(const std::string& contents) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//A//DTD PLIST 1.0//EN\" \"http://a/p.dtd\">\n"
           "<plist version=\"1.0\">" +
           contents + "</plist>\n";
}

PropertyList value(PropertyList::Value contents) {
    return PropertyList(std::move(contents));
}

/// One of every kind.
PropertyList manyKinds() {
    PropertyList::Dictionary entries;
    entries["text"] = "a <b> & \"c\" \xC3\xA9 \xF0\x9F\x8E\xAC\n";
    entries["empty text"] = "";
    entries["zero"] = 0;
    entries["negative"] = -5;
    entries["least"] = value(std::numeric_limits<std::int64_t>::min());
    entries["most"] = value(std::numeric_limits<std::int64_t>::max());
    entries["real"] = value(-0.1);
    entries["true"] = value(true);
    entries["false"] = value(false);
    entries["date"] = value(PropertyList::Date{1'700'000'000});
    entries["early date"] = value(PropertyList::Date{0});
    entries["data"] = value(PropertyList::Data{std::string("\0\xFF\x01", 3)});
    entries["no data"] = value(PropertyList::Data{});
    entries["array"] = value(PropertyList::Array{1, "two", value(PropertyList::Array{})});
    entries["dictionary"] = value(PropertyList::Dictionary{{"<&>", 1}, {"", 2}});
    return value(std::move(entries));
}

class PropertyListTest : public test::SandboxTest {
  protected:
    ErrorSlot error;
};

TEST_F(PropertyListTest, keepsTheKindOfTheNumberThatItIsMadeFrom) {
    ASSERT_NE(PropertyList(true).boolean(), nullptr);
    EXPECT_TRUE(*PropertyList(true).boolean());
    constexpr std::int64_t kLarge = std::int64_t{1} << 40U;
    ASSERT_NE(PropertyList(kLarge).integer(), nullptr);
    EXPECT_EQ(*PropertyList(kLarge).integer(), kLarge);
    EXPECT_EQ(PropertyList(7U), PropertyList(7));
    EXPECT_EQ(std::get<double>(PropertyList(1.5).value()), 1.5);
}

TEST_F(PropertyListTest, isAnEmptyDictionaryAtFirst) {
    ASSERT_NE(PropertyList().dictionary(), nullptr);
    EXPECT_TRUE(PropertyList().dictionary()->empty());
}

TEST_F(PropertyListTest, viewsAValueByItsOwnTypeAlone) {
    const PropertyList number(7);
    EXPECT_EQ(*number.integer(), 7);
    EXPECT_EQ(number.string(), nullptr);
    EXPECT_EQ(number.boolean(), nullptr);
    EXPECT_EQ(number.array(), nullptr);
    EXPECT_EQ(number.dictionary(), nullptr);
    EXPECT_EQ(number.find("key"), nullptr);
}

TEST_F(PropertyListTest, findsAnEntryByItsKey) {
    const PropertyList list = manyKinds();
    ASSERT_NE(list.find("zero"), nullptr);
    EXPECT_EQ(*list.find("zero"), PropertyList(0));
    EXPECT_EQ(list.find("Zero"), nullptr);
}

TEST_F(PropertyListTest, keepsEveryKindThroughXML) {
    const PropertyList list = manyKinds();
    const std::optional<PropertyList> again = PropertyList::parse(list.toXML());
    ASSERT_TRUE(again);
    EXPECT_TRUE(*again == list) << again->toXML();
}

TEST_F(PropertyListTest, readsXMLByOthers) {
    const std::optional<PropertyList> list = PropertyList::parse(
        document("<dict>\n <!-- a note --><key>a</key> <integer>0x1F</integer>\n"
                 "<key>b</key><string>x<![CDATA[<&>]]>&#x41;&amp;</string>"
                 "<key>c</key><true/><key>d</key><real>1.5</real><key>e</key><array/></dict>"));
    ASSERT_TRUE(list);
    EXPECT_EQ(*list->find("a"), PropertyList(31));
    EXPECT_EQ(*list->find("b"), PropertyList("x<&>A&"));
    EXPECT_EQ(*list->find("c"), value(true));
    EXPECT_EQ(*list->find("d"), value(1.5));
    EXPECT_EQ(*list->find("e"), value(PropertyList::Array{}));
}

TEST_F(PropertyListTest, readsAListThatIsNoDictionary) {
    EXPECT_EQ(PropertyList::parse(document("<string>text</string>")), PropertyList("text"));
    EXPECT_EQ(PropertyList::parse(document("<array><integer>1</integer></array>")),
              value(PropertyList::Array{1}));
}

/// {"key": ["text", 300, true]} in the binary form.
std::string binaryList() {
    const std::string objects(
        "\xD1\x01\x02"
        "\x53key"
        "\xA3\x03\x04\x05"
        "\x54text"
        "\x11\x01\x2C"
        "\x09",
        20);
    const std::string offsets("\x08\x0B\x0F\x13\x18\x1B", 6);
    std::string trailer(32, '\0');
    trailer[6] = 1;
    trailer[7] = 1;
    trailer[15] = 6;
    trailer[31] = static_cast<char>(8 + objects.size());
    return "bplist00" + objects + offsets + trailer;
}

TEST_F(PropertyListTest, hasNoBinaryFormWithATextThatIsNoUTF8) {
    const std::string bad = "Trea\xE6";
    EXPECT_EQ(PropertyList(PropertyList::Value(bad)).toBinary(), "");
    EXPECT_EQ(
        PropertyList(PropertyList::Array{1, PropertyList(PropertyList::Value(bad))}).toBinary(),
        "");
    EXPECT_EQ(PropertyList(PropertyList::Dictionary{{bad, 1}}).toBinary(), "");
    EXPECT_NE(PropertyList(PropertyList::Dictionary{{"\xC3\xA6", 1}}).toBinary(), "");
}

TEST_F(PropertyListTest, readsTheBinaryForm) {
    const std::optional<PropertyList> list = PropertyList::parse(binaryList());
    ASSERT_TRUE(list);
    EXPECT_EQ(*list, value(PropertyList::Dictionary{
                         {"key", value(PropertyList::Array{"text", 300, value(true)})}}));
}

TEST_F(PropertyListTest, reportsWhatCannotBeWrittenAgain) {
    const auto can = [](const std::string& bytes) {
        return PropertyList::canBeWrittenAgain(bytes);
    };
    EXPECT_TRUE(can(binaryList()));
    EXPECT_TRUE(can(manyKinds().toXML()));
    EXPECT_TRUE(can(manyKinds().toBinary()));
    EXPECT_TRUE(can(document("<integer>9223372036854775807</integer>")));
    EXPECT_FALSE(can(document("<integer>9223372036854775808</integer>")));
    EXPECT_FALSE(can(document("<array><integer>18446744073709551615</integer></array>")));
    EXPECT_TRUE(can(document("<date>2069-01-01T00:00:00Z</date>")));
    for (const char* const year : {"1600", "2070", "4001"}) {
        const std::string day = std::string(year) + "-01-01T00:00:00Z";
        EXPECT_FALSE(can(document("<dict><key>a</key><date>" + day + "</date></dict>"))) << year;
    }
    std::string identifier = binaryList();
    identifier[identifier.find("\x11\x01")] = '\x81';
    ASSERT_TRUE(PropertyList::parse(identifier));
    EXPECT_FALSE(can(identifier));
    EXPECT_FALSE(can("no list"));
}

TEST_F(PropertyListTest, refusesWhatIsNoPropertyList) {
    for (const std::string& bytes :
         {std::string(), std::string("text"), std::string("<"), std::string("<html></html>"),
          document(""), document("<dict><key>a</key></array>"), document("<dict><true/></dict>"),
          document("<array><integer>1</integer>"), std::string("bplist00"),
          binaryList().substr(0, 40), std::string(1000, '\0')}) {
        EXPECT_EQ(PropertyList::parse(bytes), std::nullopt) << bytes;
    }
}

TEST_F(PropertyListTest, refusesAKeyThatANulByteCutsShort) {
    std::string bytes = binaryList();
    bytes[bytes.find("key") + 1] = '\0';
    EXPECT_EQ(PropertyList::parse(bytes), std::nullopt);
    EXPECT_EQ(PropertyList::parse(document("<dict><key>a&#0;b</key><true/></dict>")), std::nullopt);
}

TEST_F(PropertyListTest, survivesEveryCutAndEveryChangedByte) {
    for (const std::string& sound : {binaryList(), manyKinds().toXML()}) {
        for (std::size_t at = 0; at < sound.size(); ++at) {
            static_cast<void>(PropertyList::parse(sound.substr(0, at)));
            for (const unsigned byte : {0x00U, 0xFFU, 0x0FU, 0x3CU, 0xA1U, 0xD1U}) {
                std::string changed = sound;
                changed[at] = static_cast<char>(byte);
                static_cast<void>(PropertyList::parse(changed));
            }
        }
        EXPECT_TRUE(PropertyList::parse(sound));
    }
}

TEST_F(PropertyListTest, refusesNestingThatCouldExhaustTheStack) {
    std::string deep;
    for (int level = 0; level < 200'000; ++level) {
        deep += "<array>";
    }
    EXPECT_EQ(PropertyList::parse("<plist>" + deep), std::nullopt);
}

TEST_F(PropertyListTest, refusesMoreThan16Megabytes) {
    const std::string text(std::size_t{17} << 20U, 'x');
    EXPECT_EQ(PropertyList::parse(document("<string>" + text + "</string>")), std::nullopt);
}

TEST_F(PropertyListTest, readsAndWritesNumbersWithAPointWhateverTheLocale) {
    const std::string locale = sandbox.path("de_DE.UTF-8");
    const std::string make =
        "localedef -i de_DE -f UTF-8 --no-archive '" + locale + "' 2>/dev/null";
    setenv("LOCPATH", sandbox.folder().c_str(), 1);
    if (std::system(make.c_str()) != 0 || std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
        GTEST_SKIP() << "needs the means to make a locale with a decimal comma";
    }
    EXPECT_EQ(std::to_string(1.5), "1,500000");
    EXPECT_EQ(PropertyList::parse(document("<real>1.5</real>")), value(1.5));
    EXPECT_NE(value(1.5).toXML().find("<real>1.5</real>"), std::string::npos);
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
}

TEST_F(PropertyListTest, writesAFileWithTheFoldersAboveIt) {
    const std::string path = sandbox.path("a/b/list.plist");
    EXPECT_TRUE(manyKinds().writeFile(path, error));
    EXPECT_EQ(PropertyList::readFile(path, error), manyKinds());
    EXPECT_FALSE(error);
}

TEST_F(PropertyListTest, reportsWhyAFileCannotBeRead) {
    EXPECT_EQ(PropertyList::readFile(sandbox.path("missing"), error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    const std::string path = sandbox.write("text", "no list");
    EXPECT_EQ(PropertyList::readFile(path, error), std::nullopt);
    EXPECT_EQ(error->description, "The file " + path + " cannot be read: it is no property list.");
}

TEST_F(PropertyListTest, reportsWhyAFileCannotBeWritten) {
    const std::string file = sandbox.write("file", "x");
    EXPECT_FALSE(manyKinds().writeFile(file + "/list.plist", error));
    EXPECT_TRUE(error);
}

class PropertyListDatesTest : public test::SandboxTest {
  protected:
    /// The bytes of the file that is written of a list, and what is read from it.
    std::string written(const PropertyList& list) {
        const std::string path = sandbox.path("list.plist");
        EXPECT_TRUE(list.writeFile(path, error));
        read = PropertyList::readFile(path, error).value_or(PropertyList());
        return test::readBytes(path);
    }
    static PropertyList listWith(double date, const std::string& text) {
        PropertyList::Dictionary entries;
        entries["date"] = PropertyList(PropertyList::Value(PropertyList::Date{date}));
        entries["text"] = PropertyList(PropertyList::Value(text));
        return PropertyList(PropertyList::Value(PropertyList::Array{PropertyList(entries)}));
    }

    ErrorSlot error;
    PropertyList read;
};

TEST_F(PropertyListDatesTest, keepsPartsOfSecondsInAFileOfTheBinaryForm) {
    const PropertyList list = listWith(1'700'000'000.75, "t\xC3\xA9xt");
    EXPECT_TRUE(written(list).starts_with("bplist00"));
    EXPECT_EQ(read, list);
}

TEST_F(PropertyListDatesTest, keepsMicroseconds) {
    static_cast<void>(written(listWith(1'700'000'000.123456, "")));
    const auto* date =
        std::get_if<PropertyList::Date>(&read.array()->front().find("date")->value());
    ASSERT_NE(date, nullptr);
    EXPECT_NEAR(date->secondsSince1970, 1'700'000'000.123456, 2.5e-6);
}

TEST_F(PropertyListDatesTest, writesWholeSecondsInTheReadableForm) {
    const PropertyList list = listWith(1'700'000'000, "text");
    EXPECT_TRUE(written(list).starts_with("<?xml"));
    EXPECT_EQ(read, list);
}

TEST_F(PropertyListDatesTest, ratherLosesAPartOfASecondThanAText) {
    EXPECT_TRUE(written(listWith(1'700'000'000.75, "no UTF-8: \xFF")).starts_with("<?xml"));
    EXPECT_EQ(read, listWith(1'700'000'000, "no UTF-8: \xFF"));
}

}  // namespace
}  // namespace vornic::platform
