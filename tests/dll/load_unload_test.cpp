// SPDX-License-Identifier: MIT
// A host may load and unload the DLL as often as it likes, to look at its name, say: nothing stays behind.
#include <gtest/gtest.h>
#include <windows.h>

#include <iterator>

#include "host/host_records.h"
#include "tests/dll/support/plugin_session.h"

namespace kfx::test {
namespace {

constexpr int kWarmUpCycles = 10;
constexpr int kCycles = 200;

struct HeapContents {
    size_t blocks = 0;
    size_t bytes = 0;
};

// What is allocated in all heaps of the process: the C runtime's may be one of its own.
HeapContents CountHeaps() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(std::size(heaps)), heaps);
    EXPECT_GT(count, 0u);
    EXPECT_LE(count, std::size(heaps));
    HeapContents contents;
    for (DWORD i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry)) {
            if (!(entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)) continue;
            ++contents.blocks;
            contents.bytes += entry.cbData;
        }
    }
    return contents;
}

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
