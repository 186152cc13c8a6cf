#include "tests/faults/CaseRunner.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <limits>
#include <memory>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/faults/CallFaults.h"
#include "tests/faults/Race.h"
#include "tests/faults/SecondRun.h"

// How a case is tried.

namespace vornic::test {

namespace {

constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();
constexpr std::chrono::milliseconds kTurnOfTheSecond{150};
constexpr rlim_t kKilo = 1024;

/// The plan of allocations as a file of the scene, seen by this process and the program.
class SharedPlan {
  public:
    explicit SharedPlan(const Scene& scene) : path_(scene.pathOf("../plan")) {
        const int file = open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        void* mapped = MAP_FAILED;
        if (file >= 0 && ftruncate(file, sizeof(AllocationPlan)) == 0) {
            mapped =
                mmap(nullptr, sizeof(AllocationPlan), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        }
        close(file);
        plan_ = mapped == MAP_FAILED ? nullptr : static_cast<AllocationPlan*>(mapped);
    }
    ~SharedPlan() {
        if (plan_ != nullptr) {
            munmap(plan_, sizeof(AllocationPlan));
        }
    }
    SharedPlan(const SharedPlan&) = delete;
    SharedPlan& operator=(const SharedPlan&) = delete;

    [[nodiscard]] AllocationPlan* plan() const { return plan_; }
    /// Makes a program keep to the plan.
    void addTo(ProgramStart& start, const std::string& library) const {
        start.environment.push_back("LD_PRELOAD=" + library);
        start.environment.push_back(kAllocationPlanVariable + ("=" + path_));
    }

  private:
    std::string path_;
    AllocationPlan* plan_ = nullptr;
};

std::uint64_t numberIn(const std::string& text) {
    std::uint64_t number = kNone;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string storyOf(const ProgramEnd& end) {
    std::string story = "status " + std::to_string(end.status);
    if (end.signal != 0) {
        story += ", signal " + std::to_string(end.signal) + (end.killed ? " (ours)" : "");
    }
    return story + (end.hung ? ", hung" : "") + "\n" + end.output + end.errors;
}

}  // namespace

const CaseRunner::Prepared* CaseRunner::prepare(const std::string& name) {
    const auto known = prepared_.find(name);
    if (known != prepared_.end()) {
        return known->second.kind == nullptr ? nullptr : &known->second;
    }
    Prepared& prepared = prepared_[name];
    const std::vector<SceneKind>& kinds = sceneKinds();
    const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                   [&](const SceneKind& other) { return other.name == name; });
    if (kind == kinds.end()) {
        return nullptr;
    }
    BaselineResult result = makeBaseline(stage_, *kind);
    hasBadBaseline_ = hasBadBaseline_ || (result.ready && !result.good);
    if (!result.good) {
        return nullptr;
    }
    prepared.baseline = std::move(result.baseline);
    if (!Race::namesFor(*kind).empty()) {
        SceneKind newer = *kind;
        newer.bytes = Race::newerBytes(*kind);
        prepared.newer = makeBaseline(stage_, newer).baseline;
    }
    prepared.allocations = countAllocations(*kind);
    prepared.kind = &*kind;
    return &prepared;
}

std::array<std::uint64_t, 2> CaseRunner::countAllocations(const SceneKind& kind) const {
    const Scene scene(stage_, kind);
    const SharedPlan shared(scene);
    if (!scene.isReady() || shared.plan() == nullptr) {
        return {};
    }
    shared.plan()->number = kNone;
    ProgramStart start = scene.start();
    shared.addTo(start, stage_.allocations);
    CallObserver observer;
    static_cast<void>(scene.run(start, observer));
    return {shared.plan()->made[0], shared.plan()->made[1]};
}

std::vector<SystemCall> CaseRunner::callsOf(const std::string& scene) {
    const Prepared* prepared = prepare(scene);
    return prepared == nullptr ? std::vector<SystemCall>() : prepared->baseline.calls;
}

CaseOutcome CaseRunner::run(const FaultCase& tried) {
    const Prepared* prepared = prepare(tried.scene);
    if (prepared == nullptr) {
        return {};
    }
    if (tried.fault == "file-size") {
        return runLimit(*prepared, tried, RLIMIT_FSIZE);
    }
    if (tried.fault == "descriptors") {
        return runLimit(*prepared, tried, RLIMIT_NOFILE);
    }
    if (tried.fault == "memory") {
        return runLimit(*prepared, tried, RLIMIT_AS);
    }
    if (tried.fault.ends_with("-volume")) {
        return runVolume(*prepared, tried);
    }
    const std::optional<CallPlace> place = callPlaceOf(tried.where);
    if (!place) {
        return {};
    }
    if (tried.fault.starts_with("allocation")) {
        return runAllocation(*prepared, tried, *place);
    }
    if (tried.fault.starts_with("second-")) {
        return runPair(*prepared, tried, *place);
    }
    const std::vector<std::string> races = Race::namesFor(*prepared->kind);
    const bool isRace = std::find(races.begin(), races.end(), tried.fault) != races.end();
    return isRace ? runRace(*prepared, tried, *place) : runCallFault(*prepared, tried, *place);
}

CaseOutcome CaseRunner::conclude(const Scene& scene, const Prepared& prepared,
                                 const Demands& demands, const ProgramEnd& end) const {
    Judge judge(*prepared.kind, prepared.baseline, demands);
    const World world = scene.look();
    judge.judgeRun(end, world);
    const ProgramEnd next = scene.runLater();
    const World nextWorld = scene.look();
    judge.judgeNextRun(next, nextWorld);
    return {.tried = true,
            .wrongs = judge.wrongs(),
            .story = storyOf(end) + world.summary() + "\nnext run: " + storyOf(next) +
                     nextWorld.summary() + "\n"};
}

CaseOutcome CaseRunner::runCallFault(const Prepared& prepared, const FaultCase& tried,
                                     CallPlace place) {
    CallFault fault(tried.fault, place);
    const Scene scene(stage_, *prepared.kind);
    if (!scene.isReady()) {
        return {};
    }
    const ProgramEnd end = scene.run(scene.start(), fault);
    if (!fault.struck()) {
        return {};
    }
    Demands demands = demandsOf(*prepared.kind, prepared.baseline);
    demands.canSpeak = !isOnStandardStream(*fault.struck());
    // A volume that says nothing more cannot be asked what has become of a file.
    demands.failureMustBeTrue =
        !tried.fault.starts_with("done-") && !tried.fault.starts_with("from-");
    CaseOutcome outcome = conclude(scene, prepared, demands, end);
    outcome.story =
        (fault.struck() ? textOf(*fault.struck()) : "never reached") + "\n" + outcome.story;
    return outcome;
}

CaseOutcome CaseRunner::runAllocation(const Prepared& prepared, const FaultCase& tried,
                                      CallPlace place) {
    const Scene scene(stage_, *prepared.kind);
    const SharedPlan shared(scene);
    if (!scene.isReady() || shared.plan() == nullptr) {
        return {};
    }
    shared.plan()->thread = static_cast<std::uint64_t>(place.thread);
    shared.plan()->number = static_cast<std::uint64_t>(place.ordinal);
    shared.plan()->all = tried.fault == "allocations" ? 1 : 0;
    ProgramStart start = scene.start();
    shared.addTo(start, stage_.allocations);
    CallObserver observer;
    const ProgramEnd end = scene.run(start, observer);
    Demands demands = demandsOf(*prepared.kind, prepared.baseline);
    demands.mayCrash = shared.plan()->ofLibplist != 0;
    return conclude(scene, prepared, demands, end);
}

CaseOutcome CaseRunner::runLimit(const Prepared& prepared, const FaultCase& tried, int resource) {
    const Scene scene(stage_, *prepared.kind);
    if (!scene.isReady()) {
        return {};
    }
    ProgramStart start = scene.start();
    const rlim_t value = numberIn(tried.where);
    start.limits = {{resource, resource == RLIMIT_AS ? value * kKilo : value}};
    Beginning beginning;
    const ProgramEnd end = scene.run(start, beginning);
    Demands demands = demandsOf(*prepared.kind, prepared.baseline);
    // A program that its loader cannot start says so in words and with a status of its own.
    demands.sameWork = end.status != 127;
    demands.hasBegun = resource != RLIMIT_AS || beginning.isDone();
    // The C++ library needs some memory before the program begins.
    demands.mayCrash = resource == RLIMIT_AS && end.output.empty() &&
                       end.errors == "terminate called without an active exception\n";
    CaseOutcome outcome = conclude(scene, prepared, demands, end);
    return outcome;
}

CaseOutcome CaseRunner::runVolume(const Prepared& prepared, const FaultCase& tried) {
    const long size = static_cast<long>(numberIn(tried.where) * kKilo);
    const bool isHome = tried.fault == "home-volume";
    const Scene scene(stage_, *prepared.kind,
                      {.files = isHome ? 0 : size, .home = isHome ? size : 0});
    if (!scene.isReady()) {
        return {};
    }
    CallObserver observer;
    const ProgramEnd end = scene.run(scene.start(), observer);
    Demands demands = demandsOf(*prepared.kind, prepared.baseline);
    // The volume is as full for the next run.
    demands.atPathInTheEnd = demands.atPath;
    demands.strangers = {workingCopyName(*prepared.kind)};
    // After an undo it has the file to repair for the first time; a second copy may not fit.
    const bool same = end.status == prepared.baseline.end.status &&
                      prepared.kind->work != SceneKind::Work::undo &&
                      prepared.kind->work != SceneKind::Work::copy;
    CaseOutcome outcome = conclude(scene, prepared, demands, end);
    if (!same) {
        std::erase_if(outcome.wrongs, [](const std::string& wrong) {
            return wrong.starts_with("after the next run: status 1") ||
                   wrong.starts_with("after the next run: status 3");
        });
    }
    return outcome;
}

CaseOutcome CaseRunner::runRace(const Prepared& prepared, const FaultCase& tried, CallPlace place) {
    const Scene scene(stage_, *prepared.kind);
    if (!scene.isReady()) {
        return {};
    }
    Race race(tried.fault, scene, prepared.baseline, prepared.newer);
    bool acted = false;
    CallAction action(place, [&] {
        race.act();
        acted = true;
    });
    const ProgramEnd end = scene.run(scene.start(), action);
    if (!acted) {
        return {};
    }
    race.finish();
    const std::vector<std::string> more = race.wrongs(scene.look());
    CaseOutcome outcome = conclude(scene, prepared, race.demands(), end);
    outcome.wrongs.insert(outcome.wrongs.end(), more.begin(), more.end());
    return outcome;
}

CaseOutcome CaseRunner::runPair(const Prepared& prepared, const FaultCase& tried, CallPlace place) {
    const SceneKind& kind = *prepared.kind;
    const Scene scene(stage_, kind);
    if (!scene.isReady()) {
        return {};
    }
    ProgramStart other = scene.start();
    Demands demands = demandsOf(kind, prepared.baseline);
    // What the other has done is the same.
    demands.failureMustBeTrue = false;
    // An undo that begins when the other one has ended takes that back.
    demands.sameWork = kind.work != SceneKind::Work::undo;
    const std::string bytes = damagedDocument('b');
    if (tried.fault != "second-same") {
        const std::string name = tried.fault == "second-stem" ? "Cut-backup.xml" : "Cut.xmeml";
        std::ofstream(scene.pathOf(name), std::ios::binary) << bytes;
        other.arguments.back() = scene.pathOf(name);
        demands.kept.push_back(bytes);
        demands.strangers = {name};
    }
    std::unique_ptr<SecondRun> second;
    CallAction action(place, [&] {
        second = std::make_unique<SecondRun>(other, stage_.longest);
        second->waitFor(kTurnOfTheSecond);
    });
    const ProgramEnd end = scene.run(scene.start(), action);
    if (!second) {
        return {};
    }
    const ProgramEnd otherEnd = second->finish();
    if (tried.fault == "second-stem" && otherEnd.status == 1) {
        // The first run took the second one's file for an old working copy, before that had begun.
        // The second tells where its result is.
        demands.strangers.emplace_back("Cut-backup-backup.xml");
    }
    CaseOutcome outcome = conclude(scene, prepared, demands, end);
    outcome.story = "the second: " + storyOf(otherEnd) + outcome.story;
    if (otherEnd.hung || otherEnd.signal != 0) {
        outcome.wrongs.emplace_back(otherEnd.hung ? "the second run hung"
                                                  : "a signal ended the second run");
    }
    return outcome;
}

}  // namespace vornic::test
