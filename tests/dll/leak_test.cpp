// SPDX-License-Identifier: MIT
// Windows opened, built with and closed over and over: memory, drawing objects, menus, device contexts,
// hooks, properties, files and handles are what they were. What the plug-in gets and gives back is counted at
// its import table, since the system's own counters answer 0 under Wine.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "resources/resource_ids.h"
#include "tests/dll/support/heap_contents.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/refused_imports.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

// Functions that get something, and the one that gives it back.
struct Pair {
    std::vector<const char*> getting;
    const char* giving;
};
const Pair kPairs[] = {
    {{"CreateFontA", "CreateSolidBrush", "CreatePen", "CreateDIBSection", "CreateRectRgnIndirect",
      "CreateRoundRectRgn"},
     "DeleteObject"},
    {{"CreatePopupMenu"}, "DestroyMenu"},
    {{"GetDC"}, "ReleaseDC"},
    {{"BeginPaint"}, "EndPaint"},
    {{"SaveDC"}, "RestoreDC"},
    {{"SetWindowsHookExA"}, "UnhookWindowsHookEx"},
    {{"SetPropA"}, "RemovePropA"},
    {{"CoInitializeEx"}, "CoUninitialize"},
    {{"fopen"}, "fclose"},
};

std::vector<Refusal> CountedFunctions() {
    std::vector<Refusal> functions;
    for (const Pair& pair : kPairs) {
        for (const char* function : pair.getting) functions.push_back({.function = function});
        functions.push_back({.function = pair.giving});
    }
    return functions;
}

// How often each is called; nothing is refused. It has to live longer than the library.
std::unique_ptr<RefusedImports> CountCallsOf(HMODULE library) {
    return std::make_unique<RefusedImports>(library, CountedFunctions());
}

void ExpectAllGivenBack(const RefusedImports& calls, size_t opening) {
    for (const Pair& pair : kPairs) {
        uint32_t got = 0;
        for (const char* function : pair.getting) got += calls.CallsTo(function);
        EXPECT_GT(got, 0u) << pair.getting[0];
        EXPECT_EQ(calls.CallsTo(pair.giving), got) << pair.giving << " at opening " << opening;
    }
}

// Handles that the process has: where the system does not tell, the number of the next one, since the lowest
// free number is taken.
size_t CountHandles() {
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count) return count;
    const HANDLE next = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(next);
    return reinterpret_cast<size_t>(next);
}

// What stays behind when a window and its thread have gone.
struct Left {
    size_t handles;
    DWORD drawingObjects, userObjects;  // 0 under Wine
};

Left CountLeft() {
    return {CountHandles(), GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS),
            GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS)};
}

// One opening: a source, three effects drawn and built, a document, the About box, a build that closes.
void OpenBuildAndClose(const std::function<void(HMODULE)>& prepareLibrary) {
    FakeHost host;
    host.context.buttonStyle = 3;
    host.Serve(ShadedFrames(2), PluginPath());
    SessionOptions options;
    options.configuration = "Truecolour = 0\nMainSupercompress = 1\nFileNamePath = " + PluginPath() + "\n";
    options.prepareLibrary = prepareLibrary;
    {
        PluginSession session(host, options);
        session.Choose(IDC_EFFECT, 3);
        session.DrawPreview(40, 30);
        session.Command(IDC_OPEN_SAVE);
        session.AnswerFileDialog(session.DocumentsFolder() + "all.kx1");
        session.Command(IDM_DOCUMENT_SAVE_AS);
        session.Command(IDM_DOCUMENT_OPEN);
        const HWND about = session.PressForBox(IDC_ABOUT, "About");
        ASSERT_TRUE(about);
        SendMessageA(about, WM_COMMAND, IDC_ABOUT_CLOSE, 0);
        EXPECT_TRUE(session.WaitUntilGone(about));
        session.Click(IDC_BUILD);
        EXPECT_EQ(session.WaitUntilClosed(), 1u);
        EXPECT_EQ(host.Frames().size(), 2u);
        EXPECT_TRUE(session.RunningTimers().empty());
        EXPECT_TRUE(session.Messages().empty());
        EXPECT_EQ(CountLedger().liveBlocks, 0u);
        EXPECT_EQ(CountLedger().lockedBlocks, 0u);
        EXPECT_EQ(CountLedger().strangeFrees, 0u);
    }
    AddTried("openings with a build");
}

// KFX_OPENINGS=500 for as many as that.
size_t Openings() {
    const char* const wish = std::getenv("KFX_OPENINGS");
    return wish ? std::strtoul(wish, nullptr, 10) : 20;
}

constexpr size_t kWarmUp = 5;  // until the system has made what it keeps

void ExpectSame(const Left& before, const Left& after) {
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_EQ(after.drawingObjects, before.drawingObjects);
    EXPECT_EQ(after.userObjects, before.userObjects);
}

TEST(Leaks, Openings_with_builds_of_one_loaded_library_leave_nothing) {
    const HMODULE library = LoadLibraryA(PluginPath().c_str());
    ASSERT_TRUE(library);
    const std::unique_ptr<RefusedImports> calls = CountCallsOf(library);
    Left before = {};
    HeapContents heaps;
    for (size_t i = 0; i < kWarmUp + Openings(); ++i) {
        if (i == kWarmUp) before = CountLeft(), heaps = CountHeaps();
        OpenBuildAndClose(nullptr);
        ExpectAllGivenBack(*calls, i);
        if (HasFailure()) break;
    }
    ExpectSame(before, CountLeft());
    // A block left behind by each opening would be twice as many.
    EXPECT_LE(CountHeaps().blocks, heaps.blocks + Openings() / 2);
    FreeLibrary(library);
}

// Wine's file dialogs leave a handle behind whenever they are loaded and unloaded with the library: they
// stay.
TEST(Leaks, Openings_with_builds_of_a_library_loaded_anew_leave_nothing) {
    const HMODULE dialogs = LoadLibraryA("comdlg32.dll");
    Left before = {};
    for (size_t i = 0; i < kWarmUp + Openings(); ++i) {
        if (i == kWarmUp) before = CountLeft();
        std::unique_ptr<RefusedImports> calls;
        OpenBuildAndClose([&](HMODULE library) { calls = CountCallsOf(library); });
        ExpectAllGivenBack(*calls, i);
        EXPECT_FALSE(GetModuleHandleA("kfxplug1.dll")) << "it has really gone";
        if (HasFailure()) break;
    }
    ExpectSame(before, CountLeft());
    FreeLibrary(dialogs);
}

}  // namespace
}  // namespace kfx::test
