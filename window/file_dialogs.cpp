// SPDX-License-Identifier: MIT
#include "window/file_dialogs.h"

#include <cderr.h>
#include <commdlg.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "host/floating_point_state.h"
#include "window/dialog_services.h"
#include "window/paths.h"
#include "window/plugin_state.h"
#include "window/plugin_window.h"
#include "window/push_buttons.h"

namespace kfx {
namespace {

constexpr int32_t kSmallestSide = 128;  // a smaller remembered size is ignored

WNDPROC fileDialogProcedure = nullptr;  // the system's, while a dialog is open

// Buttons with a look are drawn by their dialog, and the system's dialog cannot draw ours.
LRESULT CALLBACK DressedDialogProcedure(HWND dialog, UINT message, WPARAM word, LPARAM data) {
    if (message == WM_DRAWITEM && DrawPushButton(*reinterpret_cast<const DRAWITEMSTRUCT*>(data))) return TRUE;
    return CallWindowProcA(fileDialogProcedure, dialog, message, word, data);
}

void Dress(HWND dialog) {
    GiveButtonLook(dialog, IDOK);
    GiveButtonLook(dialog, IDCANCEL);
    fileDialogProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(dialog, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(DressedDialogProcedure)));
}

void Place(HWND dialog) {
    if (plugin.fileDialogWidth >= kSmallestSide && plugin.fileDialogHeight >= kSmallestSide) {
        const int width = std::min(plugin.fileDialogWidth, GetSystemMetrics(SM_CXSCREEN));
        const int height = std::min(plugin.fileDialogHeight, GetSystemMetrics(SM_CYSCREEN));
        SetWindowPos(dialog, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    CenterOnScreen(dialog);
}

void RememberSize(HWND dialog) {
    RECT place;
    if (!GetWindowRect(dialog, &place)) return;
    plugin.fileDialogWidth = place.right - place.left;
    plugin.fileDialogHeight = place.bottom - place.top;
}

// The hook gets the messages of an empty dialog that is a child of the system's.
UINT_PTR CALLBACK FileDialogHook(HWND inside, UINT message, WPARAM, LPARAM) {
    const HWND dialog = GetParent(inside);
    switch (message) {
        case WM_INITDIALOG:
            Dress(dialog);
            // The system still arranges its dialog after this message.
            PostMessageA(inside, kWindowMessage, 0, 0);
            break;
        case kWindowMessage:
            Place(dialog);
            break;
        case WM_DESTROY:
            RememberSize(dialog);
            break;
    }
    return 0;
}

bool AskPath(HWND owner, char* path, DWORD flags, BOOL(WINAPI* ask)(LPOPENFILENAMEA)) {
    char folder[kTextBytes];
    std::snprintf(folder, sizeof folder, "%.*s", static_cast<int>(FileNameIn(path) - path), path);
    char chosen[MAX_PATH] = "";
    std::snprintf(chosen, sizeof chosen, "%s", path);
    OPENFILENAMEA request = {};
    request.lStructSize = sizeof request;
    request.hwndOwner = owner;
    request.hInstance = plugin.module;
    request.lpstrFilter = "KX1 files\0*.KX1\0";
    request.lpstrFile = chosen;
    request.nMaxFile = sizeof chosen;
    request.lpstrInitialDir = folder[0] ? folder : settings.openPath;
    request.lpstrDefExt = "KX1";
    request.Flags =
        OFN_ENABLESIZING | OFN_EXPLORER | OFN_ENABLEHOOK | OFN_NOCHANGEDIR | OFN_HIDEREADONLY | flags;
    request.lpfnHook = FileDialogHook;
    const auto askAsHost = [ask](OPENFILENAMEA* dialog) {
        const HostFloatingPoint turn;
        return ask(dialog);
    };
    if (!askAsHost(&request)) {
        if (CommDlgExtendedError() != FNERR_INVALIDFILENAME) return false;
        // The dialog did not open with this name: the user can still choose another.
        if (!IsOpen(owner)) return false;
        chosen[0] = 0;
        if (!askAsHost(&request)) return false;
    }
    std::snprintf(path, kTextBytes, "%s", chosen);
    return true;
}

}  // namespace

bool AskDocumentToOpen(HWND owner, char* path) {
    return AskPath(owner, path, OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST, GetOpenFileNameA);
}

bool AskDocumentToSave(HWND owner, char* path) {
    return AskPath(owner, path, OFN_OVERWRITEPROMPT, GetSaveFileNameA);
}

void RememberFileDialogSize(uint32_t width, uint32_t height) {
    const auto clamp = [](uint32_t side, int screen) {
        return static_cast<int32_t>(std::min(side, static_cast<uint32_t>(screen)));
    };
    plugin.fileDialogWidth = clamp(width, GetSystemMetrics(SM_CXSCREEN));
    plugin.fileDialogHeight = clamp(height, GetSystemMetrics(SM_CYSCREEN));
}

}  // namespace kfx
