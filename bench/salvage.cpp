// Measures what a salvage makes of sound files into which one fault was put, beside other programs
// that recover XML, and tunes its weights (bench/salvage starts it).

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
    bool isTuning = false;
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

    // @return whether every goal was reached.
    [[nodiscard]] bool run() {
        for (const Sample& sample : readSamples(options_.folder)) {
            for (std::size_t kind = 0; kind < kFaultKindCount; ++kind) {
                if (options_.onlyKind < 0 || kind == static_cast<std::size_t>(options_.onlyKind)) {
                    measure(sample, static_cast<FaultKind>(kind));
                }
            }
        }
        return print();
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

    // Rounded down, so that 100 is all.
    static std::string percent(std::size_t part, std::size_t whole) {
        if (whole == 0) {
            return "–";
        }
        const std::size_t tenths = 1000 * part / whole;
        return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
    }

    [[nodiscard]] bool print() const {
        std::cout << "| fault | goal | cases | exact, tuned half | exact, other half | "
                     "well-formed | characters kept | xmllint --recover | tidy |\n"
                     "|---|---|---|---|---|---|---|---|---|\n";
        std::array<Score, 2> all;
        Score xmllint;
        Score tidy;
        bool reachesAll = true;
        for (std::size_t kind = 0; kind < kFaultKindCount; ++kind) {
            const std::array<Score, 2> halves = {scores_[0][kind], scores_[1][kind]};
            line(kFaultNames[kind], kExactGoals[kind], halves, xmllint_[kind], tidy_[kind]);
            reachesAll = reachesAll &&
                         sumOf(halves).reaches(kExactGoals[kind], static_cast<FaultKind>(kind));
            all[0].add(halves[0]);
            all[1].add(halves[1]);
            xmllint.add(xmllint_[kind]);
            tidy.add(tidy_[kind]);
        }
        line("all", kExactGoalOfAll, all, xmllint, tidy);
        const Score both = sumOf(all);
        reachesAll = reachesAll && 100 * both.exact >= kExactGoalOfAll * both.cases;
        std::cout << (reachesAll ? "Every goal was reached.\n" : "A goal was MISSED.\n");
        return reachesAll;
    }

    static Score sumOf(const std::array<Score, 2>& halves) {
        Score sum = halves[0];
        sum.add(halves[1]);
        return sum;
    }

    static void line(std::string_view name, std::size_t goal, const std::array<Score, 2>& halves,
                     const Score& xmllint, const Score& tidy) {
        const Score sum = sumOf(halves);
        std::cout << "| " << name << " | " << goal << " | " << sum.cases << " | "
                  << percent(halves[0].exact, halves[0].cases) << " | "
                  << percent(halves[1].exact, halves[1].cases) << " | "
                  << percent(sum.wellFormed, sum.cases) << " | "
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

// Tries other weights, one after the other, on the files of one half, and keeps what is better
// there.
class Tuning {
  public:
    explicit Tuning(const Options& options) {
        for (const Sample& sample : readSamples(options.folder)) {
            for (std::size_t kind = 0; kind < kFaultKindCount; ++kind) {
                for (std::size_t seed = 0; seed < options.seeds; ++seed) {
                    addCase(sample, static_cast<FaultKind>(kind), seed);
                }
            }
        }
    }

    void run() {
        std::size_t best = exact(0, weights_);
        std::cout << "now: " << best << " of " << cases_[0].size() << " exact, other half "
                  << exact(1, weights_) << " of " << cases_[1].size() << "\n";
        bool isBetter = true;
        while (isBetter) {
            isBetter = false;
            for (const auto& [name, weight] : kWeights) {
                isBetter = tryOthers(name, weight, best) || isBetter;
            }
        }
        std::cout << "best: " << best << " of " << cases_[0].size() << " exact, other half "
                  << exact(1, weights_) << " of " << cases_[1].size() << "\n";
        for (const auto& [name, weight] : kWeights) {
            std::cout << name << " " << weights_.*weight << "\n";
        }
    }

  private:
    using Weight = float salvage::Weights::*;
    struct Case {
        FaultKind kind;
        FaultyText text;
    };

    static constexpr std::array<std::pair<const char*, Weight>, 10> kWeights = {
        {{"insertEnd", &salvage::Weights::insertEnd},
         {"insertStart", &salvage::Weights::insertStart},
         {"removeEnd", &salvage::Weights::removeEnd},
         {"rename", &salvage::Weights::rename},
         {"removeStart", &salvage::Weights::removeStart},
         {"balance", &salvage::Weights::balance},
         {"twice", &salvage::Weights::twice},
         {"crossed", &salvage::Weights::crossed},
         {"closeAtEnd", &salvage::Weights::closeAtEnd},
         {"doubt", &salvage::Weights::doubt}}};

    void addCase(const Sample& sample, FaultKind kind, std::size_t seed) {
        constexpr std::size_t kLargest = 60000;
        std::mt19937_64 random(kTuningSeed + 7919 * seed + sample.text.size());
        auto faulty = seedFault(sample.text, kind, random);
        if (faulty && sample.text.size() <= kLargest &&
            readXML(faulty->text, XMLMode::strict).fault) {
            cases_[static_cast<std::size_t>(sample.half)].push_back({kind, std::move(*faulty)});
        }
    }

    [[nodiscard]] std::size_t exact(std::size_t half, const salvage::Weights& weights) const {
        salvage::SalvageOptions options;
        options.weights = weights;
        std::size_t count = 0;
        for (const Case& one : cases_[half]) {
            count +=
                scoreOf(one.kind, one.text, salvage::salvage(one.text.text, options).copies).exact;
        }
        return count;
    }

    [[nodiscard]] bool tryOthers(const char* name, Weight weight, std::size_t& best) {
        bool isBetter = false;
        const float present = weights_.*weight;
        std::cout << name << " " << present << ":";
        for (const float factor : {0.5F, 0.7F, 0.85F, 1.2F, 1.4F, 2.0F}) {
            salvage::Weights tried = weights_;
            tried.*weight = present * factor;
            const std::size_t count = exact(0, tried);
            std::cout << "  " << tried.*weight << ": " << count << std::flush;
            if (count > best) {
                best = count;
                weights_ = tried;
                isBetter = true;
            }
        }
        std::cout << "\n";
        return isBetter;
    }

    // Other faults than those that are told.
    static constexpr std::uint64_t kTuningSeed = 500000;

    std::array<std::vector<Case>, 2> cases_;
    salvage::Weights weights_;
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
        } else if (argument == "--tune") {
            options.isTuning = true;
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
            std::cerr
                << "Usage: bench-salvage [--rivals] [--tune] [--seeds N] [--kind N] [--half 0|1] "
                   "[--show N] [--keep FOLDER]\nVORNIC_SAMPLES names the samples.\n";
            return 2;
        }
    }
    if (options.folder.empty()) {
        std::cerr << "bench-salvage: VORNIC_SAMPLES names no folder of samples\n";
        return 2;
    }
    if (options.isTuning) {
        vornic::bench::Tuning(options).run();
        return 0;
    }
    return vornic::bench::Bench(options).run() ? 0 : 1;
}
