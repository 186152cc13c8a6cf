#include "bench/Contest.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "bench/MeasuredProcess.h"

namespace vornic::bench {

namespace {

struct Figures {
    std::vector<double> seconds;
    std::vector<double> processorSeconds;
    std::vector<double> megabytes;
};

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

bool runOnce(const Contender& contender, const std::string& outputPath, Figures* figures) {
    contender.prepare();
    const MeasuredProcess process = runMeasured(contender.arguments, outputPath);
    const std::string fault = process.status == contender.status
                                  ? contender.fault(outputPath)
                                  : "it ended with status " + std::to_string(process.status);
    if (!fault.empty()) {
        std::printf("%s did not do its work: %s\n", contender.arguments[0].c_str(), fault.c_str());
        return false;
    }
    if (figures != nullptr) {
        figures->seconds.push_back(process.seconds);
        figures->processorSeconds.push_back(process.processorSeconds);
        figures->megabytes.push_back(process.peakMegabytes);
    }
    return true;
}

const char* verdict(bool reached) {
    return reached ? "ok" : "MISSED";
}

}  // namespace

void printContestHeading() {
    std::printf("%-34s %9s %9s %6s %6s  %-6s %9s %9s %6s %9s %9s\n", "", "ours", "rival", "ratio",
                "target", "", "ours", "rival", "ratio", "processor", "rival");
}

bool runContest(const Contest& contest, const std::string& outputPath) {
    Figures ours;
    Figures rival;
    bool good =
        runOnce(contest.ours, outputPath, nullptr) && runOnce(contest.rival, outputPath, nullptr);
    for (int run = 0; run < contest.runs && good; ++run) {
        good =
            runOnce(contest.ours, outputPath, &ours) && runOnce(contest.rival, outputPath, &rival);
    }
    if (!good) {
        return false;
    }
    constexpr double kMilliseconds = 1000;
    const double ratio = median(ours.seconds) / median(rival.seconds);
    const bool fastEnough = ratio <= contest.timeTarget;
    const double memory = median(ours.megabytes) / median(rival.megabytes);
    const double megabytes = median(ours.megabytes);
    const bool smallEnough = memory <= contest.memoryTarget.value_or(memory) &&
                             megabytes <= contest.mostMegabytes.value_or(megabytes);
    std::printf(
        "%-34s %6.1f ms %6.1f ms %6.2f %6.2f  %-6s %6.1f MB %6.1f MB %6.2f %6.1f ms %6.1f ms  %s\n",
        contest.name.c_str(), median(ours.seconds) * kMilliseconds,
        median(rival.seconds) * kMilliseconds, ratio, contest.timeTarget, verdict(fastEnough),
        megabytes, median(rival.megabytes), memory, median(ours.processorSeconds) * kMilliseconds,
        median(rival.processorSeconds) * kMilliseconds,
        contest.memoryTarget || contest.mostMegabytes ? verdict(smallEnough) : "");
    static_cast<void>(std::fflush(stdout));
    return fastEnough && smallEnough;
}

int runInScratchFolder(const std::string& parent,
                       const std::function<bool(const std::string& folder)>& comparison) {
    std::string folder = parent + "/vornic-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror(folder.c_str());
        return EXIT_FAILURE;
    }
    const bool isGood = comparison(folder);
    std::filesystem::remove_all(folder);
    return isGood ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace vornic::bench
