#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace vornic::test {

namespace {

namespace fs = std::filesystem;

// The floors of the folders; an include points down or sideways.
const std::map<std::string, int>& floors() {
    static const std::map<std::string, int> map = {
        {"base", 0},   {"platform", 1}, {"foundation", 2}, {"xml", 3},   {"ui", 3},
        {"report", 4}, {"formats", 5},  {"check", 6},      {"media", 6}, {"picture", 6},
        {"mend", 6},   {"salvage", 6},  {"convert", 6},    {"job", 7},   {"repair", 8},
        {"app", 9},    {"desktop", 10}};
    return map;
}

// Rooms on another floor than their folder.
const std::map<std::string, int>& rooms() {
    static const std::map<std::string, int> map = {{"convert/catalogue", 5}, {"job/batch", 8}};
    return map;
}

// Nothing for a file that is on no floor.
std::optional<int> floorOf(const std::string& path) {
    if (const auto room = rooms().find(fs::path(path).parent_path()); room != rooms().end()) {
        return room->second;
    }
    const auto floor = floors().find(path.substr(0, path.find('/')));
    return floor == floors().end() ? std::nullopt : std::optional(floor->second);
}

struct SourceFile {
    /// Names between quotes and between angle brackets, in the order of the file.
    std::vector<std::string> ownIncludes;
    std::vector<std::string> systemIncludes;
    std::string guard;
};

std::string between(const std::string& line, std::string_view opening, char closing) {
    if (!line.starts_with(opening)) {
        return "";
    }
    const std::string rest = line.substr(opening.size());
    return rest.substr(0, rest.find(closing));
}

SourceFile readSource(const fs::path& path) {
    SourceFile file{{}, {}, ""};
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        if (const std::string own = between(line, "#include \"", '"'); !own.empty()) {
            file.ownIncludes.push_back(own);
        } else if (const std::string other = between(line, "#include <", '>'); !other.empty()) {
            file.systemIncludes.push_back(other);
        } else if (file.guard.empty()) {
            file.guard = between(line, "#ifndef ", ' ');
        }
    }
    return file;
}

// Every header and source file below the folders, by its path in the project.
std::map<std::string, SourceFile> readSources(const std::vector<std::string>& folders) {
    std::map<std::string, SourceFile> files;
    for (const std::string& folder : folders) {
        const fs::path root = fs::path(VORNIC_SOURCE) / folder;
        if (!fs::exists(root)) {
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            if (entry.path().extension() == ".h" || entry.path().extension() == ".cpp") {
                files[fs::relative(entry.path(), VORNIC_SOURCE)] = readSource(entry.path());
            }
        }
    }
    return files;
}

// The folders of the code and these.
std::vector<std::string> foldersWith(std::vector<std::string> others) {
    for (const auto& [folder, floor] : floors()) {
        others.push_back(folder);
    }
    return others;
}

std::map<std::string, SourceFile> code() {
    std::map<std::string, SourceFile> files = readSources(foldersWith({}));
    constexpr std::size_t kFewestFiles = 60;
    EXPECT_GT(files.size(), kFewestFiles) << "the sources were not found";
    return files;
}

// Follows the includes of headers, depth first, and keeps the way there.
class LoopSearch {
  public:
    explicit LoopSearch(const std::map<std::string, SourceFile>& files) : files_(files) {}

    // The files of a loop, or nothing.
    std::vector<std::string> search(const std::string& path) {
        if (const auto open = std::find(way_.begin(), way_.end(), path); open != way_.end()) {
            std::vector<std::string> loop(open, way_.end());
            loop.push_back(path);
            return loop;
        }
        const auto file = files_.find(path);
        if (file == files_.end() || !done_.insert(path).second) {
            return {};
        }
        way_.push_back(path);
        for (const std::string& include : file->second.ownIncludes) {
            if (std::vector<std::string> loop = search(include); !loop.empty()) {
                return loop;
            }
        }
        way_.pop_back();
        return {};
    }

  private:
    const std::map<std::string, SourceFile>& files_;
    std::set<std::string> done_;
    std::vector<std::string> way_;
};

}  // namespace

TEST(SourceTree, everyRoomOnAFloorOfItsOwnIsThere) {
    for (const auto& [room, floor] : rooms()) {
        EXPECT_TRUE(fs::is_directory(fs::path(VORNIC_SOURCE) / room)) << room;
    }
}

// A newcomer finds by it where a file belongs.
TEST(SourceTree, everyRoomHasASentence) {
    std::ifstream stream(fs::path(VORNIC_SOURCE) / "docs/architecture.md");
    const std::string page(std::istreambuf_iterator<char>(stream), {});
    std::set<std::string> folders;
    for (const auto& [path, file] : code()) {
        folders.insert(fs::path(path).parent_path());
    }
    for (const std::string& room : folders) {
        if (room.find('/') != std::string::npos) {
            EXPECT_NE(page.find("| `" + room + "` |"), std::string::npos) << room;
        }
    }
}

// What a folder's library links is what its files include, so that no program is linked with what
// it has no use for.
TEST(SourceTree, aRepairUsesNothingOfConversionsButTheCatalogue) {
    for (const auto& [path, file] : code()) {
        for (const std::string& include : file.ownIncludes) {
            EXPECT_FALSE(path.starts_with("repair/pipeline/") && include.starts_with("convert/") &&
                         !include.starts_with("convert/catalogue/"))
                << path << " includes " << include;
        }
    }
}

TEST(SourceTree, includesPointDownOrSideways) {
    for (const auto& [path, file] : code()) {
        for (const std::string& include : file.ownIncludes) {
            const std::optional<int> floor = floorOf(include);
            if (!floor) {
                ADD_FAILURE() << path << " includes " << include << ", which is on no floor";
            } else {
                EXPECT_LE(*floor, floorOf(path).value())
                    << path << " includes " << include << " from a higher floor";
            }
        }
    }
}

TEST(SourceTree, everyIncludeBeginsAtTheProjectsFolder) {
    for (const auto& [path, file] : code()) {
        for (const std::string& include : file.ownIncludes) {
            EXPECT_TRUE(fs::exists(fs::path(VORNIC_SOURCE) / include))
                << path << " includes " << include;
        }
    }
}

TEST(SourceTree, noFileIncludesItselfThroughOthers) {
    const std::map<std::string, SourceFile> files = code();
    LoopSearch search(files);
    for (const auto& [path, file] : files) {
        std::string loop;
        for (const std::string& step : search.search(path)) {
            loop += " > " + step;
        }
        EXPECT_EQ(loop, "");
    }
}

TEST(SourceTree, onlyTheDesktopIncludesQt) {
    const auto isAboutTheDesktop = [](const std::string& path) {
        return path.starts_with("tests/desktop/") || path.starts_with("bench/desktop/");
    };
    for (const auto& [path, file] : readSources(foldersWith({"bench", "fuzz", "tests"}))) {
        if (path.starts_with("desktop/")) {
            continue;
        }
        for (const std::string& include : file.systemIncludes) {
            EXPECT_FALSE(include.starts_with("Q") && !isAboutTheDesktop(path))
                << path << " includes <" << include << ">";
        }
    }
}

TEST(SourceTree, everyHeaderHasAGuardOfItsOwn) {
    std::map<std::string, std::string> owners;
    for (const auto& [path, file] : readSources(foldersWith({"bench", "fuzz", "tests"}))) {
        if (!path.ends_with(".h")) {
            continue;
        }
        std::string folder = fs::path(path).parent_path();
        std::replace(folder.begin(), folder.end(), '/', '_');
        std::transform(folder.begin(), folder.end(), folder.begin(),
                       [](unsigned char c) { return std::toupper(c); });
        EXPECT_TRUE(file.guard.starts_with("VORNIC_" + folder + "_") && file.guard.ends_with("_H"))
            << path << " has the guard " << file.guard;
        EXPECT_EQ(owners.emplace(file.guard, path).first->second, path) << file.guard;
    }
}

// A sentence begins with a capital letter and has a blank.
bool hasSentence(const std::string& line) {
    for (std::size_t at = line.find('"'); at != std::string::npos;) {
        const std::size_t end = line.find('"', at + 1);
        const std::string literal = line.substr(at + 1, end - at - 1);
        if (literal.find(' ') != std::string::npos && std::isupper(literal[0])) {
            return true;
        }
        at = end == std::string::npos ? end : line.find('"', end + 1);
    }
    return false;
}

TEST(SourceTree, whatARepairSaysStandsInTheTableOfRules) {
    // The given alerts, questions and log lines of documents and conversions.
    const std::set<std::string> documents = {"Document.cpp", "DocumentConversion.cpp",
                                             "ConversionMessages.cpp"};
    const fs::path root = VORNIC_SOURCE;
    std::vector<fs::path> stages = {root / "job/WorkingCopy.cpp", root / "job/LeftFiles.cpp"};
    for (const auto& entry : fs::recursive_directory_iterator(root / "repair")) {
        const fs::path& path = entry.path();
        if (path.extension() == ".cpp" && !documents.contains(path.filename())) {
            stages.push_back(path);
        }
    }
    std::size_t rules = 0;
    for (const fs::path& path : stages) {
        std::ifstream stream(path);
        EXPECT_TRUE(stream.is_open()) << path;
        for (std::string line; std::getline(stream, line);) {
            rules += line.find("\"_rule") == std::string::npos ? 0 : 1;
            EXPECT_FALSE(hasSentence(line)) << path << ": " << line;
        }
    }
    EXPECT_GT(rules, stages.size());
}

}  // namespace vornic::test
