// SPDX-License-Identifier: MIT
// How the window drives the effects: a table of the test's own stands in the place of the effect table and
// records each call.
#include <gtest/gtest.h>
#include <windows.h>
#include <shlobj.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "effects/effect_table.h"
#include "framework/source_animation.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/dialog_thread.h"
#include "tests/dll/support/idle_owner.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/fake_host.h"
#include "tests/support/import_patch.h"
#include "tests/support/pictures.h"
#include "tests/support/wait_for.h"
#include "window/plugin_state.h"
#include "window/plugin_window.h"

namespace kfx {
namespace {

constexpr size_t kRows = 3;

std::mutex callsMutex;
std::vector<std::string> calls;
size_t failingRow = kRows;
RECT previewSize;

void Record(size_t row, const std::string& call, void* window) {
    const std::lock_guard<std::mutex> lock(callsMutex);
    calls.push_back(std::to_string(row) + " " + call +
                    (window == plugin.window ? "" : " of a strange window"));
}

std::vector<std::string> TakeCalls() {
    const std::lock_guard<std::mutex> lock(callsMutex);
    std::vector<std::string> taken;
    taken.swap(calls);
    return taken;
}

template <size_t kRow>
int32_t Initialize(EffectInitContext* context) {
    const bool zero = !context->zero[0] && !context->zero[1] && !context->zero[2];
    Record(kRow, zero ? "init" : "init with more than the window", context->window);
    return kRow != failingRow;
}

template <size_t kRow>
int32_t Preview(EffectRunContext* context) {
    const bool zero = !context->image && !context->flags;
    Record(kRow, zero ? "preview" : "preview with more than its size", context->window);
    previewSize = {0, 0, context->width, context->height};
    return 1;
}

template <size_t kRow>
int32_t Notify(void* window, uint32_t code) {
    Record(kRow, "notify " + std::to_string(code), window);
    return 1;
}

constexpr uint32_t kNoControls[] = {0};

template <size_t kRow>
constexpr EffectDescriptor MakeRow(const char* name) {
    return {name, Initialize<kRow>, Preview<kRow>, nullptr, nullptr, Notify<kRow>, kNoControls, nullptr};
}

constexpr EffectDescriptor kTable[kRows] = {MakeRow<0>("First"), MakeRow<1>("Second"), MakeRow<2>("Third")};

// What has been called once the window has nothing left to do or to paint.
std::vector<std::string> WaitForCalls() {
    EXPECT_TRUE(test::SettleIdleDialog());
    return TakeCalls();
}

// The shell knows no folders, so that no user's file is read or written.
HRESULT WINAPI FindNoFolder(HWND, int, LPITEMIDLIST*) { return E_FAIL; }

class OpenWindow {
public:
    explicit OpenWindow(test::FakeHost& host)
        : noFolders_(GetModuleHandleA(nullptr), "SHGetSpecialFolderLocation",
                     test::AddressOfFunction(FindNoFolder)) {
        plugin.module = GetModuleHandleA(nullptr);
        EXPECT_TRUE(test::StartDialog(
            [&host, result = result_](HWND owner) { *result = RunPluginWindow(owner, &host.context); }));
    }
    ~OpenWindow() {
        if (!closed_) Close();
        plugin = {};
        settings = {};
    }
    OpenWindow(const OpenWindow&) = delete;
    OpenWindow& operator=(const OpenWindow&) = delete;

    // Once it has handled what it posted to itself.
    HWND Window() const { return test::WaitForIdleDialog(); }

    void Command(int id, int notification = 0) const {
        SendMessageA(Window(), WM_COMMAND, MAKEWPARAM(id, notification),
                     reinterpret_cast<LPARAM>(GetDlgItem(Window(), id)));
    }

    void Select(int effect) const {
        SendDlgItemMessageA(Window(), IDC_EFFECT, CB_SETCURSEL, static_cast<WPARAM>(effect), 0);
        WaitForCalls();
    }

    INT_PTR Close() {
        Command(IDC_CANCEL);
        return WaitUntilClosed();
    }

    INT_PTR WaitUntilClosed() {
        closed_ = true;
        EXPECT_TRUE(test::WaitUntilDialogEnds()) << "the window does not close";
        return *result_;
    }

private:
    const test::ImportPatch noFolders_;
    const std::shared_ptr<INT_PTR> result_ = std::make_shared<INT_PTR>(-1);
    bool closed_ = false;
};

// Takes this program's message box; other test programs may show theirs beside it.
BOOL CALLBACK TakeOwnMessage(HWND window, LPARAM found) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    char caption[20] = "";
    GetWindowTextA(window, caption, sizeof caption);
    // Visible: filled in.
    if (process != GetCurrentProcessId() || std::string(caption) != "Message" || !IsWindowVisible(window))
        return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

// Waits for a message box, closes it and answers its text; empty when none comes.
std::string AnswerMessage() {
    HWND box = nullptr;
    test::WaitFor([&box] {
        EnumWindows(TakeOwnMessage, reinterpret_cast<LPARAM>(&box));
        return box != nullptr;
    });
    if (!box) return "";
    char text[300] = "";
    GetDlgItemTextA(box, IDC_MESSAGE_TEXT, text, sizeof text);
    PostMessageA(box, WM_COMMAND, IDC_MESSAGE_OK, 0);
    return text;
}

class EffectProtocol : public testing::Test {
protected:
    void SetUp() override {
        settings = {};
        settings.mainEffect = 1;
        failingRow = kRows;
        TakeCalls();
    }

    test::FakeHost host;
};

using Calls = std::vector<std::string>;

TEST_F(EffectProtocol, Every_row_is_initialized_in_order_and_the_current_one_shown) {
    const OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    const Calls made = WaitForCalls();
    ASSERT_GE(made.size(), 4u);
    EXPECT_EQ(Calls(made.begin(), made.begin() + 3), (Calls{"0 init", "1 init", "2 init"}));
    for (size_t i = 3; i < made.size(); ++i) EXPECT_EQ(made[i], "1 preview");
    char name[20] = "";
    SendDlgItemMessageA(window.Window(), IDC_EFFECT, CB_GETLBTEXT, 2, reinterpret_cast<LPARAM>(name));
    EXPECT_STREQ(name, "Third");
}

TEST_F(EffectProtocol, The_preview_is_asked_for_the_size_between_the_margins) {
    const OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    WaitForCalls();
    RECT area;
    GetClientRect(GetDlgItem(window.Window(), IDC_PREVIEW), &area);
    EXPECT_EQ(previewSize.right, area.right - 8);
    EXPECT_EQ(previewSize.bottom, area.bottom - 8);
}

TEST_F(EffectProtocol, The_old_effect_is_told_before_and_the_new_one_after_it_is_shown) {
    const OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    window.Select(2);
    window.Command(IDC_EFFECT, CBN_CLOSEUP);
    EXPECT_EQ(TakeCalls(), (Calls{"1 notify 1", "2 preview", "2 notify 2"}));
    EXPECT_EQ(settings.mainEffect, 2u);
    window.Command(IDC_EFFECT, CBN_CLOSEUP);
    EXPECT_EQ(TakeCalls(), Calls());
}

TEST_F(EffectProtocol, A_key_on_the_closed_list_is_told_like_a_close_up) {
    const OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    WaitForCalls();
    const HWND list = GetDlgItem(window.Window(), IDC_EFFECT);
    SendMessageA(list, WM_KEYDOWN, VK_DOWN, 1);
    EXPECT_EQ(TakeCalls(), (Calls{"1 notify 1", "2 preview", "2 notify 2"}));
    SendMessageA(list, WM_KEYDOWN, VK_DOWN, 1);
    EXPECT_EQ(TakeCalls(), Calls()) << "there is no further row";
    SendMessageA(list, WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA), 0);
    EXPECT_EQ(TakeCalls(), (Calls{"2 notify 1", "1 preview", "1 notify 2"}));
}

TEST_F(EffectProtocol, A_choice_in_an_open_list_is_drawn_but_stored_and_told_only_when_it_closes) {
    const OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    WaitForCalls();
    const HWND list = GetDlgItem(window.Window(), IDC_EFFECT);
    SendMessageA(list, CB_SHOWDROPDOWN, TRUE, 0);
    SendMessageA(list, WM_KEYDOWN, VK_HOME, 1);
    ASSERT_EQ(SendMessageA(list, CB_GETCURSEL, 0, 0), 0);
    for (const std::string& call : WaitForCalls()) EXPECT_EQ(call.find("notify"), std::string::npos) << call;
    EXPECT_EQ(settings.mainEffect, 1u);
    SendMessageA(window.Window(), WM_TIMER, 15, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"0 preview", "1 notify 3"}));
    EXPECT_EQ(settings.mainEffect, 1u);
    SendMessageA(list, CB_SHOWDROPDOWN, FALSE, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"1 notify 1", "0 preview", "0 notify 2"}));
    EXPECT_EQ(settings.mainEffect, 0u);
}

TEST_F(EffectProtocol, The_update_timer_and_a_new_source_tell_the_current_effect_of_a_change) {
    host.Serve(test::MakeAnimationBlock({{test::BytesOf(test::RandomPicture(3, 3, 4).handle)}}));
    const OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    WaitForCalls();
    SendMessageA(window.Window(), WM_TIMER, 15, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"1 preview", "1 notify 3"}));
    window.Command(IDC_SELECT);
    EXPECT_EQ(TakeCalls(), (Calls{"1 preview", "1 notify 3"}));
}

TEST_F(EffectProtocol, A_refused_source_tells_nobody) {
    const OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    WaitForCalls();
    window.Command(IDC_SELECT);
    EXPECT_EQ(TakeCalls(), Calls());
}

TEST_F(EffectProtocol, The_current_effect_is_told_when_the_window_goes) {
    OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    WaitForCalls();
    EXPECT_EQ(window.Close(), 0);
    EXPECT_EQ(TakeCalls(), Calls{"1 notify 1"});
}

TEST_F(EffectProtocol, An_effect_beyond_the_table_is_told_nothing) {
    settings.mainEffect = kRows;
    OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    EXPECT_EQ(WaitForCalls(), (Calls{"0 init", "1 init", "2 init"}));
    SendMessageA(window.Window(), WM_TIMER, 15, 0);
    window.Close();
    EXPECT_EQ(TakeCalls(), Calls());
}

TEST_F(EffectProtocol, A_row_that_cannot_be_initialized_closes_the_window_with_a_message) {
    failingRow = 1;
    OpenWindow window(host);
    EXPECT_EQ(AnswerMessage(), "This plugin could not be initialized");
    EXPECT_EQ(window.WaitUntilClosed(), 0);
    const Calls made = TakeCalls();
    ASSERT_GE(made.size(), 2u);
    EXPECT_EQ(made[0], "0 init");
    EXPECT_EQ(made[1], "1 init");
    EXPECT_EQ(std::count(made.begin(), made.end(), "2 init"), 0);
}

TEST_F(EffectProtocol, A_build_closes_the_window_with_1_whatever_came_of_it) {
    OpenWindow window(host);
    ASSERT_TRUE(window.Window());
    window.Select(-1);
    PostMessageA(window.Window(), WM_COMMAND, IDC_BUILD, 0);
    EXPECT_EQ(AnswerMessage(), "Memory error");
    EXPECT_EQ(window.WaitUntilClosed(), 1);
}

}  // namespace

const Effect* EffectAt(size_t) { return nullptr; }

const EffectDescriptor* DescriptorAt(size_t index) { return index < kRows ? &kTable[index] : nullptr; }

size_t EffectCount() { return kRows; }

}  // namespace kfx
