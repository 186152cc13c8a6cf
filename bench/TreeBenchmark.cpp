#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <benchmark/benchmark.h>

#include "bench/BenchmarkText.h"
#include "xml/tree/XMLDocument.h"

namespace vornic::bench {

namespace {

std::unique_ptr<XMLDocument> parsedText(std::string text) {
    ErrorSlot error;
    std::unique_ptr<XMLDocument> document =
        XMLDocument::parse(std::move(text), XMLMode::strict, error);
    if (!document) {
        std::abort();
    }
    return document;
}

void buildingTheTree(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::string copy = benchmarkText();
        state.ResumeTiming();
        benchmark::DoNotOptimize(parsedText(std::move(copy))->documentNode());
    }
    countText(state);
}
BENCHMARK(buildingTheTree)->Unit(benchmark::kMillisecond);

// From the tree when `withTree`, else straight from the text, as a document that nobody has
// changed.
void writing(benchmark::State& state, bool withTree) {
    const std::unique_ptr<XMLDocument> document = parsedText(benchmarkText());
    if (withTree) {
        benchmark::DoNotOptimize(document->documentNode());
    }
    for (auto _ : state) {
        std::size_t bytes = 0;
        document->serialize([&](std::string_view piece) {
            bytes += piece.size();
            return true;
        });
        benchmark::DoNotOptimize(bytes);
    }
    countText(state);
}
BENCHMARK_CAPTURE(writing, theText, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writing, theTree, true)->Unit(benchmark::kMillisecond);

void queryingAllNodes(benchmark::State& state, const char* query) {
    const std::unique_ptr<XMLDocument> document = parsedText(benchmarkText());
    for (auto _ : state) {
        ErrorSlot error;
        benchmark::DoNotOptimize(XMLDocument::nodesForXPath(query, document->rootElement(), error));
    }
    countText(state);
}
BENCHMARK_CAPTURE(queryingAllNodes, sequences, ".//sequence")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(queryingAllNodes, clipItems, ".//clipitem")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(queryingAllNodes, missing, ".//multiclip")->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace vornic::bench
