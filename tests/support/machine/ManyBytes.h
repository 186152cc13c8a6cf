#ifndef VORNIC_TESTS_SUPPORT_MACHINE_MANY_BYTES_H
#define VORNIC_TESTS_SUPPORT_MACHINE_MANY_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace vornic::test {

/// Bytes of every value that do not repeat at the distance of a block; the same ones each time.
[[nodiscard]] inline std::string manyBytes(std::size_t size) {
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

}  // namespace vornic::test

#endif
