// SPDX-License-Identifier: MIT
#include "tests/dll/import_refusals.h"

namespace kfx::test {
namespace {

constexpr uint32_t kFirstAllocations = 5;
constexpr uint32_t kFirstDrawings = 1;
constexpr uint32_t kFirstKept = 3;
constexpr uint32_t kFonts = 4;
constexpr uint64_t kMinusOne = ~uint64_t{0};
constexpr uint64_t kFailed = 0x80004005;  // E_FAIL

}  // namespace

// A refusal is alone where it would keep the session from calling others of its section.
const std::vector<Section>& RefusalSections() {
    static const std::vector<Section>
        sections =
            {
                // Memory and resources.
                {.name = "Memory",
                 .refusals =
                     {
                         {.function = "malloc", .firstCalls = kFirstAllocations},
                         {.function = "calloc", .firstCalls = kFirstAllocations},
                         {.function = "realloc", .firstCalls = kFirstAllocations},
                         {.function = "GlobalAlloc", .firstCalls = kFirstAllocations, .alone = true},
                         {.function = "GlobalReAlloc", .firstCalls = kFirstAllocations, .alone = true},
                         {.function = "GlobalLock", .firstCalls = kFirstAllocations, .alone = true},
                         {.function = "GlobalSize"},
                         {.function = "FindResourceA", .alone = true},
                         {.function = "LoadResource", .alone = true},
                         {.function = "LockResource"},
                         {.function = "SizeofResource"},
                         {.function = "LoadStringA"},
                         {.function = "LoadCursorA"},
                         {.function = "VirtualAlloc"},
                     }},
                // Files, folders and what the C runtime formats.
                {.name = "Files",
                 .refusals =
                     {
                         {.function = "fopen", .alone = true},
                         {.function = "fgets", .alone = true},
                         {.function = "fclose", .answer = kMinusOne, .worksFirst = true},
                         {.function = "ferror", .answer = 1, .alone = true},
                         {.function = "fputc", .answer = kMinusOne},
                         {.function = "fwrite"},
                         {.function = "vfprintf", .answer = kMinusOne},
                         {.function = "_ctime64"},
                         {.function = "_time64", .answer = kMinusOne},
                         {.function = "GetFileAttributesA", .answer = kMinusOne},
                         {.function = "GetModuleFileNameA"},
                         {.function = "SHGetPathFromIDListA", .alone = true},
                         {.function = "SHGetSpecialFolderLocation", .answer = kFailed, .alone = true},
                         {.function = "ShellExecuteA", .answer = 2},
                         {.function = "CoInitializeEx", .answer = kFailed},
                         {.function = "CoCreateInstance", .answer = kFailed, .alone = true},
                         {.function = "GetOpenFileNameA"},
                         {.function = "GetSaveFileNameA"},
                         {.function = "MultiByteToWideChar"},
                         {.function = "WideCharToMultiByte"},
                         {.function = "VirtualProtect"},
                         {.function = "VirtualQuery"},
                     }},
                // What is kept while the window is open, or while one thing is drawn.
                {.name = "KeptObjects",
                 .refusals =
                     {
                         {.function = "CreateFontA", .firstCalls = kFonts},
                         {.function = "CreateSolidBrush", .firstCalls = kFirstKept},
                         {.function = "RestoreDC", .firstCalls = kFirstKept},
                         {.function = "SaveDC", .firstCalls = kFirstKept},
                         {.function = "SelectObject", .firstCalls = kFirstKept},
                     }},
                // Other drawing: nothing is kept from one call to the next.
                {.name = "Drawing",
                 .refusals =
                     {
                         {.function = "CombineRgn", .firstCalls = kFirstDrawings},
                         {.function = "CreateDIBSection", .firstCalls = kFirstDrawings},
                         {.function = "CreatePen", .firstCalls = kFirstDrawings},
                         {.function = "CreateRectRgnIndirect", .firstCalls = kFirstDrawings},
                         {.function = "CreateRoundRectRgn", .firstCalls = kFirstDrawings},
                         {.function = "DrawEdge", .firstCalls = kFirstDrawings},
                         {.function = "DrawFocusRect", .firstCalls = kFirstDrawings},
                         {.function = "DrawTextA", .firstCalls = kFirstDrawings},
                         {.function = "ExtSelectClipRgn", .firstCalls = kFirstDrawings},
                         {.function = "FillRect", .firstCalls = kFirstDrawings},
                         {.function = "FillRgn", .firstCalls = kFirstDrawings},
                         {.function = "FrameRect", .firstCalls = kFirstDrawings},
                         {.function = "GetStockObject", .firstCalls = kFirstDrawings},
                         {.function = "GetSysColorBrush", .firstCalls = kFirstDrawings},
                         {.function = "IntersectClipRect", .firstCalls = kFirstDrawings},
                         {.function = "InvalidateRect", .firstCalls = kFirstDrawings},
                         {.function = "RedrawWindow", .firstCalls = kFirstDrawings},
                         {.function = "RoundRect", .firstCalls = kFirstDrawings},
                         {.function = "SetBkColor", .answer = 0xFFFFFFFF, .firstCalls = kFirstDrawings},
                         {.function = "SetBkMode", .firstCalls = kFirstDrawings},
                         {.function = "SetBrushOrgEx", .firstCalls = kFirstDrawings},
                         {.function = "SetDIBitsToDevice", .firstCalls = kFirstDrawings},
                         {.function = "SetStretchBltMode", .firstCalls = kFirstDrawings},
                         {.function = "SetTextColor", .answer = 0xFFFFFFFF, .firstCalls = kFirstDrawings},
                         {.function = "StretchDIBits", .firstCalls = kFirstDrawings},
                     }},
                // Windows, controls, messages and timers.
                {.name = "Windows",
                 .refusals =
                     {
                         {.function = "AppendMenuA"},
                         {.function = "BeginPaint"},
                         {.function = "CheckDlgButton"},
                         {.function = "CreateDialogParamA", .alone = true},
                         {.function = "CreatePopupMenu"},
                         {.function = "CreateWindowExA", .firstCalls = kFirstAllocations, .alone = true},
                         {.function = "DialogBoxParamA", .answer = kMinusOne, .alone = true},
                         {.function = "DestroyWindow"},
                         // a dialog that is never ended stays open: no session could end
                         {.function = "EndDialog", .worksFirst = true},
                         {.function = "EnumChildWindows", .alone = true},
                         {.function = "GetClassNameA"},
                         {.function = "GetCursorPos"},
                         {.function = "GetDC"},
                         {.function = "GetDlgCtrlID"},
                         {.function = "GetDlgItem", .alone = true},
                         {.function = "GetDlgItemInt"},
                         {.function = "GetDlgItemTextA"},
                         {.function = "GetFocus"},
                         {.function = "GetLastActivePopup"},
                         {.function = "GetParent"},
                         {.function = "GetPropA"},
                         {.function = "GetScrollPos"},
                         {.function = "GetScrollRange"},
                         {.function = "GetWindow"},
                         {.function = "GetWindowRect"},
                         {.function = "GetWindowTextA"},
                         {.function = "GetWindowThreadProcessId"},
                         {.function = "InitCommonControlsEx"},
                         {.function = "KillTimer"},
                         {.function = "MapDialogRect"},
                         {.function = "MapWindowPoints"},
                         {.function = "PostMessageA", .alone = true},
                         {.function = "SendDlgItemMessageA"},
                         {.function = "SetCursor"},
                         {.function = "SetDlgItemInt"},
                         {.function = "SetDlgItemTextA"},
                         {.function = "SetFocus"},
                         {.function = "SetForegroundWindow"},
                         {.function = "SetPropA"},
                         {.function = "SetScrollInfo"},
                         {.function = "SetTimer"},
                         {.function = "SetWindowLongPtrA"},
                         {.function = "SetWindowPos"},
                         {.function = "SetWindowTextA"},
                         {.function = "SetWindowsHookExA"},
                         {.function = "SystemParametersInfoA"},
                         {.function = "TrackMouseEvent", .firstCalls = kFirstDrawings},
                         {.function = "TrackPopupMenu"},
                         // a hook that stays would call into the library after it has gone
                         {.function = "UnhookWindowsHookEx", .worksFirst = true, .alone = true},
                     }},
            };
    return sections;
}

const std::set<std::string> kCannotFail = {
    "CallNextHookEx",
    "CallWindowProcA",
    "CoTaskMemFree",
    "CoUninitialize",
    "CommDlgExtendedError",
    "DefWindowProcA",
    "DeleteCriticalSection",
    "DeleteObject",
    "DestroyMenu",
    "EnableWindow",
    "EndPaint",
    "EnterCriticalSection",
    "GetCurrentThreadId",
    "GetKeyState",
    "GetLastError",
    "GetSysColor",
    "GetSystemMetrics",
    "GetWindowLongPtrA",
    "GlobalFree",
    "GlobalUnlock",
    "InflateRect",
    "InitializeCriticalSection",
    "IsChild",
    "IsDBCSLeadByte",
    "IsDBCSLeadByteEx",
    "IsDlgButtonChecked",
    "IsWindow",
    "IsWindowEnabled",
    "IsWindowVisible",
    "LeaveCriticalSection",
    "NotifyWinEvent",
    "OffsetRect",
    "PtInRect",
    "ReleaseDC",
    "RemovePropA",
    "SendMessageA",
    "SetScrollPos",
    "ShowWindow",
    "Sleep",
    "TlsGetValue",
    "___lc_codepage_func",
    "___mb_cur_max_func",
    "__iob_func",
    "_amsg_exit",
    "_errno",
    "_initterm",
    "_lock",
    "_unlock",
    "abort",
    "atoi",
    "free",
    "localeconv",
    "lstrcmpiA",
    "memcmp",
    "memcpy",
    "memmove",
    "memset",
    "rand",
    "srand",
    "strchr",
    "strcspn",
    "strerror",
    "strlen",
    "strncmp",
    "strstr",
    "wcslen",
};

const std::set<std::string> kNotCalled = {
    "GetDlgItemInt",       "GetDlgItemTextA", "VirtualAlloc", "VirtualProtect", "VirtualQuery",
    "WideCharToMultiByte", "calloc",          "malloc",       "realloc",        "vfprintf",
};

}  // namespace kfx::test
