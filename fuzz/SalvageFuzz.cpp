#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/salvage/SalvageRule.h"

// Whatever bytes come in, there is a well-formed copy or a sentence that says why not.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    vornic::fuzz::expectNothing(vornic::test::brokenRuleOfSalvage(bytes));
    return 0;
}
