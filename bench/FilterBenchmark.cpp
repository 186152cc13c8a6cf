#include <cstdint>

#include <benchmark/benchmark.h>

#include "bench/BenchmarkText.h"
#include "repair/pipeline/CharacterFilter.h"

namespace vornic::bench {

namespace {

class SilentObserver : public CharacterFilterObserver {
  public:
    [[nodiscard]] bool isCancelled() override { return false; }
    void removedUnit(std::int64_t /*index*/, TextSpan /*character*/) override {}
    [[nodiscard]] bool finishedUnits(std::int64_t /*first*/, std::int64_t /*last*/) override {
        return true;
    }
};

void filteringCharacters(benchmark::State& state) {
    SilentObserver observer;
    for (auto _ : state) {
        benchmark::DoNotOptimize(filterInvalidCharacters(benchmarkText(), observer));
    }
    countText(state);
}
BENCHMARK(filteringCharacters)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace vornic::bench
