#ifndef VORNIC_BENCH_BENCHMARK_TEXT_H
#define VORNIC_BENCH_BENCHMARK_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/SampleProject.h"

namespace vornic::bench {

/// The text that every engine is measured on: larger than the caches, so that the figures hold for
/// long files.
inline const std::string& benchmarkText() {
    constexpr std::size_t kBytes = std::size_t{32} << 20U;
    static const std::string text = sampleProjectText({.bytes = kBytes});
    return text;
}

/// Tells how much text the iterations have gone through.
inline void countText(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(benchmarkText().size()));
}

}  // namespace vornic::bench

#endif
