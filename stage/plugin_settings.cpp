// SPDX-License-Identifier: MIT
// The controls of the plug-in's window as lines of a settings document. The plug-in's controls understand two
// messages of the documents: the one by which a line is applied is used here; the one for writing takes an
// open file, which must not pass from one module to another.
#include <cstdlib>

#include <windows.h>

#include "driven/plugin_controls.h"
#include "stage/plugin_opening.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr UINT kApplyLine = 1335;      // LPARAM: the line
constexpr UINT kBringUpToDate = 1224;  // with 1: the window shows what its controls say
constexpr size_t kKindLength = 6;

bool IsClass(HWND control, const char* name) { return lstrcmpiA(ControlClass(control).c_str(), name) == 0; }

// The kind word and the value of a control; an empty kind: it takes no part, or names a file.
struct ControlValue {
    const char* kind;
    std::string value;
};

ControlValue ValueOf(HWND control) {
    const LONG type = GetWindowLongA(control, GWL_STYLE) & BS_TYPEMASK;
    if (IsClass(control, "ScrollBar"))
        return {"SCROLL", std::to_string(SendMessageA(control, SBM_GETPOS, 0, 0))};
    if (IsClass(control, "ComboBox"))
        return {"CMBBOX", std::to_string(SendMessageA(control, CB_GETCURSEL, 0, 0))};
    if (IsClass(control, "Button") && (type == BS_CHECKBOX || type == BS_AUTOCHECKBOX))
        return {"CHKBOX", std::to_string(SendMessageA(control, BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0)};
    if (GetDlgCtrlID(control) == kBackgroundButton) return {"CLRBTN", ControlText(control)};
    return {"", ""};
}

}  // namespace

SettingsDocument ReadPluginSettings(HWND window) {
    SettingsDocument settings;
    settings.hasEveryBox = true;
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const ControlValue value = ValueOf(child);
        const int id = GetDlgCtrlID(child);
        if (!*value.kind || id <= 0) continue;
        settings.lines.push_back({id, value.kind + std::to_string(id) + "=" + value.value});
    }
    return settings;
}

void ApplyPluginSettings(HWND window, const SettingsDocument& settings) {
    if (settings.lines.empty()) return;
    for (const ControlLine& line : settings.lines) {
        const HWND control = GetDlgItem(window, line.id);
        // The source's path is not the settings' to say.
        if (!control || line.text.compare(0, kKindLength, "TXTFLD") == 0) continue;
        // One box of the plug-in's takes no line.
        if (line.text.compare(0, kKindLength, "CHKBOX") == 0)
            SendMessageA(control, BM_SETCHECK, line.text.back() == '1' ? BST_CHECKED : BST_UNCHECKED, 0);
        std::string text = line.text;
        SendMessageA(control, kApplyLine, 0, reinterpret_cast<LPARAM>(text.data()));
    }
    SendMessageA(window, kBringUpToDate, 1, 0);
}

}  // namespace kfx::stage
