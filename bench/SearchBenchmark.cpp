#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/BenchmarkText.h"
#include "formats/xmeml/ElementSearch.h"

namespace vornic::bench {

namespace {

// As many as a file of an old version is searched for.
const std::vector<std::string>& elements() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> made;
        for (const char* stem : {"<filmdata", "<keycode", "<multiclip", "<angle", "<audiochannel",
                                 "<metadata", "<itemhistory"}) {
            for (int number = 1; number <= 7; ++number) {
                made.push_back(stem + std::to_string(number));
            }
        }
        return made;
    }();
    return names;
}

void searchingForElements(benchmark::State& state) {
    constexpr std::size_t kPiece = std::size_t{64} << 10U;
    for (auto _ : state) {
        ElementSearch search(elements());
        for (std::string_view rest = benchmarkText(); !rest.empty();
             rest.remove_prefix(std::min(kPiece, rest.size()))) {
            search.append(rest.substr(0, kPiece));
        }
        benchmark::DoNotOptimize(search.found(0));
    }
    countText(state);
}
BENCHMARK(searchingForElements)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace vornic::bench
