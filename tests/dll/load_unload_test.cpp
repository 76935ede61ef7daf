// SPDX-License-Identifier: MIT
// A host may load and unload the DLL as often as it likes, to look at its name, say: nothing stays behind.
#include <gtest/gtest.h>
#include <windows.h>

#include "host/host_records.h"
#include "tests/dll/support/heap_contents.h"
#include "tests/dll/support/plugin_session.h"

namespace kfx::test {
namespace {

constexpr int kWarmUpCycles = 10;
constexpr int kCycles = 200;

void LoadAskAndUnload(const std::string& path) {
    const HMODULE library = LoadLibraryA(path.c_str());
    ASSERT_TRUE(library);
    const auto ask = reinterpret_cast<uint64_t(WINAPI*)(PluginInfo*)>(
        reinterpret_cast<void*>(GetProcAddress(library, "PLUGIN16GetPluginParams")));
    PluginInfo info = {};
    info.size = sizeof info;
    EXPECT_EQ(ask(&info), 1u);
    EXPECT_STREQ(info.name, "Kestrel FX #1");
    FreeLibrary(library);
    EXPECT_FALSE(GetModuleHandleA("kfxplug1.dll")) << "it has really gone";
}

TEST(LoadUnload, Two_hundred_cycles_leave_the_heaps_as_they_were) {
    const std::string path = PluginPath();
    for (int i = 0; i < kWarmUpCycles; ++i) LoadAskAndUnload(path);
    const HeapContents before = CountHeaps();
    for (int i = 0; i < kCycles; ++i) LoadAskAndUnload(path);
    const HeapContents after = CountHeaps();
    EXPECT_EQ(after.blocks, before.blocks);
    EXPECT_EQ(after.bytes, before.bytes);
}

}  // namespace
}  // namespace kfx::test
