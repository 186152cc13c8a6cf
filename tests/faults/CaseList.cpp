#include <algorithm>

#include "tests/faults/CallFaults.h"
#include "tests/faults/CaseRunner.h"
#include "tests/faults/Race.h"

// Which cases there are.

namespace vornic::test {

namespace {

constexpr std::uint64_t kMemoryStep = 256;
constexpr std::uint64_t kMostMemory = 64 * 1024;

void add(std::vector<FaultCase>& list, const SceneKind& kind, const std::string& fault,
         const std::string& where, const std::string& what) {
    list.push_back({.scene = kind.name, .fault = fault, .where = where, .what = what});
}

// Without any memory at all no program begins.
bool isFirstMemory(const SystemCall& call) {
    return call.place.thread == 0 && call.place.ordinal < 2 &&
           kindOfCall(call.number) == CallKind::memory;
}

std::vector<FaultCase> steps(const SceneKind& kind, const std::string& fault, std::uint64_t first,
                             std::uint64_t last, std::uint64_t step) {
    std::vector<FaultCase> list;
    for (std::uint64_t value = first; value <= last; value += step) {
        add(list, kind, fault, std::to_string(value), "");
    }
    return list;
}

}  // namespace

CaseRunner::Lists CaseRunner::list(const std::function<bool(const std::string& scene)>& isWanted) {
    Lists lists;
    for (const SceneKind& kind : sceneKinds()) {
        const Prepared* prepared = isWanted(kind.name) ? prepare(kind.name) : nullptr;
        if (prepared != nullptr) {
            listCalls(*prepared, lists);
            listPlaces(*prepared, lists);
            listLimits(*prepared, lists);
        }
    }
    return lists;
}

void CaseRunner::listCalls(const Prepared& prepared, Lists& lists) {
    for (const SystemCall& call : prepared.baseline.calls) {
        const auto addAll = [&](const std::string& list, const std::vector<std::string>& faults) {
            for (const std::string& fault : faults) {
                add(lists[list], *prepared.kind, fault, textOf(call.place), textOf(call));
            }
        };
        addAll("kills", killsFor(call));
        addAll("errors", errorsFor(call));
        if (!isFirstMemory(call)) {
            addAll("lasting", lastingFor(call));
        }
    }
}

void CaseRunner::listPlaces(const Prepared& prepared, Lists& lists) {
    const SceneKind& kind = *prepared.kind;
    const std::vector<std::string> races = Race::namesFor(kind);
    for (const SystemCall& call : prepared.baseline.calls) {
        if (kindOfCall(call.number) != CallKind::file || call.place.thread != 0) {
            continue;
        }
        for (const std::string& race : races) {
            add(lists["races"], kind, race, textOf(call.place), textOf(call));
        }
        add(lists["pairs"], kind, "second-same", textOf(call.place), textOf(call));
        if (kind.name == "damaged") {
            add(lists["pairs"], kind, "second-stem", textOf(call.place), textOf(call));
            add(lists["pairs"], kind, "second-twin", textOf(call.place), textOf(call));
        }
    }
}

void CaseRunner::listLimits(const Prepared& prepared, Lists& lists) const {
    const SceneKind& kind = *prepared.kind;
    for (std::size_t thread = 0; thread < prepared.allocations.size(); ++thread) {
        for (std::uint64_t number = 0; number < prepared.allocations.at(thread); ++number) {
            const std::string where = std::to_string(thread) + "." + std::to_string(number);
            add(lists["allocations"], kind, "allocation", where, "");
            if (number > 0) {
                // Without any memory at all no program begins.
                add(lists["allocations"], kind, "allocations", where, "");
            }
        }
    }
    const auto join = [&](const std::string& list, const std::vector<FaultCase>& cases) {
        lists[list].insert(lists[list].end(), cases.begin(), cases.end());
    };
    const std::uint64_t size = std::max(kind.bytes.size(), prepared.baseline.result.size());
    join("limits",
         steps(kind, "file-size", 0, size + 2048, std::max<std::uint64_t>(size / 64, 16)));
    join("limits", steps(kind, "descriptors", 3, 24, 1));
    join("limits", steps(kind, "memory", 4096, kMostMemory, kMemoryStep));
    if (stage_.mounts.isAvailable() && !kind.homeIsApart) {
        join("volumes", steps(kind, "files-volume", 8, size * 3 / 1024 + 40, 4));
        join("volumes", steps(kind, "home-volume", 4, size * 2 / 1024 + 60, 4));
    }
}

}  // namespace vornic::test
