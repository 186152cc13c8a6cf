// Measures the library's checksums against `openssl dgst` and its verified copies against `cp` and
// `sha256sum`, as whole processes.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

#include "bench/Contest.h"

namespace vornic::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFileSize = 1000 * 1000 * 1000;
constexpr int kWrongUsage = 2;

bool writeRandomFile(const std::string& path, std::size_t size) {
    std::mt19937_64 random(1);  // NOLINT: the same bytes each time
    std::vector<std::uint64_t> words(1 << 17U);
    std::ofstream stream(path, std::ios::binary);
    while (size > 0 && stream) {
        for (std::uint64_t& word : words) {
            word = random();
        }
        const std::size_t count = std::min(size, words.size() * sizeof(std::uint64_t));
        stream.write(
            reinterpret_cast<const char*>(words.data()),  // NOLINT: bytes are what is wanted
            static_cast<std::streamsize>(count));
        size -= count;
    }
    stream.close();
    return stream.good();
}

/// What was written before is on the disk, so that its writing does not fall into a measured run.
void writeEverythingOut() {
    sync();
}

class Comparison {
  public:
    Comparison(std::string program, std::string folder)
        : program_(std::move(program)), folder_(std::move(folder)) {}

    bool run() {
        const std::string source = path("source");
        if (!writeRandomFile(source, kFileSize)) {
            std::printf("cannot write %s\n", source.c_str());
            return false;
        }
        writeEverythingOut();
        printContestHeading();
        for (const std::string kind : {"md5", "sha1", "sha256", "sha512"}) {
            // No less than 0.95 of the rival's throughput.
            constexpr double kLongestTime = 1 / 0.95;
            compare({kind + " of 1 GB", hash(kind), rivalHash(kind), kLongestTime, false});
        }
        compare({"1 GB to two files, verified", copy("copy"), rivalCopy(), 0.7, false});
        compare({"the same: with progress / without", copy("copy-with-progress"), copy("copy"),
                 1.02, false, 7});
        return allReached_;
    }

  private:
    [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }

    void compare(const Contest& contest) {
        allReached_ = runContest(contest, path("printed.txt")) && allReached_;
    }

    [[nodiscard]] Contender hash(const std::string& kind) const {
        return {
            {program_, "hash", kind, path("source")}, [] {}, [](const std::string&) { return ""; }};
    }

    [[nodiscard]] Contender rivalHash(const std::string& kind) const {
        return {{"openssl", "dgst", "-" + kind, path("source")},
                [] {},
                [](const std::string&) { return ""; }};
    }

    [[nodiscard]] Contender copy(const std::string& operation) const {
        return {{program_, operation, path("source"), path("copy 1"), path("copy 2")},
                [this] { removeCopies(); },
                [this](const std::string&) { return missingCopy(); }};
    }

    [[nodiscard]] Contender rivalCopy() const {
        return {
            {"sh", "-c",
             R"(cp "$1" "$2" && cp "$1" "$3" && sha256sum "$1" && sha256sum "$2" && sha256sum "$3")",
             "sh", path("source"), path("copy 1"), path("copy 2")},
            [this] { removeCopies(); },
            [this](const std::string&) { return missingCopy(); }};
    }

    void removeCopies() const {
        fs::remove(path("copy 1"));
        fs::remove(path("copy 2"));
        writeEverythingOut();
    }

    [[nodiscard]] std::string missingCopy() const {
        const bool complete = fs::file_size(path("copy 1")) == kFileSize &&
                              fs::file_size(path("copy 2")) == kFileSize;
        return complete ? "" : "a copy is short";
    }

    std::string program_;
    std::string folder_;
    bool allReached_ = true;
};

}  // namespace

}  // namespace vornic::bench

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("Usage: bench-compare-copy PROGRAM FOLDER\n", stderr);
        return vornic::bench::kWrongUsage;
    }
    return vornic::bench::runInScratchFolder(argv[2], [&](const std::string& folder) {
        return vornic::bench::Comparison(argv[1], folder).run();
    });
}
