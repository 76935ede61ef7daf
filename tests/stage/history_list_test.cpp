// SPDX-License-Identifier: MIT
// The list of steps, in a window of the test's own.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include "stage/stage.h"
#include "tests/stage/small_films.h"

namespace kfx::test {
namespace {

using namespace stage;

constexpr wchar_t kClassName[] = L"KestrelListTest";

int changes = 0;  // rows that came or went

LRESULT CALLBACK CountChanges(HWND window, UINT message, WPARAM word, LPARAM pointer, UINT_PTR, DWORD_PTR) {
    if (message == LB_RESETCONTENT || message == LB_ADDSTRING || message == LB_DELETESTRING) ++changes;
    return DefSubclassProc(window, message, word, pointer);
}

struct HistoryList : ::testing::Test {
    Stage stage;

    void SetUp() override {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = DefWindowProcW;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = kClassName;
        RegisterClassW(&windowClass);
        stage.window = CreateWindowW(kClassName, L"", WS_OVERLAPPEDWINDOW, 0, 0, 300, 300, nullptr, nullptr,
                                     windowClass.hInstance, nullptr);
        stage.controls.history =
            CreateWindowW(L"LISTBOX", L"", WS_CHILD | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS, 0, 0, 200, 200,
                          stage.window, nullptr, windowClass.hInstance, nullptr);
        ASSERT_NE(stage.controls.history, nullptr);
        SetWindowSubclass(stage.controls.history, CountChanges, 1, 0);
        StartHistory(&stage.history, StepNamed("Opened"));
        for (const char* name : {"Emboss", "Swirl"}) Add(name, 1 << 30);
        Update();
    }

    void TearDown() override { DestroyWindow(stage.window); }

    Step StepNamed(const char* name) {
        Step step;
        step.name = name;
        step.film = SmallFilm({50}, {7}, stage.document.pool.get());
        return step;
    }

    void Add(const char* name, uint64_t mostBytes) { AddStep(&stage.history, StepNamed(name), mostBytes); }

    int Update() {
        changes = 0;
        UpdateHistoryList(stage);
        return changes;
    }

    std::string Rows() const {
        std::string rows;
        const LRESULT count = SendMessageA(stage.controls.history, LB_GETCOUNT, 0, 0);
        for (LRESULT row = 0; row < count; ++row) {
            char text[100] = "";
            SendMessageA(stage.controls.history, LB_GETTEXT, static_cast<WPARAM>(row),
                         reinterpret_cast<LPARAM>(text));
            rows += std::string(rows.empty() ? "" : ", ") + text;
        }
        return rows;
    }

    LRESULT Selected() const { return SendMessageA(stage.controls.history, LB_GETCURSEL, 0, 0); }
};

TEST_F(HistoryList, Changes_no_row_while_the_steps_are_the_same) {
    EXPECT_EQ(Rows(), "Opened, Emboss, Swirl");
    EXPECT_EQ(Selected(), 2);
    EXPECT_EQ(Update(), 0);
    stage.history.current = 1;
    EXPECT_EQ(Update(), 0);
    EXPECT_EQ(Selected(), 1);
}

TEST_F(HistoryList, Changes_only_the_rows_of_steps_that_come_and_go) {
    stage.history.current = 1;
    Add("Swirl", 1 << 30);
    EXPECT_EQ(Update(), 2) << "an undone step went, another one of the same name came";
    EXPECT_EQ(Rows(), "Opened, Emboss, Swirl");
    Add("Bump", 0);
    EXPECT_EQ(Rows(), "Opened, Emboss, Swirl");
    Update();
    EXPECT_EQ(Rows(), "Opened, Bump") << "the oldest ones went";
    EXPECT_EQ(Selected(), 1);
    StartHistory(&stage.history, StepNamed("Opened"));
    Update();
    EXPECT_EQ(Rows(), "Opened");
}

}  // namespace
}  // namespace kfx::test
