#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/formats/IndexRules.h"

// Whatever text comes in, the index of its elements agrees with what the reader tells.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    vornic::fuzz::expectNothing(vornic::test::brokenRuleOfIndex(text));
    return 0;
}
