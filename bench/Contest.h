#ifndef VORNIC_BENCH_CONTEST_H
#define VORNIC_BENCH_CONTEST_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vornic::bench {

/// One side of a contest: a program run with what has to be put in order before each run and looked
/// at after it. Neither is part of what is measured.
struct Contender {
    std::vector<std::string> arguments;
    std::function<void()> prepare;
    /// Says why the run did not do its work, given what the program printed; "" when it did.
    std::function<std::string(const std::string& outputPath)> fault;
    /// The exit status of a run that did its work.
    int status = 0;
};

/// Two contenders that are run in turn, and what the first is to reach.
struct Contest {
    std::string name;
    Contender ours;
    Contender rival;
    /// The median time of ours is to be at most this many times the rival's.
    double timeTarget = 1;
    /// The median peak memory of ours is to be at most this many times the rival's, if anything.
    std::optional<double> memoryTarget;
    /// The same in megabytes, whatever the rival's is.
    std::optional<double> mostMegabytes = std::nullopt;
    int runs = 5;
};

/// Prints the heading of the table that `runContest` prints rows of.
void printContestHeading();

/// Runs each side once for nothing and then `runs` times in turn, and prints a row with the
/// medians.
/// @param outputPath a file for what the programs print.
/// @return true when every target was reached and every run did its work.
bool runContest(const Contest& contest, const std::string& outputPath);

/// Runs a comparison with a folder of its own, which is removed afterwards.
/// @param parent where the folder is made.
/// @return the exit status for the program: success when the comparison returned true.
int runInScratchFolder(const std::string& parent,
                       const std::function<bool(const std::string& folder)>& comparison);

}  // namespace vornic::bench

#endif
