#include "platform/files/TemporaryName.h"

#include <array>
#include <cstddef>

#include "base/PathText.h"
#include "platform/processes/RandomBytes.h"

namespace vornic::platform {
namespace {

constexpr std::string_view kTemporaryMark = ".vornic-";
constexpr std::string_view kAlphabet = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr std::size_t kRandomLength = 10;

}  // namespace

std::string temporaryName(std::string_view name) {
    // Short enough for file systems that take less than 255 bytes, encrypting ones for example.
    constexpr std::size_t kKeptOfName = 100;
    std::array<unsigned char, kRandomLength> random{};
    fillWithRandomBytes(random.data(), random.size());
    std::string result = ".";
    result.append(truncateUTF8(name, kKeptOfName)).append(kTemporaryMark);
    for (const unsigned char byte : random) {
        result += kAlphabet[byte % kAlphabet.size()];
    }
    return result;
}

bool isTemporaryName(std::string_view name) {
    const std::size_t mark = name.rfind(kTemporaryMark);
    return name.starts_with('.') && mark != std::string_view::npos &&
           name.size() == mark + kTemporaryMark.size() + kRandomLength &&
           name.find_first_not_of(kAlphabet, mark + kTemporaryMark.size()) ==
               std::string_view::npos;
}

}  // namespace vornic::platform
