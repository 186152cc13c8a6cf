#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <malloc.h>
#include <unistd.h>

#include "tests/app/TestMaterial.h"
#include "tests/faults/CaseRunner.h"
#include "tests/faults/CaseWorkers.h"
#include "tests/faults/SceneFolder.h"
#include "tests/support/machine/Unprivileged.h"

// Tries what can go wrong in a run: the programs' system calls and allocations fail, limits and
// volumes are too small, other programs write the same files, kills come at every moment. After
// each case the user's bytes must be whole, the report true and the next run as good as the first.

namespace vornic::test {

namespace {

constexpr const char* kUsage =
    "Usage: run [--cases N] [--seed S] [--only TEXT] [--without TEXT,TEXT...] [--kind NAME]...\n"
    "           [--jobs N] [--patience SECONDS] [--programs FOLDER] [--folder FOLDER]\n"
    "       run --case SCENE/FAULT/WHERE\n"
    "       run --trace SCENE | --list\n"
    "\n"
    "Tries N cases (200), chosen by the seed (1) from each kind in turn, of the scenes whose "
    "name,\n"
    "with a slash behind it, has the text in it, or not. Prints what went wrong, with the case "
    "that repeats it, and counts by "
    "kind.\n"
    "--jobs says how many are tried at once (one for each processor). --programs names the folder\n"
    "of another build's programs, --folder the one that scenes are made in (a volume in memory). "
    "A\n"
    "run that takes longer than the patience (30 seconds) hangs. Every minute standard error "
    "tells\n"
    "how far it is; SIGINT and SIGTERM end the tests, with the counts up to there.\n"
    "--trace prints the system calls of a scene without faults, --list the kinds with the number\n"
    "of cases that there are. Exit status: 0 when nothing was wrong, 1 when something was, 2 for\n"
    "wrong usage, 77 when nothing could be tried here.\n";

constexpr int kWrongUsage = 2;
constexpr int kSkipped = 77;

struct Options {
    std::size_t cases = 200;
    unsigned seed = 1;
    unsigned patience = 30;
    std::size_t jobs = 0;
    std::string only;
    std::vector<std::string> without;
    std::set<std::string> kinds;
    std::string single;
    std::string trace;
    std::string programs;
    std::string folder;
    bool list = false;
    bool wrong = false;
};

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

Options parse(const std::vector<std::string>& words) {
    Options options;
    for (std::size_t at = 0; at < words.size(); ++at) {
        const std::string& word = words[at];
        if (word == "--list") {
            options.list = true;
            continue;
        }
        if (at + 1 == words.size()) {
            options.wrong = true;
            break;
        }
        const std::string& value = words[++at];
        const unsigned long number = std::strtoul(value.c_str(), nullptr, 10);
        if (word == "--cases") {
            options.cases = number;
        } else if (word == "--seed") {
            options.seed = static_cast<unsigned>(number);
        } else if (word == "--patience") {
            options.patience = static_cast<unsigned>(number);
        } else if (word == "--jobs") {
            options.jobs = number;
            options.wrong = options.wrong || number == 0;
        } else if (word == "--folder") {
            options.folder = value;
        } else if (word == "--only") {
            options.only = value;
        } else if (word == "--without") {
            options.without = split(value, ',');
        } else if (word == "--kind") {
            options.kinds.insert(value);
        } else if (word == "--case") {
            options.single = value;
        } else if (word == "--programs") {
            options.programs = value;
        } else if (word == "--trace") {
            options.trace = value;
        } else {
            options.wrong = true;
        }
    }
    return options;
}

using Lists = std::map<std::string, std::vector<FaultCase>>;

bool isWanted(const std::string& scene, const Options& options) {
    const auto has = [name = scene + "/"](const std::string& part) {
        return name.find(part) != std::string::npos;
    };
    return has(options.only) && std::none_of(options.without.begin(), options.without.end(), has);
}

Lists listWanted(CaseRunner& runner, const Options& options) {
    Lists lists =
        runner.list([&options](const std::string& scene) { return isWanted(scene, options); });
    std::erase_if(lists, [&](const auto& list) {
        return !options.kinds.empty() && !options.kinds.contains(list.first);
    });
    return lists;
}

// The standard's own shuffle may differ between libraries; this does not.
void shuffle(std::vector<FaultCase>& cases, unsigned seed) {
    std::mt19937 random(seed);
    for (std::size_t at = cases.size(); at > 1; --at) {
        std::swap(cases[at - 1], cases[random() % at]);
    }
}

struct Chosen {
    std::string kind;
    FaultCase tried;
};

std::vector<Chosen> choose(Lists lists, const Options& options) {
    for (auto& [kind, cases] : lists) {
        shuffle(cases, options.seed);
    }
    std::vector<Chosen> chosen;
    for (bool more = true; more && chosen.size() < options.cases;) {
        more = false;
        for (auto& [kind, cases] : lists) {
            if (!cases.empty() && chosen.size() < options.cases) {
                chosen.push_back({kind, cases.back()});
                cases.pop_back();
                more = true;
            }
        }
    }
    return chosen;
}

struct Count {
    std::size_t tried = 0;
    std::size_t wrong = 0;
    std::size_t skipped = 0;
};

std::string told(const FaultCase& tried, const CaseOutcome& outcome) {
    const std::string first = outcome.story.substr(0, outcome.story.find('\n'));
    std::string text = "WRONG " + textOf(tried) + "  (" + tried.what + "; " + first + ")\n";
    for (const std::string& wrong : outcome.wrongs) {
        text += "    " + wrong + "\n";
    }
    return text;
}

volatile std::sig_atomic_t isToEnd = 0;

void endAtSignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { isToEnd = 1; };
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

/// Counts what came of the cases, and tells it.
class Tally {
  public:
    explicit Tally(const std::vector<Chosen>& chosen) : chosen_(chosen) {}

    void take(std::size_t number, const CaseAnswer& answer) {
        for (Count* one : {&counts_[chosen_[number].kind], &all_}) {
            one->tried += answer.tried ? 1U : 0U;
            one->skipped += answer.tried ? 0U : 1U;
            one->wrong += answer.isWrong ? 1U : 0U;
        }
        std::fputs(answer.told.c_str(), stdout);
        std::fflush(stdout);
        if (seconds() >= next_) {
            next_ += kBetweenWords;
            std::fprintf(stderr, "%zu of %zu after %.0f s, %zu wrong\n", done(), chosen_.size(),
                         seconds(), all_.wrong);
        }
    }
    void print() {
        counts_["all"] = all_;
        for (const auto& [kind, count] : counts_) {
            std::printf("%-12s %7zu tried, %5zu wrong, %5zu not to be had here\n", kind.c_str(),
                        count.tried, count.wrong, count.skipped);
        }
        std::printf("%.1f s, %.1f cases a second\n", seconds(),
                    static_cast<double>(done()) / seconds());
    }
    [[nodiscard]] const Count& all() const { return all_; }
    [[nodiscard]] std::size_t done() const { return all_.tried + all_.skipped; }

  private:
    static constexpr double kBetweenWords = 60;
    [[nodiscard]] double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

    const std::vector<Chosen>& chosen_;
    std::map<std::string, Count> counts_;
    Count all_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    double next_ = kBetweenWords;
};

std::size_t jobsOf(const Options& options) {
    const long processors = sysconf(_SC_NPROCESSORS_ONLN);
    return options.jobs > 0 ? options.jobs : static_cast<std::size_t>(std::max(processors, 1L));
}

int tryCases(CaseRunner& runner, const Options& options) {
    const std::vector<Chosen> chosen = choose(listWanted(runner, options), options);
    // The list of all cases is long, and every start of a program would copy its pages' table.
    malloc_trim(0);
    CaseWorkers workers(std::min(jobsOf(options), chosen.size()), [&](std::size_t number) {
        const CaseOutcome outcome = runner.run(chosen[number].tried);
        const bool isWrong = !outcome.wrongs.empty();
        return CaseAnswer{.tried = outcome.tried,
                          .isWrong = isWrong,
                          .told = isWrong ? told(chosen[number].tried, outcome) : ""};
    });
    endAtSignals();
    Tally tally(chosen);
    const std::vector<std::size_t> lost = workers.tryAll(
        chosen.size(),
        [&](std::size_t number, const CaseAnswer& answer) { tally.take(number, answer); },
        [] { return isToEnd == 0; });
    tally.print();
    for (const std::size_t number : lost) {
        std::fprintf(stderr, "faults: the tester itself ended in %s\n",
                     textOf(chosen[number].tried).c_str());
    }
    if (tally.done() < chosen.size()) {
        std::fprintf(stderr, "faults: %zu of %zu cases were not tried\n",
                     chosen.size() - tally.done(), chosen.size());
        return EXIT_FAILURE;
    }
    if (runner.hasBadBaseline() || tally.all().wrong > 0) {
        return EXIT_FAILURE;
    }
    return tally.all().tried == 0 ? kSkipped : EXIT_SUCCESS;
}

int trySingle(CaseRunner& runner, const std::string& text) {
    const std::optional<FaultCase> tried = faultCaseOf(text);
    const CaseOutcome outcome = tried ? runner.run(*tried) : CaseOutcome();
    if (!outcome.tried) {
        std::fprintf(stderr, "faults: %s cannot be tried\n", text.c_str());
        return kWrongUsage;
    }
    std::printf("%s", outcome.story.c_str());
    if (!outcome.wrongs.empty()) {
        std::fputs(told(*tried, outcome).c_str(), stdout);
    }
    return outcome.wrongs.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int printTrace(CaseRunner& runner, const std::string& scene) {
    const std::vector<SystemCall> calls = runner.callsOf(scene);
    for (const SystemCall& call : calls) {
        std::printf("%-8s %s\n", textOf(call.place).c_str(), textOf(call).c_str());
    }
    return calls.empty() ? kWrongUsage : EXIT_SUCCESS;
}

int printList(CaseRunner& runner, const Options& options) {
    std::size_t all = 0;
    for (const auto& [kind, cases] : listWanted(runner, options)) {
        std::printf("%-12s %7zu\n", kind.c_str(), cases.size());
        all += cases.size();
    }
    std::printf("%-12s %7zu\n", "all", all);
    return EXIT_SUCCESS;
}

std::string programFolder(const TestMaterial& material) {
    return std::filesystem::path(material.program("vornic")).parent_path();
}

// The library beside this program, where the user who runs the programs can read it.
std::string readableLibrary(const TestMaterial& material) {
    namespace fs = std::filesystem;
    const fs::path beside = fs::path(VORNIC_FAULTS_ALLOCATIONS);
    const fs::path folder = programFolder(material);
    if (folder == fs::path(VORNIC_PROGRAM).parent_path()) {
        return beside;
    }
    fs::copy(beside, folder, fs::copy_options::overwrite_existing);
    return folder / beside.filename();
}

int run(const Options& options) {
    const PrivateMounts mounts;
    const TestMaterial material;
    const std::string allocations = readableLibrary(material);
    const SceneFolder folder(mounts, options.folder);
    const Unprivileged unprivileged;
    const Stage stage{
        .programs = options.programs.empty() ? programFolder(material) : options.programs,
        .mounts = mounts,
        .allocations = allocations,
        .folder = folder.path(),
        .longest = std::chrono::seconds(options.patience)};
    CaseRunner runner(stage);
    if (!options.single.empty()) {
        return trySingle(runner, options.single);
    }
    if (!options.trace.empty()) {
        return printTrace(runner, options.trace);
    }
    return options.list ? printList(runner, options) : tryCases(runner, options);
}

}  // namespace

}  // namespace vornic::test

int main(int count, char** words) {
    const auto options = vornic::test::parse({words + 1, words + count});
    if (options.wrong) {
        std::fputs(vornic::test::kUsage, stderr);
        return vornic::test::kWrongUsage;
    }
    return vornic::test::run(options);
}
