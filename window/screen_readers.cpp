// SPDX-License-Identifier: MIT
#include "window/screen_readers.h"

#include <objbase.h>
#include <oleacc.h>

#include <cstdio>
#include <cstring>
#include <utility>

#include "documents/control_kinds.h"
#include "framework/number_text.h"
#include "framework/settings.h"
#include "resources/resource_ids.h"
#include "window/control_texts.h"

namespace kfx {
namespace {

constexpr DWORD kWholeControl = static_cast<DWORD>(OBJID_CLIENT);

IAccPropServices* keeper = nullptr;  // of names and values, while the window has some
bool comStarted = false;             // for the keeper, on this thread
bool isRefused = false;              // there is no keeper, or one that keeps nothing

void LeaveCom() {
    // Leaving may deliver messages, and with them a second end of the window.
    if (std::exchange(comStarted, false)) CoUninitialize();
}

void ReleaseKeeper() {
    if (IAccPropServices* const released = std::exchange(keeper, nullptr)) released->Release();
    LeaveCom();
}

bool FindKeeper() {
    if (isRefused) return false;
    // A host that uses other threads' objects here has said so already, and that holds.
    comStarted = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE));
    void* found = nullptr;
    isRefused = FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                        IID_IAccPropServices, &found)) ||
                !found;
    if (isRefused) {
        LeaveCom();
        return false;
    }
    keeper = static_cast<IAccPropServices*>(found);
    return true;
}

// A text that cannot be kept is left out.
void Keep(HWND control, const MSAAPROPID& property, const char* text) {
    wchar_t wide[kTextBytes];
    if (!keeper || !*text || !MultiByteToWideChar(CP_ACP, 0, text, -1, wide, kTextBytes)) return;
    if (keeper->SetHwndPropStr(control, kWholeControl, CHILDID_SELF, property, wide) != E_NOTIMPL) return;
    isRefused = true;
    ReleaseKeeper();
}

// A caption without its colon.
void WriteCaption(HWND control, int caption, char* name, size_t bytes) {
    GetWindowTextA(GetDlgItem(GetParent(control), caption), name, static_cast<int>(bytes));
    name[std::strcspn(name, ":")] = 0;
}

// Empty: what the control shows itself says enough.
void WriteName(HWND control, const ControlText& text, char* name, size_t bytes) {
    *name = 0;
    const bool onPanel = text.id >= FIRST_PANEL_CONTROL;
    if (text.name)
        std::snprintf(name, bytes, "%s", text.name);
    else if (KindOf(control) == BoundKind::Slider)
        WriteCaption(control, text.id + 2, name, bytes);
    else if (KindOf(control) == BoundKind::List && onPanel)
        WriteCaption(control, text.id + 1, name, bytes);
}

void WriteColor(HWND button, char* value, size_t bytes) {
    const auto* color = static_cast<const uint32_t*>(VariableOf(button));
    if (!color) return;
    std::snprintf(value, bytes, "red %d, green %d, blue %d", GetRValue(*color), GetGValue(*color),
                  GetBValue(*color));
}

// Empty: it has none, or the system knows it.
void WriteValue(HWND control, const ControlText& text, char* value, size_t bytes) {
    *value = 0;
    switch (KindOf(control)) {
        case BoundKind::Slider:
            WriteNumber(text, ShownPosition(text.id + 1, GetScrollPos(control, SB_CTL)), value, bytes);
            break;
        case BoundKind::ColorButton:
            WriteColor(control, value, bytes);
            break;
        default:
            if (text.id == IDC_SOURCE_PATH || text.id == IDC_SOURCE_SIZE)
                GetWindowTextA(control, value, static_cast<int>(bytes));
            break;
    }
}

// False: the control has no value of its own.
bool TellValue(HWND control, const ControlText& text) {
    char value[kTextBytes];
    WriteValue(control, text, value, sizeof value);
    Keep(control, PROPID_ACC_VALUE, value);
    return *value != 0;
}

// What screen readers know of a control while there is a keeper.
template <typename Action>
void ForEachText(HWND window, Action action) {
    for (HWND child = GetWindow(window, GW_CHILD); child && keeper; child = GetWindow(child, GW_HWNDNEXT))
        if (const ControlText* text = FindControlText(GetDlgCtrlID(child))) action(child, *text);
}

}  // namespace

void StartScreenReaderTexts(HWND window) {
    if (keeper || !FindKeeper()) return;
    ForEachText(window, [](HWND control, const ControlText& text) {
        char name[kTextBytes];
        WriteName(control, text, name, sizeof name);
        Keep(control, PROPID_ACC_NAME, name);
    });
}

void TellValues(HWND window) { ForEachText(window, TellValue); }

void TellNewValue(HWND control) {
    const ControlText* text = keeper ? FindControlText(GetDlgCtrlID(control)) : nullptr;
    if (!text) return;
    // Of the others, as check boxes, the system tells itself.
    if (!TellValue(control, *text)) return;
    NotifyWinEvent(EVENT_OBJECT_VALUECHANGE, control, OBJID_CLIENT, CHILDID_SELF);
}

void StopScreenReaderTexts(HWND window) {
    ForEachText(window, [](HWND control, const ControlText&) {
        const MSAAPROPID properties[] = {PROPID_ACC_NAME, PROPID_ACC_VALUE};
        keeper->ClearHwndProps(control, kWholeControl, CHILDID_SELF, properties, 2);
    });
    ReleaseKeeper();
}

}  // namespace kfx
