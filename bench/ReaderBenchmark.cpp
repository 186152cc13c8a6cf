#include <cstddef>
#include <cstdlib>
#include <string_view>

#include <benchmark/benchmark.h>

#include "bench/BenchmarkText.h"
#include "xml/reader/XMLReader.h"

namespace vornic::bench {

namespace {

// Takes every event, as someone who builds something from them would.
class CountingEvents : public XMLReaderEvents {
  public:
    void startElement(std::string_view name) override { bytes_ += name.size(); }
    void attribute(std::string_view name, std::string_view rawValue) override {
        bytes_ += name.size() + rawValue.size();
    }
    void endElement(std::string_view name, bool selfClosed) override {
        bytes_ += name.size() + (selfClosed ? 1 : 0);
    }
    void text(std::string_view rawText) override { bytes_ += rawText.size(); }
    void cdata(std::string_view content) override { bytes_ += content.size(); }
    void comment(std::string_view content) override { bytes_ += content.size(); }
    void processingInstruction(std::string_view target, std::string_view data) override {
        bytes_ += target.size() + data.size();
    }
    void documentType(std::string_view name, std::string_view rawDeclaration) override {
        bytes_ += name.size() + rawDeclaration.size();
    }
    [[nodiscard]] std::size_t bytes() const { return bytes_; }

  private:
    std::size_t bytes_ = 0;
};

void reading(benchmark::State& state, XMLMode mode) {
    for (auto _ : state) {
        const XMLReading reading = readXML(benchmarkText(), mode);
        if (reading.fault) {
            std::abort();
        }
    }
    countText(state);
}
BENCHMARK_CAPTURE(reading, strictly, XMLMode::strict)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(reading, tolerantly, XMLMode::tolerant)->Unit(benchmark::kMillisecond);

void readingWithEvents(benchmark::State& state) {
    for (auto _ : state) {
        CountingEvents events;
        const XMLReading reading = readXML(benchmarkText(), XMLMode::strict, &events);
        if (reading.fault) {
            std::abort();
        }
        benchmark::DoNotOptimize(events.bytes());
    }
    countText(state);
}
BENCHMARK(readingWithEvents)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace vornic::bench
