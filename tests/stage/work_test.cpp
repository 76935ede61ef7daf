// SPDX-License-Identifier: MIT
// Work beside the window, in a window of the test's own.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include "stage/command_ids.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using namespace stage;

constexpr wchar_t kClassName[] = L"KestrelWorkTest";

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == kProgressNoted) ShowProgress(StageOf(window));
    if (message == kWorkDone) OnWorkDone(StageOf(window));
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
        MakeControls(&stage);
        UpdateControls(&stage);
    }

    void TearDown() override {
        SetEvent(goOn);
        WaitForWork(&stage);
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

}  // namespace
}  // namespace kfx::test
