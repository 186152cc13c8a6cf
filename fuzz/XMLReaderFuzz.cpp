#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/xml/reader/MendedText.h"

// Whatever text comes in, the rules of mending hold.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    vornic::fuzz::expectNothing(vornic::test::brokenRuleOfMending(text));
    return 0;
}
