// Measures what a salvage makes of sound files into which one fault was put, beside other programs
// that recover XML (bench/salvage starts it).

#include "salvage/Salvage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "bench/SalvageScore.h"
#include "bench/SeededFaults.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"

namespace vornic::bench {

namespace {

namespace fs = std::filesystem;

struct Sample {
    std::string name;
    std::string text;
    // Which half it belongs to.
    int half = 0;
};

int halfOf(std::string_view name) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char c : name) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    }
    return static_cast<int>(hash >> 32U & 1U);
}

std::vector<Sample> readSamples(const fs::path& folder) {
    std::vector<fs::path> paths;
    for (const char* kind : {"fcpxml", "xmeml"}) {
        for (const auto& entry : fs::directory_iterator(folder / kind)) {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Sample> samples;
    for (const fs::path& path : paths) {
        std::ifstream stream(path, std::ios::binary);
        std::string bytes(std::istreambuf_iterator<char>(stream), {});
        ErrorSlot error;
        const auto text = decodeXMLBytes(std::move(bytes), error);
        if (text && !readXML(*text, XMLMode::strict).fault) {
            samples.push_back({path.filename().string(), *text, halfOf(path.filename().string())});
        }
    }
    return samples;
}

std::vector<std::string> runRival(const std::string& command, const std::string& text) {
    const fs::path input = fs::temp_directory_path() / ("vornic-bench-" + std::to_string(getpid()));
    const std::string output = input.string() + ".out";
    std::ofstream(input, std::ios::binary) << text;
    static_cast<void>(
        std::system((command + " '" + input.string() + "' >'" + output + "' 2>/dev/null").c_str()));
    std::ifstream stream(output, std::ios::binary);
    std::string result(std::istreambuf_iterator<char>(stream), {});
    fs::remove(input);
    fs::remove(output);
    return result.empty() ? std::vector<std::string>() : std::vector<std::string>{result};
}

struct Options {
    fs::path folder;
    std::size_t seeds = 4;
    bool hasRivals = false;
    int onlyKind = -1;
    int half = -1;
    std::size_t shown = 0;
    fs::path kept;
};

using Scores = std::array<Score, kFaultKindCount>;

void show(const Sample& sample, const FaultyText& faulty, const std::vector<std::string>& copies,
          std::size_t seed, const Options& options, int number) {
    std::cout << "--- " << sample.name << " seed " << seed << "\n";
    if (!options.kept.empty()) {
        const std::string base = (options.kept / std::to_string(number)).string();
        std::ofstream(base + "-broken.xml", std::ios::binary) << faulty.text;
        std::ofstream(base + "-expected.xml", std::ios::binary) << faulty.expected;
        std::ofstream(base + "-copy.xml", std::ios::binary) << (copies.empty() ? "" : copies[0]);
    }
}

class Bench {
  public:
    explicit Bench(Options options) : options_(std::move(options)) {}

    void run() {
        for (const Sample& sample : readSamples(options_.folder)) {
            for (std::size_t kind = 0; kind < kFaultKindCount; ++kind) {
                if (options_.onlyKind < 0 || kind == static_cast<std::size_t>(options_.onlyKind)) {
                    measure(sample, static_cast<FaultKind>(kind));
                }
            }
        }
        print();
    }

  private:
    void measure(const Sample& sample, FaultKind kind) {
        if (options_.half >= 0 && sample.half != options_.half) {
            return;
        }
        const std::size_t index = static_cast<std::size_t>(kind);
        // The largest files are no better than ten others.
        const std::size_t seeds =
            sample.text.size() > 150000 ? 1 + options_.seeds / 4 : options_.seeds;
        for (std::size_t seed = 0; seed < seeds; ++seed) {
            std::mt19937_64 random(1000003 * (index + 1) + 7919 * seed +
                                   std::hash<std::size_t>{}(sample.text.size()));
            const auto faulty = seedFault(sample.text, kind, random);
            if (!faulty || (!readXML(faulty->text, XMLMode::strict).fault)) {
                continue;
            }
            const salvage::Salvage salvaged = salvage::salvage(faulty->text);
            const Score score = scoreOf(kind, *faulty, salvaged.copies);
            scores_[static_cast<std::size_t>(sample.half)][index].add(score);
            if (score.exact == 0 && shown_ < options_.shown) {
                show(sample, *faulty, salvaged.copies, seed, options_, static_cast<int>(shown_));
                if (!salvaged.refusal.empty()) {
                    std::cout << "    " << salvaged.refusal << "\n";
                }
                ++shown_;
            }
            if (options_.hasRivals && seed == 0) {
                xmllint_[index].add(
                    scoreOf(kind, *faulty, runRival("xmllint --recover --huge", faulty->text)));
                if (hasTidy_) {
                    tidy_[index].add(
                        scoreOf(kind, *faulty, runRival("tidy -q -xml --wrap 0", faulty->text)));
                }
            }
        }
    }

    static std::string percent(std::size_t part, std::size_t whole) {
        if (whole == 0) {
            return "–";
        }
        std::array<char, 32> text{};
        static_cast<void>(
            std::snprintf(text.data(), text.size(), "%.1f",
                          100.0 * static_cast<double>(part) / static_cast<double>(whole)));
        return text.data();
    }

    void print() const {
        std::cout
            << "| fault | cases | exact, tuned half | exact, other half | well-formed | "
               "characters kept | xmllint --recover | tidy |\n|---|---|---|---|---|---|---|---|\n";
        std::array<Score, 2> all;
        Score both;
        Score xmllint;
        Score tidy;
        for (std::size_t kind = 0; kind < kFaultKindCount; ++kind) {
            Score sum = scores_[0][kind];
            sum.add(scores_[1][kind]);
            line(kFaultNames[kind], scores_[0][kind], scores_[1][kind], sum, xmllint_[kind],
                 tidy_[kind]);
            all[0].add(scores_[0][kind]);
            all[1].add(scores_[1][kind]);
            both.add(sum);
            xmllint.add(xmllint_[kind]);
            tidy.add(tidy_[kind]);
        }
        line("all", all[0], all[1], both, xmllint, tidy);
    }

    static void line(std::string_view name, const Score& tuned, const Score& other,
                     const Score& sum, const Score& xmllint, const Score& tidy) {
        std::cout << "| " << name << " | " << sum.cases << " | "
                  << percent(tuned.exact, tuned.cases) << " | " << percent(other.exact, other.cases)
                  << " | " << percent(sum.wellFormed, sum.cases) << " | "
                  << percent(sum.kept, sum.characters) << " | "
                  << percent(xmllint.exact, xmllint.cases) << " | "
                  << percent(tidy.exact, tidy.cases) << " |\n";
    }

    Options options_;
    std::array<Scores, 2> scores_;
    Scores xmllint_;
    Scores tidy_;
    bool hasTidy_ = std::system("command -v tidy >/dev/null 2>&1") == 0;
    std::size_t shown_ = 0;
};

}  // namespace

}  // namespace vornic::bench

int main(int argc, char** argv) {
    vornic::bench::Options options;
    const char* const folder = std::getenv("VORNIC_SAMPLES");
    options.folder = folder == nullptr ? "" : folder;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto value = [&] { return i + 1 < argc ? argv[++i] : "0"; };
        if (argument == "--rivals") {
            options.hasRivals = true;
        } else if (argument == "--seeds") {
            options.seeds = static_cast<std::size_t>(std::atoi(value()));
        } else if (argument == "--kind") {
            options.onlyKind = std::atoi(value());
        } else if (argument == "--half") {
            options.half = std::atoi(value());
        } else if (argument == "--show") {
            options.shown = static_cast<std::size_t>(std::atoi(value()));
        } else if (argument == "--keep") {
            options.kept = value();
        } else {
            std::cerr << "Usage: bench-salvage [--rivals] [--seeds N] [--kind N] [--half 0|1] "
                         "[--show N] [--keep FOLDER]\nVORNIC_SAMPLES names the samples.\n";
            return 2;
        }
    }
    if (options.folder.empty()) {
        std::cerr << "bench-salvage: VORNIC_SAMPLES names no folder of samples\n";
        return 2;
    }
    vornic::bench::Bench(options).run();
    return 0;
}
