#include "tests/formats/fcpxml/OtherParser.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/formats/fcpxml/DocumentGenerator.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

namespace {

using fcpxml::Version;

constexpr const char* kXmllint = "/usr/bin/xmllint";

std::string definitionName(Version version) {
    return version.text() + ".dtd";
}

// By the numbers at the beginning of lines such as "12.xml:3: ...".
std::map<std::size_t, std::string> linesByNumber(const std::string& errors) {
    std::map<std::size_t, std::string> found;
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t end = line.find(".xml:");
        const bool isNumber =
            end != std::string::npos && end != 0 &&
            std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(end),
                        [](char c) { return c >= '0' && c <= '9'; });
        if (isNumber) {
            found[std::stoul(line.substr(0, end))] += line + "\n";
        }
    }
    return found;
}

}  // namespace

bool OtherParser::isThere() {
    return std::filesystem::exists(kXmllint);
}

OtherParser::OtherParser(const Sandbox& sandbox) : sandbox_(sandbox) {
    for (int minor = 0; minor <= Version::kNewestMinor; ++minor) {
        sandbox.write(definitionName(Version(minor)), documentTypeDefinition(Version(minor)));
    }
}

std::map<std::size_t, std::string> OtherParser::refusals(
    const std::vector<VersionedText>& texts) const {
    if (texts.empty()) {
        return {};
    }
    std::vector<std::string> arguments{"--noout", "--huge", "--valid"};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string name = std::to_string(i) + ".xml";
        sandbox_.write(name, withDefinition(texts[i]));
        arguments.push_back(name);
    }
    const ProgramResult result =
        runProgram({kXmllint, arguments, {"PATH=/usr/bin", "LANG=C"}, sandbox_.folder()});
    std::map<std::size_t, std::string> refused = linesByNumber(result.errors);
    EXPECT_EQ(result.signal, 0);
    EXPECT_TRUE(result.status == 0 || !refused.empty()) << result.errors;
    return refused;
}

std::string withDefinition(const VersionedText& text) {
    const std::string declaration =
        "<!DOCTYPE fcpxml SYSTEM \"" + definitionName(text.version) + "\">";
    std::string result = text.text;
    const std::size_t own = result.find("<!DOCTYPE");
    if (own != std::string::npos) {
        return result.replace(own, result.find('>', own) + 1 - own, declaration);
    }
    const std::size_t start = result.starts_with("<?xml") ? result.find("?>") + 2 : 0;
    return result.insert(start, declaration);
}

}  // namespace vornic::test
