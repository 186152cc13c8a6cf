#include <array>
#include <cstdlib>
#include <string>

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <link.h>

#include "platform/crash/ElfSymbols.h"
#include "platform/files/FileDescriptor.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

extern "C" [[gnu::noinline]] int functionInTheFullTable() {
    return 7;
}

/// Where a function lies in its file.
struct Location {
    std::string path;
    std::uintptr_t offset = 0;
};
template <typename Function>
Location locationOf(Function* function) {
    Dl_info known{};
    EXPECT_NE(dladdr(reinterpret_cast<void*>(function), &known), 0);
    return {.path = known.dli_fname,
            .offset = reinterpret_cast<std::uintptr_t>(function) -
                      reinterpret_cast<std::uintptr_t>(known.dli_fbase)};
}

std::string symbolIn(const std::string& path, std::uintptr_t offset, std::size_t capacity = 100) {
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_TRUE(file) << path;
    std::string name(capacity, '?');
    name.resize(findElfSymbol(file.get(), offset, name.data(), capacity));
    return name;
}

class ElfSymbolsTest : public test::SandboxTest {
  protected:
    Location own = locationOf(&functionInTheFullTable);
    std::string program = test::readBytes(own.path);

    [[nodiscard]] ElfW(Ehdr) header() const {
        ElfW(Ehdr) header;
        program.copy(reinterpret_cast<char*>(&header), sizeof header);
        return header;
    }
    std::string symbolInChanged(const ElfW(Ehdr) & changed) const {
        std::string bytes = program;
        bytes.replace(0, sizeof changed, reinterpret_cast<const char*>(&changed), sizeof changed);
        return symbolIn(sandbox.write("changed", bytes), own.offset);
    }
};

TEST_F(ElfSymbolsTest, findsAFunctionByAnyPlaceInIt) {
    EXPECT_EQ(symbolIn(own.path, own.offset), "functionInTheFullTable");
    EXPECT_EQ(symbolIn(own.path, own.offset + 3), "functionInTheFullTable");
}

TEST_F(ElfSymbolsTest, findsFunctionsOfALibraryInTheTableForLinking) {
    const Location function = locationOf(&getenv);
    EXPECT_EQ(symbolIn(function.path, function.offset), "getenv");
}

TEST_F(ElfSymbolsTest, cutsALongName) {
    EXPECT_EQ(symbolIn(own.path, own.offset, 8), "function");
}

TEST_F(ElfSymbolsTest, knowsNothingOfPlacesOutsideOfFunctions) {
    EXPECT_EQ(symbolIn(own.path, 0), "");
    EXPECT_EQ(symbolIn(own.path, ~std::uintptr_t{0} / 2), "");
}

TEST_F(ElfSymbolsTest, knowsNothingOfOtherFiles) {
    EXPECT_EQ(symbolIn(sandbox.write("empty", ""), 0), "");
    EXPECT_EQ(symbolIn(sandbox.write("text", std::string(1000, 'x')), 0), "");
    EXPECT_EQ(symbolIn(sandbox.folder(), 0), "");
    ElfW(Ehdr) other = header();
    other.e_ident[EI_CLASS] = ELFCLASSNONE;
    EXPECT_EQ(symbolInChanged(other), "");
}

TEST_F(ElfSymbolsTest, survivesAFileThatIsCutOffAnywhere) {
    for (const std::size_t size : {sizeof(ElfW(Ehdr)) - 1, sizeof(ElfW(Ehdr)), std::size_t{200},
                                   program.size() / 2, header().e_shoff + sizeof(ElfW(Shdr))}) {
        EXPECT_EQ(symbolIn(sandbox.write("cut", program.substr(0, size)), own.offset), "") << size;
    }
}

TEST_F(ElfSymbolsTest, survivesPlacesThatLeadOutOfTheFile) {
    ElfW(Ehdr) changed = header();
    changed.e_shoff = ~std::uint64_t{0} - 5;
    EXPECT_EQ(symbolInChanged(changed), "");
    changed = header();
    changed.e_phoff = ~std::uint64_t{0} / 2;
    EXPECT_EQ(symbolInChanged(changed), "");
    changed = header();
    changed.e_shnum = 0;
    EXPECT_EQ(symbolInChanged(changed), "");
}

}  // namespace
}  // namespace vornic::platform
