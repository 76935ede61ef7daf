// SPDX-License-Identifier: MIT
#include "window/input_filter.h"

#include "documents/control_kinds.h"
#include "resources/resource_ids.h"
#include "window/plugin_state.h"
#include "window/tooltips.h"

namespace kfx {
namespace {

HHOOK filter = nullptr;

bool IsHeld(int key) { return GetKeyState(key) < 0; }

// The command of a key that is pressed with Ctrl alone; 0: none.
WPARAM ShortcutOf(const MSG& message) {
    constexpr LPARAM kIsRepeated = LPARAM{1} << 30;
    if (message.message != WM_KEYDOWN || (message.lParam & kIsRepeated)) return 0;
    if (!IsHeld(VK_CONTROL) || IsHeld(VK_SHIFT) || IsHeld(VK_MENU)) return 0;
    return message.wParam == 'O' ? IDM_DOCUMENT_OPEN : message.wParam == 'S' ? IDM_DOCUMENT_SAVE : 0;
}

bool OpensMenuByKey(const MSG& message) {
    return (message.message == WM_KEYUP && message.wParam == VK_APPS) ||
           (message.message == WM_SYSKEYDOWN && message.wParam == VK_F10 && IsHeld(VK_SHIFT));
}

// A scroll bar has a menu of its own, which only repeats what a click does.
bool OpensSliderMenu(const MSG& message) {
    if (message.message != WM_RBUTTONUP && !OpensMenuByKey(message)) return false;
    return KindOf(message.hwnd) == BoundKind::Slider;
}

// Whether the message is dealt with and goes no further.
bool Filter(const MSG& message) {
    const HWND window = plugin.window;
    // Windows of others that this one owns keep their keys.
    if (!window || (message.hwnd != window && !IsChild(window, message.hwnd))) return false;
    if (!IsWindowEnabled(window)) return false;
    TellTooltips(message);
    if (const WPARAM command = ShortcutOf(message)) {
        PostMessageA(window, WM_COMMAND, command, 0);
        return true;
    }
    if (!OpensSliderMenu(message)) return false;
    // Both coordinates -1: opened by a key.
    const LPARAM place = message.message == WM_RBUTTONUP
                             ? MAKELPARAM(message.pt.x & 0xFFFF, message.pt.y & 0xFFFF)
                             : LPARAM{-1};
    PostMessageA(window, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(message.hwnd), place);
    return true;
}

LRESULT CALLBACK OnFilteredMessage(int code, WPARAM word, LPARAM data) {
    if (code == MSGF_DIALOGBOX && Filter(*reinterpret_cast<const MSG*>(data))) return TRUE;
    return CallNextHookEx(filter, code, word, data);
}

}  // namespace

void StartInputFilter() {
    if (!filter) filter = SetWindowsHookExA(WH_MSGFILTER, OnFilteredMessage, nullptr, GetCurrentThreadId());
}

void StopInputFilter() {
    if (filter) UnhookWindowsHookEx(filter);
    filter = nullptr;
}

}  // namespace kfx
