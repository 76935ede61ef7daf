// SPDX-License-Identifier: MIT
#include "tests/stage/stage_program.h"

#include "commands/text_windows.h"

namespace kfx::test {
namespace {

constexpr int kFileName = 0x480;             // the field of a file dialog
constexpr int kFileNameList = 0x47C;         // or the list that holds it
constexpr UINT kAnswerMilliseconds = 10000;  // until the text is asked for once more

HWND FileNameField(HWND dialog) {
    const HWND field = GetDlgItem(dialog, kFileName);
    return field ? field : GetDlgItem(dialog, kFileNameList);
}

}  // namespace

std::string TextOf(HWND window) {
    constexpr WPARAM kLongest = 600;
    wchar_t text[kLongest] = L"";
    SendMessageTimeoutW(window, WM_GETTEXT, kLongest, reinterpret_cast<LPARAM>(text), SMTO_NORMAL,
                        kAnswerMilliseconds, nullptr);
    return commands::Narrow(text);
}

void Press(HWND window, int button) {
    PostMessageA(window, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(window, button)));
}

HWND DialogOf(DWORD process, const char* title) {
    for (HWND dialog = nullptr; (dialog = FindWindowExA(nullptr, dialog, "#32770", title)) != nullptr;) {
        DWORD owner = 0;
        GetWindowThreadProcessId(dialog, &owner);
        const bool isMeant = title || FileNameField(dialog);
        if (owner == process && isMeant && IsWindowVisible(dialog)) return dialog;
    }
    return nullptr;
}

void StageWindow::Open(const std::vector<std::string>& files, const std::string& program) {
    ASSERT_TRUE(StartProgram(program, files, &stage));
    ASSERT_TRUE(WaitFor([this] {
        window = FindWindowA("KestrelStage", nullptr);
        return window && IsWindowVisible(window);
    }));
}

bool StageWindow::WaitForTitle(const std::string& title) const {
    return WaitFor([&] { return TextOf(window) == title; });
}

bool StageWindow::WaitForText(int control, const std::string& text) const {
    return WaitFor([&] { return TextOf(Control(control)) == text; });
}

bool StageWindow::WaitForPossible(int command) const {
    return WaitFor([&] { return IsPossible(command); });
}

void StageWindow::WaitForDialog(const char* title, HWND* dialog) const {
    ASSERT_TRUE(WaitFor([&] { return (*dialog = DialogOf(stage.processId, title)) != nullptr; }))
        << (title ? title : "a file dialog");
}

void StageWindow::OpenPlugin(HWND* plugin) const {
    Run(stage::kEffects);
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel FX #1", plugin));
    ASSERT_TRUE(WaitFor([plugin] { return TextOf(GetDlgItem(*plugin, kPluginSize)) == "40 x 30"; }))
        << "Stage's source is opened without asking";
}

void StageWindow::SelectEffect(HWND plugin, const std::string& effect) {
    const HWND list = GetDlgItem(plugin, kPluginEffect);
    SendMessageA(list, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(effect.c_str()));
    SendMessageA(plugin, WM_COMMAND, MAKEWPARAM(kPluginEffect, CBN_CLOSEUP), reinterpret_cast<LPARAM>(list));
}

void StageWindow::Build(const std::string& effect) const {
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    SelectEffect(plugin, effect);
    Press(plugin, kPluginBuild);
    ASSERT_TRUE(WaitForText(stage::kUndo, "Undo " + effect));
    ASSERT_TRUE(WaitForPossible(stage::kUndo)) << "the plug-in's window is closed";
}

void StageWindow::ChooseFile(const std::string& path) const {
    HWND dialog = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog(nullptr, &dialog));
    const HWND name = FileNameField(dialog);
    ASSERT_TRUE(WaitFor([name, &path] {
        SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(commands::Widen(path).c_str()));
        return TextOf(name) == path;
    }));
    Press(dialog, IDOK);
}

std::string MessageOf(HWND box) {
    constexpr int kText = 0xFFFF;
    return TextOf(GetDlgItem(box, kText));
}

std::string StageWindow::MessageText() const {
    HWND box = nullptr;
    WaitFor([&] { return (box = DialogOf(stage.processId, "Kestrel Stage")) != nullptr; });
    return box ? MessageOf(box) : "";
}

void StageWindow::AnswerMessage(int button) const {
    HWND box = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &box));
    PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    // Another one may come up at once.
    ASSERT_TRUE(WaitFor([box] { return !IsWindow(box); }));
}

void StageWindow::Close(bool isUnsaved) {
    PostMessageA(window, WM_CLOSE, 0, 0);
    if (isUnsaved) {
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    }
    EXPECT_EQ(WaitForEnd(&stage), 0);
}

}  // namespace kfx::test
