#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include <benchmark/benchmark.h>

#include "bench/BenchmarkText.h"
#include "formats/ElementIndexBuilder.h"
#include "report/XMLFindings.h"

namespace vornic::bench {

namespace {

// What a check does before its first rule: one reading, with the index and the mends of markup.
ElementIndex read(std::string_view text, Findings& findings) {
    ElementIndexBuilder builder(text);
    XMLFindings sink(text, findings);
    const XMLReading reading = readXML(text, XMLMode::tolerant, &builder, &sink);
    if (reading.fault) {
        std::abort();
    }
    return std::move(builder).finish();
}

void readingWithAnIndex(benchmark::State& state) {
    double bytesOfAnElement = 0;
    for (auto _ : state) {
        Findings findings(100);
        const ElementIndex index = read(benchmarkText(), findings);
        bytesOfAnElement = static_cast<double>(index.memory()) / static_cast<double>(index.size());
    }
    state.counters["bytesOfAnElement"] = bytesOfAnElement;
    countText(state);
}
BENCHMARK(readingWithAnIndex)->Unit(benchmark::kMillisecond);

// The same for a text that is nothing but faults.
void readingFaultsWithAnIndex(benchmark::State& state) {
    std::string text = "<a>";
    while (text.size() < benchmarkText().size()) {
        text += "& < x & y ";
    }
    text += "</a>";
    for (auto _ : state) {
        Findings findings(100);
        benchmark::DoNotOptimize(read(text, findings).size());
    }
    countText(state);
}
BENCHMARK(readingFaultsWithAnIndex)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace vornic::bench
