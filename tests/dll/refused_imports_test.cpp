// SPDX-License-Identifier: MIT
// Whatever the system or the C runtime refuses the plug-in, the host lives on: its call returns, nothing
// hangs, and every movable block is freed.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "resources/resource_ids.h"
#include "tests/dll/support/import_patch.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/dll/support/refused_imports.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr uint32_t kFirstAllocations = 5;
constexpr uint32_t kFirstDrawings = 1;
constexpr uint32_t kFirstKept = 3;
constexpr uint32_t kFonts = 4;
constexpr uint64_t kMinusOne = ~uint64_t{0};
constexpr uint64_t kFailed = 0x80004005;  // E_FAIL

const std::vector<Refusal> kRefusals = {
    // Memory and resources.
    {"malloc", 0, false, kFirstAllocations},
    {"calloc", 0, false, kFirstAllocations},
    {"realloc", 0, false, kFirstAllocations},
    {"GlobalAlloc", 0, false, kFirstAllocations},
    {"GlobalReAlloc", 0, false, kFirstAllocations},
    {"GlobalLock", 0, false, kFirstAllocations},
    {"GlobalSize", 0},
    {"FindResourceA", 0},
    {"LoadResource", 0},
    {"LockResource", 0},
    {"SizeofResource", 0},
    {"LoadStringA", 0},
    {"LoadCursorA", 0},
    // Files, folders and what the C runtime formats.
    {"fopen", 0},
    {"fgets", 0},
    {"fclose", kMinusOne, true},
    {"ferror", 1},
    {"fputc", kMinusOne},
    {"fwrite", 0},
    {"vfprintf", kMinusOne},
    {"_ctime64", 0},
    {"_time64", kMinusOne},
    {"GetFileAttributesA", kMinusOne},
    {"GetModuleFileNameA", 0},
    {"SHGetPathFromIDListA", 0},
    {"SHGetSpecialFolderLocation", kFailed},
    {"ShellExecuteA", 2},
    {"GetOpenFileNameA", 0},
    {"GetSaveFileNameA", 0},
    {"MultiByteToWideChar", 0},
    {"WideCharToMultiByte", 0},
    {"VirtualProtect", 0},
    {"VirtualQuery", 0},
    // What is kept while the window is open, or while one thing is drawn.
    {"CreateFontA", 0, false, kFonts},
    {"CreateSolidBrush", 0, false, kFirstKept},
    {"RestoreDC", 0, false, kFirstKept},
    {"SaveDC", 0, false, kFirstKept},
    {"SelectObject", 0, false, kFirstKept},
    // Other drawing: nothing is kept from one call to the next.
    {"CombineRgn", 0, false, kFirstDrawings},
    {"CreatePen", 0, false, kFirstDrawings},
    {"CreateRectRgnIndirect", 0, false, kFirstDrawings},
    {"CreateRoundRectRgn", 0, false, kFirstDrawings},
    {"DrawEdge", 0, false, kFirstDrawings},
    {"DrawFocusRect", 0, false, kFirstDrawings},
    {"DrawTextA", 0, false, kFirstDrawings},
    {"ExtSelectClipRgn", 0, false, kFirstDrawings},
    {"FillRect", 0, false, kFirstDrawings},
    {"FillRgn", 0, false, kFirstDrawings},
    {"FrameRect", 0, false, kFirstDrawings},
    {"GetStockObject", 0, false, kFirstDrawings},
    {"GetSysColorBrush", 0, false, kFirstDrawings},
    {"IntersectClipRect", 0, false, kFirstDrawings},
    {"InvalidateRect", 0, false, kFirstDrawings},
    {"RedrawWindow", 0, false, kFirstDrawings},
    {"RoundRect", 0, false, kFirstDrawings},
    {"SetBkColor", 0xFFFFFFFF, false, kFirstDrawings},
    {"SetBkMode", 0, false, kFirstDrawings},
    {"SetBrushOrgEx", 0, false, kFirstDrawings},
    {"SetDIBitsToDevice", 0, false, kFirstDrawings},
    {"SetStretchBltMode", 0, false, kFirstDrawings},
    {"SetTextColor", 0xFFFFFFFF, false, kFirstDrawings},
    {"StretchDIBits", 0, false, kFirstDrawings},
    // Windows, controls, messages and timers.
    {"AppendMenuA", 0},
    {"CheckDlgButton", 0},
    {"CreateDialogParamA", 0},
    {"CreatePopupMenu", 0},
    {"CreateWindowExA", 0, false, kFirstAllocations},
    {"DialogBoxParamA", kMinusOne},
    {"DestroyWindow", 0},
    {"EndDialog", 0, true},  // a dialog that is never ended stays open: no session could end
    {"EnumChildWindows", 0},
    {"GetClassNameA", 0},
    {"GetCursorPos", 0},
    {"GetDlgCtrlID", 0},
    {"GetDlgItem", 0},
    {"GetDlgItemInt", 0},
    {"GetDlgItemTextA", 0},
    {"GetFocus", 0},
    {"GetLastActivePopup", 0},
    {"GetParent", 0},
    {"GetPropA", 0},
    {"GetScrollPos", 0},
    {"GetScrollRange", 0},
    {"GetWindow", 0},
    {"GetWindowRect", 0},
    {"GetWindowTextA", 0},
    {"GetWindowThreadProcessId", 0},
    {"KillTimer", 0},
    {"MapWindowPoints", 0},
    {"PostMessageA", 0},
    {"SendDlgItemMessageA", 0},
    {"SetCursor", 0},
    {"SetDlgItemInt", 0},
    {"SetDlgItemTextA", 0},
    {"SetFocus", 0},
    {"SetForegroundWindow", 0},
    {"SetPropA", 0},
    {"SetScrollInfo", 0},
    {"SetTimer", 0},
    {"SetWindowLongPtrA", 0},
    {"SetWindowPos", 0},
    {"SetWindowTextA", 0},
    {"TrackPopupMenu", 0},
};

// What has no failure to report, reports only a mistake in its arguments, or gives something back; and what
// the runtime calls while the library is loaded or unloaded, before and after the table can be changed.
const std::set<std::string> kCannotFail = {
    "CallWindowProcA",
    "CoTaskMemFree",
    "CommDlgExtendedError",
    "DefWindowProcA",
    "DeleteCriticalSection",
    "DeleteObject",
    "DestroyMenu",
    "EnableWindow",
    "EnterCriticalSection",
    "GetCurrentThreadId",
    "GetKeyState",
    "GetLastError",
    "GetSysColor",
    "GetSystemMetrics",
    "GetWindowLongPtrA",
    "GlobalFree",
    "GlobalUnlock",
    "InflateRect",
    "InitializeCriticalSection",
    "IsDBCSLeadByte",
    "IsDBCSLeadByteEx",
    "IsDlgButtonChecked",
    "IsWindow",
    "IsWindowVisible",
    "LeaveCriticalSection",
    "OffsetRect",
    "RemovePropA",
    "SendMessageA",
    "SetScrollPos",
    "ShowWindow",
    "Sleep",
    "TlsGetValue",
    "___lc_codepage_func",
    "___mb_cur_max_func",
    "__iob_func",
    "_amsg_exit",
    "_errno",
    "_initterm",
    "_lock",
    "_unlock",
    "abort",
    "atoi",
    "free",
    "localeconv",
    "lstrcmpiA",
    "memcmp",
    "memcpy",
    "memmove",
    "memset",
    "rand",
    "srand",
    "strchr",
    "strcspn",
    "strerror",
    "strlen",
    "strncmp",
    "strstr",
    "wcslen",
};

// What can fail, but is not called by a session: the runtime's own calls, made only while the library is
// loaded, before the table can be changed, or not at all; and what reads fields, which no panel has.
const std::set<std::string> kNotCalled = {
    "GetDlgItemInt",  "GetDlgItemTextA", "MultiByteToWideChar",
    "VirtualProtect", "VirtualQuery",    "WideCharToMultiByte",
    "calloc",         "malloc",          "realloc",
    "vfprintf",
};

constexpr int kEmboss = 1;
constexpr int kHsbAndChannels = 5;
constexpr int kAboutClose = 1;
constexpr int kAboutHelp = 9;
constexpr int kAboutWebPage = 205;
constexpr char kHelpFailed[] = "There has been an error displaying the Help document.";

HostCallback answer = nullptr;  // the fake host's own service function
bool runAgain = false;          // inside the next request for progress

// A host that runs the plug-in once more inside a request, which is refused.
uint64_t RunAgainAndAnswer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (runAgain && static_cast<HostRequest>(request) == HostRequest::Progress) {
        runAgain = false;
        const auto doBuild = reinterpret_cast<uint64_t(WINAPI*)(HWND, const HostContext*)>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kfxplug1.dll"), "PLUGIN16DoBuild")));
        EXPECT_EQ(doBuild(nullptr, nullptr), 0u);
    }
    return answer(target, request, word, pointer);
}

void Toggle(PluginSession& session, int checkBox) {
    if (const HWND control = session.Control(checkBox)) SendMessageA(control, BM_CLICK, 0, 0);
    session.Settle();
}

void UseAboutBox(PluginSession& session) {
    const HWND about = session.PressForBox(IDC_ABOUT, "About");
    if (!about) return;
    for (const int id : {kAboutHelp, kAboutWebPage, kAboutClose})
        SendMessageA(about, WM_COMMAND, static_cast<WPARAM>(id), 0);
    session.Settle();
}

// Everything that a window is used for, as far as it is there.
void UseWindow(PluginSession& session) {
    session.Command(IDC_SELECT);
    session.Choose(IDC_EFFECT, kHsbAndChannels);
    session.Choose(IDC_EFFECT, kEmboss);
    session.Scroll(IDC_EMBOSS_RADIUS, SB_LINERIGHT);
    session.Command(IDC_BACKGROUND_COLOR);
    session.DrawPreview(31, 23);
    Toggle(session, IDC_DITHER);
    Toggle(session, IDC_CUSTOM_PALETTE);
    runAgain = true;
    session.Command(IDC_TEST);
    runAgain = false;
    session.Command(IDC_HELP_BUTTON);
    UseAboutBox(session);
    session.AnswerFileDialog(session.DocumentsFolder() + "all.kx1");
    session.Command(IDC_OPEN_SAVE);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    session.Command(IDM_DOCUMENT_OPEN);
}

std::vector<uint8_t> TwoFrames() {
    return MakeAnimationBlock(
        {{BytesOf(ShadedPicture(13, 13, 0).handle), {}}, {BytesOf(ShadedPicture(13, 13, 1).handle), {}}});
}

struct SessionRun {
    std::map<std::string, uint32_t> calls;
    std::vector<std::string> messages;
    size_t frames = 0;
    LedgerCounts memory = {};
};

// A whole session with one call refused; call 0: none.
SessionRun RunWith(const std::string& function, uint32_t call) {
    std::unique_ptr<RefusedImports> imports;
    SessionRun run;
    {
        FakeHost host;
        host.context.buttonStyle = 3;
        host.Serve(TwoFrames(), PluginPath());
        host.Refuse(HostRequest::ShowHelp, 1);
        answer = host.context.callback;
        host.context.callback = RunAgainAndAnswer;
        SessionOptions options;
        options.configuration =
            "MainEffect = 1\nTruecolour = 0\nSampleWindowKeyLine = 1\nFileNamePath = " + PluginPath() + "\n";
        options.prepareLibrary = [&](HMODULE library) {
            imports = std::make_unique<RefusedImports>(library, kRefusals);
            imports->Refuse(function, call);
        };
        PluginSession session(host, options);
        UseWindow(session);
        run.frames = host.Frames().size();
        session.Close();
        run.messages = session.Messages();
        run.memory = CountLedger();
        for (const Refusal& refusal : kRefusals)
            run.calls[refusal.function] = imports->CallsTo(refusal.function);
    }
    return run;
}

const SessionRun& RunWithoutRefusal() {
    static const SessionRun run = RunWith("", 0);
    return run;
}

class RefusedImport : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedImport, ends_no_host_and_loses_no_memory) {
    const std::string function = GetParam().function;
    const uint32_t calls = std::min(RunWithoutRefusal().calls.at(function), GetParam().firstCalls);
    EXPECT_EQ(calls == 0, kNotCalled.count(function) != 0) << calls << " calls in a session";
    for (uint32_t call = 1; call <= calls; ++call) {
        SCOPED_TRACE(function + ", call " + std::to_string(call));
        const SessionRun run = RunWith(function, call);
        EXPECT_EQ(run.memory.liveBlocks, 0u);
        EXPECT_EQ(run.memory.lockedBlocks, 0u);
        EXPECT_EQ(run.memory.strangeFrees, 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(All, RefusedImport, testing::ValuesIn(kRefusals),
                         [](const auto& parameter) { return std::string(parameter.param.function); });

// Every control of a panel counts: sliders, their labels and captions.
TEST(RefusedImports, a_panel_that_cannot_be_made_whole_is_reported_and_the_window_closes) {
    for (const char* function : {"CreateDialogParamA", "CreateWindowExA"}) {
        for (uint32_t call = 1; call <= 4; ++call) {
            SCOPED_TRACE(std::string(function) + ", call " + std::to_string(call));
            EXPECT_EQ(RunWith(function, call).messages,
                      std::vector<std::string>{"This plugin could not be initialized"});
        }
    }
}

// The subclassed controls keep their own procedures in properties: without one they are not subclassed.
TEST(RefusedImports, a_control_that_cannot_be_dressed_or_bound_works_as_it_is) {
    const uint32_t calls = RunWithoutRefusal().calls.at("SetPropA");
    ASSERT_GT(calls, 8u);
    for (uint32_t call = 1; call <= 8; ++call) {
        SCOPED_TRACE(call);
        const SessionRun run = RunWith("SetPropA", call);
        EXPECT_EQ(run.messages, RunWithoutRefusal().messages);
        EXPECT_EQ(run.frames, 2u);
    }
}

TEST(RefusedImports, cover_everything_that_the_library_imports_and_that_can_fail) {
    const HMODULE library = LoadLibraryA(PluginPath().c_str());
    ASSERT_TRUE(library);
    std::set<std::string> covered = kCannotFail;
    for (const Refusal& refusal : kRefusals) covered.insert(refusal.function);
    std::set<std::string> imported;
    for (const ImportSlot& import : ImportSlots(library)) imported.insert(import.function);
    FreeLibrary(library);
    EXPECT_EQ(covered, imported) << "each is in one of the lists, and nothing else";
}

TEST(RefusedImports, nothing_refused_means_a_session_with_pictures_and_one_message) {
    const SessionRun& run = RunWithoutRefusal();
    EXPECT_EQ(run.frames, 2u);
    EXPECT_EQ(run.messages, std::vector<std::string>{kHelpFailed});
    EXPECT_GT(run.calls.at("CreateWindowExA"), 0u);
    EXPECT_GT(run.calls.at("SetDIBitsToDevice"), 0u);
    EXPECT_GT(run.calls.at("vfprintf") + run.calls.at("fwrite"), 0u);
}

}  // namespace
}  // namespace kfx::test
