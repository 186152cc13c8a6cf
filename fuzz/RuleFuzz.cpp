#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/fuzz/Rules.h"

#ifndef VORNIC_RULE
#error "VORNIC_RULE is the function of tests/fuzz/Rules.h that the target tries"
#endif

// Whatever bytes come in, the rule holds.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    vornic::fuzz::expectNothing(vornic::test::VORNIC_RULE(bytes));
    return 0;
}
