#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "repair/pipeline/MarkupMends.h"
#include "tests/repair/pipeline/PipelineTest.h"
#include "tests/repair/pipeline/ReferenceFilter.h"
#include "xml/text/TextDecoding.h"

/// What holds of every repair, whatever bytes come in.
namespace vornic {
namespace {

using test::Strings;

const std::string kXMEML = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE xmeml>
<!-- made by hand -->
<xmeml version="4">
	<sequence id="s1">
		<name>Schnitt für Zoë &amp; Søren &#8211; “rough”</name>
		<duration>1200</duration>
		<media><video><track>
			<clipitem id='c1'><name>a &lt; b</name><enabled>TRUE</enabled><file id="f1"/>
				<logginginfo><lognote></lognote><description>  two  blanks  </description></logginginfo>
			</clipitem>
			<clipitem id="c2"><comments><![CDATA[x < y & "z" ]] é]]></comments></clipitem>
		</track></video></media>
		<?hint keep this?>
	</sequence>
</xmeml>
)";

const std::string kFCPXML = R"(<?xml version="1.0"?>
<!DOCTYPE fcpxml>
<fcpxml version="1.8">
    <resources><asset id="r2" name="Möwe" src="file:///a%20b.mov"/></resources>
    <library><event name="E">
        <video name="v"><audio ref="r2" lane="-1"/><audio lane="-2"/><note>a 'b' c</note></video>
        <project name="P"><sequence/></project>
    </event></library>
</fcpxml>
)";

/// Damages a text in one of the ways in which files come to harm.
class Damage {
  public:
    explicit Damage(std::uint32_t seed) : random_(seed) {}

    std::string doneTo(std::string text) {
        for (std::size_t times = 1 + below(3); times > 0; --times) {
            damage(text);
        }
        return text;
    }

  private:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    void damage(std::string& text) {
        const std::size_t place = below(text.size() + 1);
        switch (below(9)) {
            case 0:
                if (place < text.size()) {
                    text[place] = static_cast<char>(below(256));
                }
                return;
            case 1:
                text.erase(place, 1 + below(4));
                return;
            case 2:
                text.erase(place, 1 + below(80));
                return;
            case 3:
                text.insert(place, std::string(1, "<&>\"';]"[below(7)]));
                return;
            case 4:
                text.insert(place, std::string(1, static_cast<char>(below(0x20))));
                return;
            case 5:
                text.insert(place, kCharacters[below(kCharacters.size())]);
                return;
            case 6:
                text.resize(place);
                return;
            case 7:
                swapTags(text);
                return;
            default:
                text.insert(place, text.substr(below(text.size() + 1), below(60)));
                return;
        }
    }

    void swapTags(std::string& text) {
        std::vector<std::size_t> tags;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '<') {
                tags.push_back(i);
            }
        }
        if (tags.size() < 2) {
            return;
        }
        const std::size_t number = below(tags.size() - 1);
        const std::size_t first = tags[number];
        const std::size_t second = tags[number + 1];
        const std::size_t end = text.find('>', second);
        if (end != std::string::npos) {
            std::rotate(text.begin() + static_cast<std::ptrdiff_t>(first),
                        text.begin() + static_cast<std::ptrdiff_t>(second),
                        text.begin() + static_cast<std::ptrdiff_t>(end) + 1);
        }
    }

    const Strings kCharacters = {"\u00E9",       "\u6F22", "\U0001F600", "\uFEFF",
                                 "\uE000",       "\uFFFF", "\xFF",       "\xC3",
                                 "\xED\xA0\x80", "]]>",    "<![CDATA[",  "-->"};
    std::mt19937 random_;
};

/// The text that a repair works with: UTF-8 as it is, anything else without what is no printable
/// ASCII.
std::string workingText(const std::string& bytes) {
    if (!firstInvalidUTF8(bytes)) {
        return bytes.starts_with(kByteOrderMark) ? bytes.substr(kByteOrderMark.size()) : bytes;
    }
    std::string kept;
    for (const char byte : bytes) {
        if (byte >= 0x20 && byte <= 0x7E) {
            kept.push_back(byte);
        }
    }
    return kept;
}

/// What the filter may write for a unit.
std::vector<std::u16string> formsOf(char16_t u) {
    const std::string reference = u == '<'    ? "&lt;"
                                  : u == '>'  ? "&gt;"
                                  : u == '&'  ? "&amp;"
                                  : u == '"'  ? "&quot;"
                                  : u == '\'' ? "&apos;"
                                              : "&#" + std::to_string(unsigned{u}) + ";";
    std::vector<std::u16string> forms = {{u}, {reference.begin(), reference.end()}};
    if (u >= 0xD800 || (u < 0x20 && u != '\t' && u != '\n' && u != '\r')) {
        forms.emplace_back();
    }
    return forms;
}

/// True when `output` is `input` with nothing done but what the filter may do to a unit: leave it,
/// write it as a reference, or take it out when XML or the filter's range forbids it.
bool losesNothing(std::u16string_view input, std::u16string_view output) {
    // How much of the output may stand for the units so far; more than one length at an ampersand.
    std::set<std::size_t> lengths = {0};
    for (const char16_t u : input) {
        std::set<std::size_t> longer;
        for (const std::size_t length : lengths) {
            for (const std::u16string& form : formsOf(u)) {
                if (output.substr(length).starts_with(form)) {
                    longer.insert(length + form.size());
                }
            }
        }
        lengths = std::move(longer);
    }
    return lengths.contains(output.size());
}

/// Everything that a document says, in order, without what only lays it out.
class Content {
  public:
    static std::string of(const std::string& text) {
        pugi::xml_document document;
        constexpr unsigned kFlags = pugi::parse_comments | pugi::parse_pi | pugi::parse_cdata |
                                    pugi::parse_escapes | pugi::parse_ws_pcdata | pugi::parse_eol |
                                    pugi::parse_wconv_attribute;
        const pugi::xml_parse_result result =
            document.load_buffer(text.data(), text.size(), kFlags, pugi::encoding_utf8);
        EXPECT_TRUE(result) << result.description() << "\n" << text;
        Content content;
        content.add(document);
        return content.said_;
    }

  private:
    void add(pugi::xml_node parent) {
        for (const pugi::xml_node node : parent.children()) {
            switch (node.type()) {
                case pugi::node_element:
                    addElement(node);
                    break;
                case pugi::node_pcdata:
                    addText(node);
                    break;
                case pugi::node_cdata:
                    said_ += "[cdata]" + std::string(node.value());
                    break;
                case pugi::node_comment:
                    said_ += "[comment]" + std::string(node.value());
                    break;
                case pugi::node_pi:
                    said_ += "[pi]" + std::string(node.name()) + " " + node.value();
                    break;
                default:
                    ADD_FAILURE() << "a node of type " << node.type();
            }
        }
    }

    void addElement(pugi::xml_node element) {
        said_ += "[" + std::string(element.name());
        for (const pugi::xml_attribute attribute : element.attributes()) {
            // The one attribute that a repair adds.
            if (std::string_view(element.name()) != "audio" ||
                std::string_view(attribute.name()) != "ref") {
                said_ += " " + std::string(attribute.name()) + "=" + attribute.value();
            }
        }
        said_ += "]";
        add(element);
        said_ += "[/]";
    }

    void addText(pugi::xml_node text) {
        const std::string_view value = text.value();
        const bool isLayout = value.find_first_not_of(" \t\r\n") == std::string_view::npos;
        // White space that is all that an element holds is content.
        if (!isLayout || (!text.previous_sibling() && !text.next_sibling())) {
            said_ += "[text]" + std::string(value);
        }
    }

    std::string said_;
};

class RepairDamageTest : public test::PipelineTest {
  protected:
    void check(const std::string& name, const std::string& damaged) {
        const std::string path = sandbox.write(name, damaged);
        events = {};
        const RepairOutcome outcome = run(path);
        ++counts[outcome];
        if (outcome == RepairOutcome::repairedAndSwapped) {
            checkRepaired(name, damaged);
        } else {
            ASSERT_NE(outcome, RepairOutcome::cancelled);
            ASSERT_NE(outcome, RepairOutcome::repairedNotSwapped);
            ASSERT_EQ(test::readBytes(path), damaged);
            ASSERT_FALSE(test::exists(trash()));
        }
        if (outcome == RepairOutcome::sound) {
            ASSERT_FALSE(readXML(workingText(damaged), XMLMode::strict).fault.has_value());
        }
        if (outcome != RepairOutcome::stopped) {
            ASSERT_EQ(names(), Strings{name});
        }
        test::removeTrash(sandbox.home());
        std::filesystem::remove_all(sandbox.path(name));
        std::filesystem::remove_all(RepairPipeline::workingCopyPath(path, result.kind));
    }

    void checkRepaired(const std::string& name, const std::string& damaged) {
        ASSERT_EQ(namesInTrash(), Strings{name});
        ASSERT_EQ(test::readBytes(trash() + "/" + name), damaged);
        const std::string repaired = test::readBytes(sandbox.path(name));
        const XMLReading reading = readXML(repaired, XMLMode::strict);
        ASSERT_FALSE(reading.fault.has_value()) << reading.fault->localizedDescription();
        const std::string text = workingText(damaged);
        const std::string mended =
            applyXMLEdits(text, editsBeforeFilter(text, readXML(text, XMLMode::tolerant).edits));
        const std::optional<std::string> filtered = test::referenceFilter(mended);
        ASSERT_TRUE(filtered.has_value());
        ASSERT_TRUE(losesNothing(test::unitsOf(mended), test::unitsOf(*filtered)));
        ASSERT_EQ(Content::of(repaired), Content::of(*filtered));
    }

    std::map<RepairOutcome, int> counts;
};

struct Fixture {
    std::string name;
    std::string text;
    friend std::ostream& operator<<(std::ostream& stream, const Fixture& fixture) {
        return stream << fixture.name;
    }
};

class RepairDamaged : public RepairDamageTest, public ::testing::WithParamInterface<Fixture> {};

TEST_P(RepairDamaged, filesAreUntouchedOrInTheTrashWithAllTheirContentRepaired) {
    const auto& [name, sound] = GetParam();
    for (std::uint32_t seed = 0; seed < 400; ++seed) {
        const std::string damaged = Damage(seed).doneTo(sound);
        check(name, damaged);
        if (HasFatalFailure()) {
            FAIL() << "seed " << seed << ":\n" << damaged;
        }
    }
    // The damages are such that every end of a run is met.
    EXPECT_GT(counts[RepairOutcome::sound], 0);
    EXPECT_GT(counts[RepairOutcome::repairedAndSwapped], 0);
    EXPECT_GT(counts[RepairOutcome::unable], 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, RepairDamaged,
                         ::testing::Values(Fixture{"Cut.xml", kXMEML},
                                           Fixture{"Cut.fcpxml", kFCPXML}),
                         [](const auto& fixture) {
                             return fixture.index == 0 ? "XMEML" : "FCPXML";
                         });

TEST_F(RepairDamageTest, anyBytesAtAll) {
    std::mt19937 random(7);
    for (int time = 0; time < 200; ++time) {
        std::string bytes(random() % 200, '\0');
        for (char& byte : bytes) {
            byte = random() % 3 == 0 ? "<>/!?&\"'[]="[random() % 11]
                                     : static_cast<char>(random() % 256);
        }
        check("Cut.xml", bytes);
        if (HasFatalFailure()) {
            FAIL() << "time " << time;
        }
    }
}

TEST(LosesNothing, isNoCheckThatCannotFail) {
    EXPECT_TRUE(losesNothing(u"a<b\u00E9\x01", u"a&lt;b&#233;"));
    EXPECT_TRUE(losesNothing(u"&amp; & &amp;amp;", u"&amp; &amp; &amp;amp;"));
    EXPECT_FALSE(losesNothing(u"ab", u"a"));
    EXPECT_FALSE(losesNothing(u"a", u"ab"));
    EXPECT_FALSE(losesNothing(u"a<b", u"ab"));
    EXPECT_FALSE(losesNothing(u"\u00E9", u"e"));
}

}  // namespace
}  // namespace vornic
