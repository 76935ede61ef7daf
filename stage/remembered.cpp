// SPDX-License-Identifier: MIT
#include "stage/remembered.h"

#include "commands/text_windows.h"
#include "driven/settings_folder.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr wchar_t kSection[] = L"Stage";

std::wstring FilePath() { return Widen(SettingsFolder()) + L"kestrel-stage.ini"; }

// The numbers of the file, each with its key: reading and writing go through this one list.
template <typename Action>
void ForEachNumber(Remembered* remembered, LONG* maximized, Action action) {
    action(L"Left", &remembered->window.left);
    action(L"Top", &remembered->window.top);
    action(L"Right", &remembered->window.right);
    action(L"Bottom", &remembered->window.bottom);
    action(L"Maximized", maximized);
    action(L"PluginWidth", &remembered->pluginWindow.cx);
    action(L"PluginHeight", &remembered->pluginWindow.cy);
}

}  // namespace

Remembered ReadRemembered() {
    const std::wstring path = FilePath();
    Remembered remembered;
    LONG maximized = 0;
    ForEachNumber(&remembered, &maximized, [&path](const wchar_t* key, LONG* number) {
        *number = static_cast<LONG>(GetPrivateProfileIntW(kSection, key, 0, path.c_str()));
    });
    remembered.maximized = maximized != 0;
    wchar_t folder[4096];
    GetPrivateProfileStringW(kSection, L"Folder", L"", folder, 4096, path.c_str());
    remembered.folder = Narrow(folder);
    return remembered;
}

void WriteRemembered(const Remembered& remembered) {
    MakeSettingsFolder();
    const std::wstring path = FilePath();
    Remembered copy = remembered;
    LONG maximized = remembered.maximized ? 1 : 0;
    ForEachNumber(&copy, &maximized, [&path](const wchar_t* key, const LONG* number) {
        WritePrivateProfileStringW(kSection, key, std::to_wstring(*number).c_str(), path.c_str());
    });
    WritePrivateProfileStringW(kSection, L"Folder", Widen(remembered.folder).c_str(), path.c_str());
}

}  // namespace kfx::stage
