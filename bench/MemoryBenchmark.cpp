// What the other figures are held against: copying the text, and the plain parse of the tree's
// library.

#include <cstring>
#include <string>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include "bench/BenchmarkText.h"

namespace vornic::bench {

namespace {

void copyingTheText(benchmark::State& state) {
    std::string copy = benchmarkText();
    for (auto _ : state) {
        std::memcpy(copy.data(), benchmarkText().data(), copy.size());
        benchmark::ClobberMemory();
    }
    countText(state);
}
BENCHMARK(copyingTheText)->Unit(benchmark::kMillisecond);

void parsingInPlaceWithPugixml(benchmark::State& state) {
    std::string copy;
    for (auto _ : state) {
        state.PauseTiming();
        copy = benchmarkText();
        state.ResumeTiming();
        pugi::xml_document document;
        benchmark::DoNotOptimize(document.load_buffer_inplace(
            copy.data(), copy.size(), pugi::parse_full, pugi::encoding_utf8));
    }
    countText(state);
}
BENCHMARK(parsingInPlaceWithPugixml)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace vornic::bench
