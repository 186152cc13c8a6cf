#include "platform/crash/ElfSymbols.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <type_traits>

#include <link.h>
#include <unistd.h>

namespace vornic::platform {
namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Section = ElfW(Shdr);
using Symbol = ElfW(Sym);

/// @return how many bytes were read, which is less at the end of the file and after an error.
std::size_t readAt(int descriptor, void* buffer, std::size_t size, std::uint64_t offset) {
    constexpr std::uint64_t kFarthest = std::uint64_t{1} << 62U;
    std::size_t done = 0;
    while (done < size && offset < kFarthest) {
        const ssize_t count = pread(descriptor, static_cast<char*>(buffer) + done, size - done,
                                    static_cast<off_t>(offset + done));
        if (count <= 0 && !(count < 0 && errno == EINTR)) {
            break;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return done;
}

template <typename T>
bool readValue(int descriptor, T& value, std::uint64_t offset) {
    static_assert(std::is_trivially_copyable_v<T>);
    return readAt(descriptor, &value, sizeof value, offset) == sizeof value;
}

bool readHeader(int descriptor, Header& header) {
    constexpr unsigned char kClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    return readValue(descriptor, header, 0) && std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == kClass && header.e_phentsize == sizeof(Segment) &&
           header.e_shentsize == sizeof(Section);
}

/// The address that the linker gave to the place at an offset, or to nothing of the file.
bool linkedAddress(int descriptor, const Header& header, std::uintptr_t offset,
                   std::uintptr_t& address) {
    for (unsigned index = 0; index < header.e_phnum; ++index) {
        Segment segment;
        if (!readValue(descriptor, segment, header.e_phoff + index * sizeof segment)) {
            return false;
        }
        if (segment.p_type == PT_LOAD) {
            address = offset + (segment.p_vaddr - segment.p_offset);
            return true;
        }
    }
    return false;
}

bool findSection(int descriptor, const Header& header, unsigned type, Section& section) {
    for (unsigned index = 0; index < header.e_shnum; ++index) {
        if (!readValue(descriptor, section, header.e_shoff + index * sizeof section)) {
            return false;
        }
        if (section.sh_type == type) {
            return true;
        }
    }
    return false;
}

bool holds(const Symbol& symbol, std::uintptr_t address) {
    // The low four bits of the information are the symbol's type, for both sizes of address.
    return (symbol.st_info & 0xFU) == STT_FUNC && symbol.st_shndx != SHN_UNDEF &&
           address - symbol.st_value < symbol.st_size;
}

/// Looks through a table of symbols. @return false when none holds the address.
bool findInTable(int descriptor, const Section& table, std::uintptr_t address, Symbol& found) {
    std::array<Symbol, 128> block;
    std::uint64_t left = table.sh_size / sizeof(Symbol);
    std::uint64_t offset = table.sh_offset;
    while (left > 0) {
        const std::size_t wanted = std::min<std::uint64_t>(left, block.size());
        const std::size_t count =
            readAt(descriptor, block.data(), wanted * sizeof(Symbol), offset) / sizeof(Symbol);
        const auto end = block.begin() + static_cast<std::ptrdiff_t>(count);
        const auto symbol = std::find_if(block.begin(), end,
                                         [&](const Symbol& item) { return holds(item, address); });
        if (symbol != end) {
            found = *symbol;
            return true;
        }
        if (count < wanted) {
            return false;
        }
        left -= count;
        offset += count * sizeof(Symbol);
    }
    return false;
}

std::size_t readName(int descriptor, const Header& header, const Section& table,
                     const Symbol& symbol, char* name, std::size_t capacity) {
    Section names;
    if (table.sh_link >= header.e_shnum ||
        !readValue(descriptor, names, header.e_shoff + table.sh_link * sizeof names)) {
        return 0;
    }
    const std::size_t count = readAt(descriptor, name, capacity, names.sh_offset + symbol.st_name);
    return static_cast<std::size_t>(std::find(name, name + count, '\0') - name);
}

}  // namespace

std::size_t findElfSymbol(int descriptor, std::uintptr_t offset, char* name, std::size_t capacity) {
    Header header;
    std::uintptr_t address = 0;
    if (!readHeader(descriptor, header) || !linkedAddress(descriptor, header, offset, address)) {
        return 0;
    }
    for (const unsigned type : {SHT_SYMTAB, SHT_DYNSYM}) {
        Section table;
        Symbol symbol;
        if (findSection(descriptor, header, type, table) &&
            findInTable(descriptor, table, address, symbol)) {
            return readName(descriptor, header, table, symbol, name, capacity);
        }
    }
    return 0;
}

}  // namespace vornic::platform
