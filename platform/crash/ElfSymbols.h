#ifndef VORNIC_PLATFORM_CRASH_ELF_SYMBOLS_H
#define VORNIC_PLATFORM_CRASH_ELF_SYMBOLS_H

#include <cstddef>
#include <cstdint>

namespace vornic::platform {

/// Looks up the function that holds a place of a program or library in the file's symbol tables:
/// the full one, else the one for linking at run time. Safe in a signal handler. A file that is no
/// such one of this machine, or is broken, has no symbols.
/// @param descriptor the open file, which may be at any position
/// @param offset the distance from the place in memory where the file's first segment begins
/// @param name filled with the name as the linker knows it, cut where it is too long
/// @return the name's length; 0 when no symbol is known.
[[nodiscard]] std::size_t findElfSymbol(int descriptor, std::uintptr_t offset, char* name,
                                        std::size_t capacity);

}  // namespace vornic::platform

#endif
