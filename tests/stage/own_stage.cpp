// SPDX-License-Identifier: MIT
#include "tests/stage/own_stage.h"

#include <cstring>

#include <shellapi.h>
#include <shlobj.h>

#include "commands/text_windows.h"
#include "stage/stage_window.h"

namespace kfx::test {
namespace {

// A box with Stage's title has the answer "No", or only "OK".
void DismissBox() {
    const HWND box = DialogOf(GetCurrentProcessId(), "Kestrel Stage");
    if (!box) return;
    PostMessageA(box, WM_COMMAND, GetDlgItem(box, IDNO) ? IDNO : IDOK, 0);
}

}  // namespace

void OwnStage::TearDown() {
    if (!thread.joinable()) return;
    PostMessageA(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(WaitFor([this] {
        DismissBox();
        return !IsWindow(window);
    }));
    thread.join();
    UnregisterClassA("KestrelStage", GetModuleHandleA(nullptr));
}

void OwnStage::OpenHere(const std::vector<std::string>& files) {
    stage.processId = GetCurrentProcessId();
    thread = std::thread([files] { stage::RunStageWindow(files); });
    ASSERT_TRUE(WaitFor([this] {
        window = FindWindowA("KestrelStage", nullptr);
        return window && IsWindowVisible(window);
    }));
}

void OwnStage::Drop(HWND target, const std::vector<std::string>& files) {
    ASSERT_TRUE(WaitFor([target] { return (GetWindowLongA(target, GWL_EXSTYLE) & WS_EX_ACCEPTFILES) != 0; }));
    std::wstring names;
    for (const std::string& file : files) names += commands::Widen(file) + L'\0';
    names += L'\0';
    const size_t bytes = names.size() * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(DROPFILES) + bytes);
    ASSERT_NE(memory, nullptr);
    auto* drop = static_cast<DROPFILES*>(GlobalLock(memory));
    drop->pFiles = sizeof(DROPFILES);
    drop->fWide = TRUE;
    std::memcpy(drop + 1, names.data(), bytes);
    GlobalUnlock(memory);
    ASSERT_TRUE(PostMessageW(target, WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0));
}

}  // namespace kfx::test
