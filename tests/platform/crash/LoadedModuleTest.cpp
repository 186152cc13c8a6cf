#include <array>
#include <cstdlib>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/crash/LoadedModule.h"
#include "platform/files/FileDescriptor.h"
#include "platform/settings/Bundle.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

extern "C" [[gnu::noinline]] int functionWithAName() {
    return 5;
}

std::uintptr_t addressOf(int (*function)()) {
    return reinterpret_cast<std::uintptr_t>(function);
}

std::string symbolAt(const LoadedModule& module, std::uintptr_t address) {
    std::array<char, 64> name{};
    return {name.data(), module.findSymbol(module.offsetOf(address), name.data(), name.size())};
}

TEST(LoadedModuleTest, isTheProgramForAFunctionOfIts) {
    LoadedModule module;
    ASSERT_TRUE(module.find(addressOf(functionWithAName)));
    EXPECT_EQ(module.path(), executablePath());
    EXPECT_TRUE(module.isExecutable());
    EXPECT_TRUE(module.contains(addressOf(functionWithAName)));
    EXPECT_FALSE(module.contains(0));
    EXPECT_EQ(symbolAt(module, addressOf(functionWithAName)), "functionWithAName");
    EXPECT_EQ(symbolAt(module, addressOf(functionWithAName) + 1), "functionWithAName");
}

TEST(LoadedModuleTest, countsOffsetsFromTheBeginningOfTheModule) {
    Dl_info known{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&getenv), &known), 0);
    LoadedModule module;
    const auto address = reinterpret_cast<std::uintptr_t>(known.dli_saddr);
    ASSERT_TRUE(module.find(address));
    EXPECT_EQ(module.offsetOf(address),
              address - reinterpret_cast<std::uintptr_t>(known.dli_fbase));
    EXPECT_NE(module.path().find("libc.so"), std::string_view::npos);
    EXPECT_EQ(symbolAt(module, address), "getenv");
}

TEST(LoadedModuleTest, isNothingWhereNothingIsMapped) {
    LoadedModule module;
    EXPECT_FALSE(module.find(8));
    EXPECT_FALSE(module.contains(8));
    EXPECT_FALSE(module.find(~std::uintptr_t{0}));
}

TEST(LoadedModuleTest, hasNoSymbolsInMemoryWithoutAFile) {
    int onTheStack = 0;
    LoadedModule module;
    const auto address = reinterpret_cast<std::uintptr_t>(&onTheStack);
    ASSERT_TRUE(module.find(address));
    EXPECT_FALSE(module.isExecutable());
    EXPECT_EQ(symbolAt(module, address), "");
}

class LoadedFileTest : public test::SandboxTest {};

TEST_F(LoadedFileTest, keepsAPathWithBlanksAndReportsWhenItWasRemoved) {
    const std::string path = sandbox.write("a  b c", std::string(5000, 'x'));
    const ErrnoOr<FileDescriptor> file = openRegularFile(path, true);
    ASSERT_TRUE(file);
    void* const memory = mmap(nullptr, 5000, PROT_READ, MAP_PRIVATE, file->get(), 0);
    ASSERT_NE(memory, MAP_FAILED);
    const auto address = reinterpret_cast<std::uintptr_t>(memory) + 10;
    LoadedModule module;
    ASSERT_TRUE(module.find(address));
    EXPECT_EQ(module.path(), path);
    EXPECT_EQ(module.offsetOf(address), 10U);
    EXPECT_EQ(symbolAt(module, address), "") << "it is no program";
    EXPECT_EQ(unlink(path.c_str()), 0);
    ASSERT_TRUE(module.find(address));
    EXPECT_EQ(module.path(), path + " (deleted)");
    munmap(memory, 5000);
}

}  // namespace
}  // namespace vornic::platform
