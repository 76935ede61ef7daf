// SPDX-License-Identifier: MIT
#include "window/tooltips.h"

#include <commctrl.h>

#include "framework/settings.h"
#include "resources/resource_ids.h"
#include "window/control_texts.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

constexpr int kLongestLine = 180;  // dialog units: it grows with the font, as the window does
constexpr int kShownFor = 30000;   // milliseconds; the system's 5 seconds are short for two sentences

HWND tooltips = nullptr;

HWND MakeTooltips(HWND window) {
    const INITCOMMONCONTROLSEX classes = {.dwSize = sizeof classes, .dwICC = ICC_BAR_CLASSES};
    InitCommonControlsEx(&classes);  // where it fails, the class may be there all the same
    return CreateWindowExA(WS_EX_TOPMOST, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_NOPREFIX, CW_USEDEFAULT,
                           CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, window, nullptr, plugin.module,
                           nullptr);
}

void AddTip(HWND window, HWND control) {
    const ControlText* text = FindControlText(GetDlgCtrlID(control));
    if (!text) return;
    char range[kTextBytes] = "", tip[kTipBytes];
    GetWindowTextA(control, range, sizeof range);
    WriteTip(*text, range, tip, sizeof tip);
    TTTOOLINFOA tool = {};
    tool.cbSize = TTTOOLINFOA_V2_SIZE;  // which all versions of the library take
    tool.hwnd = window;
    tool.uFlags = TTF_IDISHWND;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = tip;
    SendMessageA(tooltips, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool));
    // While a control is disabled, its mouse messages go to the window. Panels have none that is, and lie one
    // above the other.
    if (text->id >= FIRST_PANEL_CONTROL || !GetWindowRect(control, &tool.rect)) return;
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&tool.rect), 2);
    tool.uFlags = 0;
    tool.uId = static_cast<UINT_PTR>(text->id);
    SendMessageA(tooltips, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool));
}

}  // namespace

void StartTooltips(HWND window) {
    if (tooltips) return;
    tooltips = MakeTooltips(window);
    if (!tooltips) return;
    RECT line = {0, 0, kLongestLine, 0};
    MapDialogRect(window, &line);
    SendMessageA(tooltips, TTM_SETMAXTIPWIDTH, 0, line.right);
    SendMessageA(tooltips, TTM_SETDELAYTIME, TTDT_AUTOPOP, kShownFor);
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        AddTip(window, child);
}

void StopTooltips() {
    if (tooltips) DestroyWindow(tooltips);
    tooltips = nullptr;
}

void TellTooltips(const MSG& message) {
    if (!tooltips || message.message < WM_MOUSEFIRST || message.message > WM_MOUSELAST) return;
    MSG told = message;
    SendMessageA(tooltips, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&told));
}

}  // namespace kfx
