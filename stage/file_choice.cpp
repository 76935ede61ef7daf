// SPDX-License-Identifier: MIT
#include "stage/file_choice.h"

#include <commdlg.h>

#include "commands/command_line.h"
#include "commands/text_windows.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr DWORD kLongestPath = 4096;
constexpr wchar_t kOpenFilter[] =
    L"Animations and pictures\0*.gif;*.webp;*.png;*.jpg;*.jpeg;*.bmp\0All files\0*.*\0";
constexpr wchar_t kSaveFilter[] =
    L"GIF animation\0*.gif\0WebP animation, all colours\0*.webp\0PNG frames, all colours\0*.png\0";
constexpr const char* kSaveEndings[] = {".gif", ".webp", ".png"};

void PutPath(const std::string& path, wchar_t* buffer) {
    const std::wstring wide = Widen(path);
    if (wide.size() < kLongestPath) lstrcpyW(buffer, wide.c_str());
}

}  // namespace

bool ChooseAnimationToOpen(HWND owner, const std::string& folder, std::string* path) {
    wchar_t buffer[kLongestPath] = L"";
    const std::wstring start = Widen(folder);
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = kOpenFilter;
    dialog.lpstrFile = buffer;
    dialog.nMaxFile = kLongestPath;
    dialog.lpstrInitialDir = start.empty() ? nullptr : start.c_str();
    dialog.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!GetOpenFileNameW(&dialog)) return false;
    *path = Narrow(buffer);
    return true;
}

bool ChooseFileToSave(HWND owner, std::string* path) {
    wchar_t buffer[kLongestPath] = L"";
    PutPath(*path, buffer);
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = kSaveFilter;
    dialog.lpstrFile = buffer;
    dialog.nMaxFile = kLongestPath;
    dialog.lpstrDefExt = L"gif";
    dialog.Flags =
        OFN_EXPLORER | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!GetSaveFileNameW(&dialog)) return false;
    *path = Narrow(buffer);
    const std::string ending = EndingOf(*path);
    for (const char* known : kSaveEndings) {
        if (ending == known) return true;
    }
    *path += kSaveEndings[dialog.nFilterIndex >= 1 && dialog.nFilterIndex <= 3 ? dialog.nFilterIndex - 1 : 0];
    return true;
}

bool ChooseColorFrom(HWND owner, const uint8_t* palette, uint32_t* color) {
    COLORREF offered[16];
    for (size_t i = 0; i < 16; ++i) {
        const uint8_t* triple = palette + 3 * (17 * i);  // evenly spread, first and last included
        offered[i] = RGB(triple[0], triple[1], triple[2]);
    }
    CHOOSECOLORW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.rgbResult = *color & 0xFFFFFF;
    dialog.lpCustColors = offered;
    dialog.Flags = CC_RGBINIT | CC_FULLOPEN;
    if (!ChooseColorW(&dialog)) return false;
    *color = dialog.rgbResult;
    return true;
}

}  // namespace kfx::stage
