// SPDX-License-Identifier: MIT
// Work beside the window, in a window of the test's own.
#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include "media/file_io.h"
#include "stage/command_ids.h"
#include "stage/command_table.h"
#include "stage/menus.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"
#include "tests/cli/test_files.h"
#include "tests/driven/import_patch.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using namespace stage;

constexpr wchar_t kClassName[] = L"KestrelWorkTest";

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == kProgressNoted) ShowProgress(StageOf(window));
    if (message == kWorkDone) OnWorkDone(StageOf(window), word);
    if (message == WM_COMMAND) RunCommand(StageOf(window), LOWORD(word));
    return DefWindowProcW(window, message, word, pointer);
}

struct WorkBesideWindow : ::testing::Test {
    Stage stage;
    HANDLE goOn = CreateEventW(nullptr, FALSE, FALSE, nullptr);

    void SetUp() override {
        INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_BAR_CLASSES | ICC_PROGRESS_CLASS};
        InitCommonControlsEx(&classes);
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = Procedure;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = kClassName;
        RegisterClassW(&windowClass);
        stage.window = CreateWindowW(kClassName, L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 500,
                                     nullptr, nullptr, windowClass.hInstance, nullptr);
        ASSERT_NE(stage.window, nullptr);
        SetWindowLongPtrW(stage.window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&stage));
        stage.accelerators = MakeAccelerators();
        MakeControls(&stage);
        UpdateControls(&stage);
    }

    void TearDown() override {
        SetEvent(goOn);
        WaitForWork(&stage);
        for (const HANDLE thread : stage.work.leftThreads)
            EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        DestroyAcceleratorTable(stage.accelerators);
        DestroyWindow(stage.window);
        CloseHandle(goOn);
    }

    template <typename Condition>
    static bool WaitForMessages(const Condition& condition) {
        return WaitFor([&condition] {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
            return condition();
        });
    }

    bool IsProgressShown() const { return IsWindowVisible(stage.controls.progress) != 0; }

    // Work that is three parts of four done, and ends when the test says so.
    bool StartWaiting(const char* title) {
        return StartWork(
            &stage, title,
            [this](Work* work) {
                NoteProgress(&work->progress, work->window, "", 3, 4);
                WaitForSingleObject(goOn, INFINITE);
            },
            [](Stage*) {});
    }
};

TEST_F(WorkBesideWindow, Each_piece_of_work_shows_its_progress) {
    for (const char* title : {"first", "second", "second"}) {
        ASSERT_TRUE(StartWaiting(title));
        EXPECT_EQ(stage.work.progress.stop, false);
        EXPECT_TRUE(WaitForMessages([this] {
            return IsProgressShown() && SendMessageW(stage.controls.progress, PBM_GETPOS, 0, 0) == 3;
        })) << title;
        stage.work.progress.stop = true;
        SetEvent(goOn);
        EXPECT_TRUE(WaitForMessages([this] { return !IsWorking(stage); }));
        EXPECT_FALSE(IsProgressShown()) << title;
    }
}

TEST_F(WorkBesideWindow, Stop_leaves_work_that_looks_at_nothing_and_the_next_begins) {
    bool isFinished = false;
    std::atomic<bool> hasEnded{false};
    ASSERT_TRUE(StartWork(
        &stage, "first",
        [&](Work*) {
            WaitForSingleObject(goOn, INFINITE);
            hasEnded = true;
        },
        [&](Stage*) { isFinished = true; }, WhenStopped::IsLeft));
    SendMessageW(stage.window, WM_COMMAND, kStopWork, 0);
    EXPECT_FALSE(IsWorking(stage));
    EXPECT_FALSE(hasEnded);
    EXPECT_FALSE(IsProgressShown());
    EXPECT_EQ(stage.controls.lasting, "Stopped.");
    SetEvent(goOn);
    EXPECT_TRUE(WaitForMessages([&] { return hasEnded.load(); }));
    ASSERT_TRUE(StartWork(
        &stage, "second", [](Work*) {}, [](Stage*) {}));
    EXPECT_TRUE(WaitForMessages([this] { return !IsWorking(stage); }));
    EXPECT_FALSE(isFinished);
}

TEST_F(WorkBesideWindow, Stop_while_a_file_is_made_leaves_the_earlier_file) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "a.gif";
    WriteText(path, "earlier");
    bool written = true;
    std::string error;
    ASSERT_TRUE(StartWork(
        &stage, "writing",
        [&](Work*) {
            const auto make = [this](size_t, std::vector<uint8_t>* content, std::string*) {
                WaitForSingleObject(goOn, INFINITE);
                content->assign(3, 'x');
                return true;
            };
            written = WriteWholeFiles({path}, make, &error);
        },
        [](Stage*) {}, WhenStopped::IsLeft));
    StopWork(&stage);
    EXPECT_FALSE(IsWorking(stage));
    SetEvent(goOn);
    ASSERT_EQ(WaitForSingleObject(stage.work.leftThreads.front(), INFINITE), WAIT_OBJECT_0);
    EXPECT_FALSE(written);
    EXPECT_EQ(ReadText(path), "earlier");
    EXPECT_EQ(FilesIn(folder.path), std::vector<std::string>{"a.gif"});
}

TEST_F(WorkBesideWindow, The_key_that_stops_works_while_the_window_waits) {
    ASSERT_TRUE(StartWork(
        &stage, "waiting", [this](Work*) { WaitForSingleObject(goOn, INFINITE); }, [](Stage*) {},
        WhenStopped::IsLeft));
    PostMessageW(stage.controls.canvas, WM_KEYDOWN, VK_ESCAPE, 0);
    WaitForWork(&stage);
    EXPECT_FALSE(IsWorking(stage));
    EXPECT_EQ(WaitForSingleObject(stage.work.leftThreads.front(), 0), DWORD{WAIT_TIMEOUT});
}

std::wstring toldText;

HANDLE WINAPI RefuseThread(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD, DWORD*) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

Progress* watched = nullptr;
decltype(&CreateThread) createThread = nullptr;  // the system's

// A thread that is far ahead of the one that starts it.
HANDLE WINAPI StartAhead(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                         void* parameter, DWORD flags, DWORD* id) {
    const HANDLE thread = createThread(security, stack, start, parameter, flags, id);
    EXPECT_TRUE(WaitFor([] { return watched->total == 4; }));
    return thread;
}

int WINAPI TakeText(HWND, LPCWSTR text, LPCWSTR, UINT) {
    toldText = text;
    return IDOK;
}

TEST_F(WorkBesideWindow, What_the_work_notes_before_its_start_has_returned_stays) {
    watched = &stage.work.progress;
    {
        const ImportPatch threads(GetModuleHandleW(nullptr), "CreateThread", AddressOfFunction(StartAhead));
        ASSERT_NE(threads.original, nullptr);
        createThread = reinterpret_cast<decltype(&CreateThread)>(threads.original);
        ASSERT_TRUE(StartWaiting("first"));
    }
    EXPECT_EQ(stage.work.progress.done, 3);
    EXPECT_TRUE(WaitForMessages([this] {
        return IsProgressShown() && SendMessageW(stage.controls.progress, PBM_GETPOS, 0, 0) == 3;
    }));
}

TEST_F(WorkBesideWindow, Work_that_cannot_be_started_is_told_with_the_reason) {
    const HMODULE program = GetModuleHandleW(nullptr);
    const ImportPatch messages(program, "MessageBoxW", AddressOfFunction(TakeText));
    ASSERT_NE(messages.original, nullptr);
    toldText.clear();
    {
        const ImportPatch threads(program, "CreateThread", AddressOfFunction(RefuseThread));
        ASSERT_NE(threads.original, nullptr);
        EXPECT_FALSE(StartWaiting("first"));
    }
    EXPECT_NE(toldText.find(L"first: this cannot be started"), std::wstring::npos);
    EXPECT_FALSE(IsWorking(stage));
    EXPECT_FALSE(IsProgressShown());
    ASSERT_TRUE(StartWaiting("second"));
    toldText.clear();
    EXPECT_FALSE(StartWaiting("third"));
    EXPECT_NE(toldText.find(L"third: start this once"), std::wstring::npos);
}

}  // namespace
}  // namespace kfx::test
