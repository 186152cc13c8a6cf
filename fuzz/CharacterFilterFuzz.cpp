#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/repair/pipeline/FilterRules.h"

// Whatever text comes in, what a repair writes holds nothing that XML forbids, and nothing is lost
// without being told.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    vornic::fuzz::expectNothing(vornic::test::brokenRuleOfFilter(text));
    return 0;
}
