// Measures the programs as whole processes against xmllint, and against themselves on other input.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "bench/Contest.h"
#include "bench/FCPXMLSample.h"
#include "bench/SampleProject.h"
#include "tests/formats/fcpxml/DocumentGenerator.h"

namespace vornic::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMegabyte = 1000 * 1000;
constexpr int kManyRuns = 101;
constexpr int kWrongUsage = 2;
constexpr std::size_t kManyFaults = 6'000'000;
constexpr std::size_t kMends = 1000;
constexpr std::size_t kLostTags = 1000;
constexpr int kDefinedMinor = 10;
// For what is measured for its memory alone.
constexpr double kNoTarget = 100;
constexpr double kConversionTarget = 0.35;

std::string firstBytes(const std::string& path) {
    constexpr std::size_t kEnough = 400;
    std::ifstream stream(path, std::ios::binary);
    std::string bytes(kEnough, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(kEnough));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

// All that was written before is on the disk, the other program's result too, so that its writing
// does not fall into a measured run.
void settle(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file >= 0) {
        syncfs(file);
        close(file);
    }
}

class Comparison {
  public:
    Comparison(std::string programs, std::string folder)
        : programs_(std::move(programs)), folder_(std::move(folder)) {
        const std::string home = folder_ + "/home";
        fs::create_directories(home);
        setenv("HOME", home.c_str(), 1);
        for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) {
            unsetenv(variable);
        }
    }

    /// @param only "checks", "conversions", "media", "mends" or "salvages", or nothing for all.
    bool run(std::string_view only) {
        printContestHeading();
        if (only.empty()) {
            compareRepairs();
        }
        const auto isAsked = [only](std::string_view part) { return only.empty() || only == part; };
        if (isAsked("checks")) {
            compareChecks();
        }
        if (isAsked("conversions")) {
            compareConversions();
        }
        if (isAsked("media")) {
            compareMedia();
        }
        if (isAsked("mends")) {
            compareMends();
        }
        if (isAsked("salvages")) {
            compareSalvages();
        }
        return allReached_;
    }

  private:
    void compareRepairs() {
        for (const auto& [megabytes, runs] : {std::pair{1, 21}, {10, 11}, {50, 5}, {200, 5}}) {
            const std::string size = std::to_string(megabytes) + " MB";
            const std::string file = make(size, {.bytes = megabytes * kMegabyte});
            // The aims are set for 50 MB; no size is to be slower than the rival.
            const bool isMeasure = megabytes == 50;
            compare({"repair a sound file, " + size, repairSound(file), format(file),
                     isMeasure ? 0.6 : 1, 1, runs});
            compare({"convert 5 to 4, " + size,
                     convert(file, 4),
                     format(file),
                     isMeasure ? 0.4 : 1,
                     {},
                     runs});
        }
        const std::string version4 =
            make("50 MB, version 4", {.bytes = 50 * kMegabyte, .version = 4});
        compare({"repair, 50 MB, version 4", repairSound(version4), format(version4), 0.6, 1});
        const std::string small = make("3 KB", {.bytes = 1000, .version = 4});
        compare({"repair a sound file, 3 KB", repairSound(small), format(small), 1, {}, kManyRuns});
        compare({"convert 4 to 5, 3 KB", convert(small, 5), format(small), 1, {}, kManyRuns});
        const std::string sound = path("50 MB");
        const std::string damaged =
            make("50 MB, damaged", {.bytes = 50 * kMegabyte, .faultEvery = 1000});
        compare({"50 MB: damaged / sound", repairDamaged(damaged), repairSound(sound), 2, {}});
        compare(
            {"repair: 200 MB / 50 MB", repairSound(path("200 MB")), repairSound(sound), 4.4, {}});
    }

    void compareChecks() {
        const std::string sound = make("50 MB", {.bytes = 50 * kMegabyte});
        const std::string huge = make("200 MB", {.bytes = 200 * kMegabyte});
        compare({"check XMEML, 50 MB", check(sound), lint(sound), 0.5, 0.35});
        compare({"check XMEML: 200 MB / 50 MB", check(huge), check(sound), 4.4, {}});
        writeDefinition();
        const std::string projects = makeFCPXML("50 MB", {.bytes = 50 * kMegabyte});
        const std::string many = makeFCPXML("200 MB", {.bytes = 200 * kMegabyte});
        compare({"check FCPXML, 50 MB", check(projects), validate(projects), 0.3, {}});
        compare({"check FCPXML: 200 MB / 50 MB", check(many), check(projects), 4.4, {}});
        const std::string larger = makeFCPXML("60 MB", {.bytes = 60 * kMegabyte});
        const std::string faulty =
            makeFCPXML("faults", {.bytes = 60 * kMegabyte, .strayAmpersands = kManyFaults});
        Contender faults = check(faulty);
        faults.status = 1;
        faults.fault = [](const std::string& printed) {
            return missing(printed, std::to_string(kManyFaults) + " errors, ");
        };
        compare({"60 MB: 6,000,000 faults / sound", faults, check(larger), kNoTarget, 1.3});
    }

    // Down to 1.9 nothing is lost, down to 1.8 the path of each asset gets another place.
    void compareConversions() {
        const std::string projects = makeFCPXML("50 MB", {.bytes = 50 * kMegabyte});
        const std::string many = makeFCPXML("200 MB", {.bytes = 200 * kMegabyte});
        for (const std::string version : {"1.9", "1.8", "1.14"}) {
            compareConversion("FCPXML 1.10 to " + version, projects, version);
        }
        compare({"convert FCPXML: 200 MB / 50 MB",
                 convertProject(many, "1.8"),
                 convertProject(projects, "1.8"),
                 4.4,
                 {}});
        const std::string sound = make("50 MB", {.bytes = 50 * kMegabyte});
        compareConversion("XMEML 5 to 4", sound, "4");
    }

    void compareConversion(const std::string& name, const std::string& file,
                           const std::string& version) {
        const double most = 2 * static_cast<double>(fs::file_size(file)) / kMegabyte;
        compare({.name = "convert " + name + ", 50 MB",
                 .ours = convertProject(file, version),
                 .rival = format(file),
                 .timeTarget = kConversionTarget,
                 .memoryTarget = {},
                 .mostMegabytes = most});
    }

    void compareMedia() {
        const std::string sound = make("50 MB", {.bytes = 50 * kMegabyte});
        compare({"list media, XMEML, 50 MB", list(sound), lint(sound), 1, {}});
        const std::string projects = makeFCPXML("50 MB", {.bytes = 50 * kMegabyte});
        compare({"list media, FCPXML, 50 MB", list(projects), lint(projects), 1, {}});
    }

    // A mend checks the file twice, a repair reads it three times.
    void compareMends() {
        const std::string damaged =
            make("50 MB, stray ampersands",
                 {.bytes = 50 * kMegabyte, .faultEvery = 50 * kMegabyte / kMends, .fault = '&'});
        compare({"50 MB: 1,000 mends / repair", mend(damaged), repairDamaged(damaged), 1, {}});
    }

    // Against a repair that changes the file; a salvage writes a copy, too.
    void compareSalvages() {
        const std::string sound = make("50 MB", {.bytes = 50 * kMegabyte});
        const std::string damaged =
            make("50 MB, damaged", {.bytes = 50 * kMegabyte, .faultEvery = 1000});
        const std::string one = loseEndTags("50 MB, an end tag lost", sound, 1);
        const std::string many = loseEndTags("50 MB, end tags lost", sound, kLostTags);
        compare({"50 MB: salvage / repair", salvage(one, 1), repairDamaged(damaged), 1.5, {}});
        compare({"50 MB: 1,000 lost tags / repair",
                 salvage(many, kLostTags),
                 repairDamaged(damaged),
                 5,
                 {}});
    }

    // A copy of a file without some of its end tags, at even distances.
    std::string loseEndTags(const std::string& name, const std::string& sound, std::size_t count) {
        const std::size_t distance = fs::file_size(sound) / (count + 1);
        std::ifstream stream(sound, std::ios::binary);
        std::ofstream broken(path(name), std::ios::binary);
        std::size_t at = 0;
        std::size_t next = distance;
        for (std::string line; std::getline(stream, line);) {
            at += line.size() + 1;
            const std::size_t tag = line.find("</");
            if (at >= next && tag != std::string::npos && count > 0) {
                line.erase(tag, line.find('>', tag) + 1 - tag);
                next += distance;
                --count;
            }
            broken << line << '\n';
        }
        return path(name);
    }

    [[nodiscard]] Contender salvage(const std::string& file, std::size_t lostTags) const {
        const std::string copy = folder_ + "/salvaged.xml";
        Contender contender;
        contender.arguments = {programs_ + "/vornic-repair", "--salvage", "-o", copy, file};
        contender.status = 1;
        contender.prepare = [=] {
            fs::remove(copy);
            settle(file);
        };
        contender.fault = [=](const std::string& printed) {
            return fs::file_size(copy) < fs::file_size(file)
                       ? "the copy is short"
                       : missing(printed, " " + std::to_string(lostTags) + " warning");
        };
        return contender;
    }

    void writeDefinition() const {
        std::ofstream(folder_ + "/1.10.dtd")
            << test::documentTypeDefinition(fcpxml::Version(kDefinedMinor));
    }

    std::string makeFCPXML(const std::string& name, FCPXMLSample sample) {
        sample.definition = folder_ + "/1.10.dtd";
        const std::string file = folder_ + "/" + name + ".fcpxml";
        if (!saveFCPXMLSample(sample, file)) {
            std::printf("cannot write %s\n", file.c_str());
            std::exit(EXIT_FAILURE);
        }
        return file;
    }

    [[nodiscard]] Contender check(const std::string& file) const {
        return {{programs_ + "/vornic-check", file},
                [=] { settle(file); },
                [](const std::string& printed) { return missing(printed, "0 errors, "); }};
    }

    // A new file beside the other one.
    [[nodiscard]] Contender convertProject(const std::string& file,
                                           const std::string& version) const {
        const std::string result = folder_ + "/converted.xml";
        return {{programs_ + "/vornic-convert", "--to", version, "-o", result, file},
                [=] {
                    fs::remove(result);
                    settle(file);
                },
                [=](const std::string&) {
                    return firstBytes(result).find(" version=\"" + version + "\"") !=
                                   std::string::npos
                               ? ""
                               : "the version is not the one wanted";
                },
                // What else was known of an asset's media is lost.
                version == "1.8" ? 1 : 0};
    }

    [[nodiscard]] Contender list(const std::string& file) const {
        return {{programs_ + "/vornic-media", "list", file},
                [=] { settle(file); },
                [](const std::string& printed) { return missing(printed, " media files\n"); }};
    }

    [[nodiscard]] Contender mend(const std::string& file) const {
        Contender contender = repairDamaged(file);
        contender.arguments = {programs_ + "/vornic-check", "--fix", path("copy")};
        // A number with an ampersand in it is none afterwards, either.
        contender.status = 1;
        contender.fault = [](const std::string& printed) {
            return missing(printed, std::to_string(kMends) + " mended");
        };
        return contender;
    }

    [[nodiscard]] static Contender lint(const std::string& file) {
        return {{"xmllint", "--noout", "--huge", file},
                [=] { settle(file); },
                [](const std::string&) { return std::string(); }};
    }

    [[nodiscard]] static Contender validate(const std::string& file) {
        return {{"xmllint", "--noout", "--huge", "--valid", file},
                [=] { settle(file); },
                [](const std::string&) { return std::string(); }};
    }

    [[nodiscard]] std::string path(const std::string& name) const {
        return folder_ + "/" + name + ".xml";
    }

    std::string make(const std::string& name, const SampleProject& project) {
        const std::string file = path(name);
        if (!saveSampleProject(project, file)) {
            std::printf("cannot write %s\n", file.c_str());
            std::exit(EXIT_FAILURE);
        }
        return file;
    }

    void compare(const Contest& contest) {
        allReached_ = runContest(contest, folder_ + "/printed.txt") && allReached_;
    }

    [[nodiscard]] Contender format(const std::string& file) const {
        const std::string result = folder_ + "/formatted.xml";
        return {{"xmllint", "--huge", "--recover", "--format", "--output", result, file},
                [=] {
                    fs::remove(result);
                    settle(file);
                },
                [=](const std::string&) {
                    return fs::file_size(result) >= fs::file_size(file) / 2 ? "" : "short result";
                }};
    }

    [[nodiscard]] Contender repairSound(const std::string& file) const {
        return {{programs_ + "/vornic-repair", file},
                [=] { settle(file); },
                [](const std::string& printed) {
                    return missing(printed, "No repair was necessary.");
                }};
    }

    // A repaired file goes to the Trash, so each run gets a fresh one.
    [[nodiscard]] Contender repairDamaged(const std::string& file) const {
        const std::string copy = folder_ + "/copy.xml";
        return {{programs_ + "/vornic-repair", copy},
                [=, this] {
                    fs::remove_all(folder_ + "/home/.Trash");
                    fs::remove_all(folder_ + "/home/.local/share/Trash");
                    copyFile(file, copy);
                },
                [](const std::string& printed) {
                    return missing(printed, "The file was repaired successfully.");
                }};
    }

    [[nodiscard]] Contender convert(const std::string& file, int version) const {
        const std::string copy = folder_ + "/copy.xml";
        const std::string number = std::to_string(version);
        return {{programs_ + "/vornic", "-convertxmeml", number, copy},
                [=] { copyFile(file, copy); },
                [=](const std::string&) {
                    return firstBytes(copy).find("<xmeml version=\"" + number + "\">") !=
                                   std::string::npos
                               ? ""
                               : "the version is not the one wanted";
                }};
    }

    static void copyFile(const std::string& from, const std::string& to) {
        fs::copy_file(from, to, fs::copy_options::overwrite_existing);
        settle(to);
    }

    static std::string missing(const std::string& printed, std::string_view line) {
        std::ifstream stream(printed, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        return text.find(line) != std::string::npos ? "" : "it did not print: " + std::string(line);
    }

    std::string programs_;
    std::string folder_;
    bool allReached_ = true;
};

}  // namespace

}  // namespace vornic::bench

int main(int argc, char** argv) {
    const std::string_view only = argc == 3 ? argv[2] : "";
    if (argc != 2 && only != "checks" && only != "conversions" && only != "media" &&
        only != "mends" && only != "salvages") {
        std::fputs(
            "Usage: bench-compare FOLDER_OF_THE_PROGRAMS "
            "[checks|conversions|media|mends|salvages]\n",
            stderr);
        return vornic::bench::kWrongUsage;
    }
    return vornic::bench::runInScratchFolder(
        std::filesystem::temp_directory_path(), [&](const std::string& folder) {
            return vornic::bench::Comparison(argv[1], folder).run(only);
        });
}
