#ifndef VORNIC_PLATFORM_CRASH_LOADED_MODULE_H
#define VORNIC_PLATFORM_CRASH_LOADED_MODULE_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vornic::platform {

/// A part of a program or library in this process's memory. Everything here is safe in a signal
/// handler: memory and files are read by system calls alone, and nothing is allocated.
class LoadedModule {
  public:
    /// Finds what is mapped at an address (/proc/self/maps). @return false when nothing is.
    bool find(std::uintptr_t address);

    /// True when the address lies in the part that was found last.
    [[nodiscard]] bool contains(std::uintptr_t address) const {
        return start_ <= address && address < end_;
    }
    [[nodiscard]] bool isExecutable() const { return isExecutable_; }
    /// The path of the file, a name in brackets, or "".
    [[nodiscard]] std::string_view path() const { return {path_, pathLength_}; }
    /// How far the address lies behind the place where the module begins.
    [[nodiscard]] std::uintptr_t offsetOf(std::uintptr_t address) const { return address - base_; }

    /// Looks up the function that holds an offset in the module's own symbol tables.
    /// @param name filled with its name as the linker knows it, cut where it is too long
    /// @return the name's length; 0 when no symbol is known.
    std::size_t findSymbol(std::uintptr_t offset, char* name, std::size_t capacity) const;

  private:
    void take(std::string_view line);

    std::uintptr_t start_ = 0;
    std::uintptr_t end_ = 0;
    std::uintptr_t base_ = 0;
    bool isExecutable_ = false;
    std::size_t pathLength_ = 0;
    /// With a NUL behind it.
    char path_[PATH_MAX + 1] = {};
};

}  // namespace vornic::platform

#endif
