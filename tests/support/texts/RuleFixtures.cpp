#include "tests/support/texts/RuleFixtures.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "tests/support/machine/Sandbox.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;

const fs::path kFolder = VORNIC_SOURCE "/tests/data/check";

std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

CheckOptions optionsOf(const fs::path& folder) {
    CheckOptions options;
    const fs::path file = folder / "options";
    if (!fs::exists(file)) {
        return options;
    }
    std::istringstream words(readBytes(file));
    for (std::string word; words >> word;) {
        std::string value;
        if (word != "--reads" || !(words >> value)) {
            throw std::runtime_error(file.string() + ": the option " + word + " is not known");
        }
        options.reads = value;
    }
    return options;
}

bool isFixture(const std::string& name) {
    const std::string extension = fs::path(name).extension();
    return (name.starts_with("broken") || name.starts_with("close")) &&
           (extension == ".xml" || extension == ".fcpxml");
}

}  // namespace

std::vector<std::string> ruleFixtureFolders() {
    std::vector<std::string> names = namesIn(kFolder);
    std::erase_if(names, [](const std::string& name) { return !fs::is_directory(kFolder / name); });
    return names;
}

std::vector<RuleFixture> ruleFixtures() {
    std::vector<RuleFixture> fixtures;
    for (const std::string& rule : ruleFixtureFolders()) {
        CheckOptions options = optionsOf(kFolder / rule);
        for (const std::string& name : namesIn(kFolder / rule)) {
            const fs::path path = kFolder / rule / name;
            options.fileName = name;
            if (isFixture(name)) {
                fixtures.push_back({rule, name, readBytes(path), options});
            } else if (name != "options") {
                throw std::runtime_error(path.string() + " is no fixture");
            }
        }
    }
    return fixtures;
}

}  // namespace vornic::test
