// SPDX-License-Identifier: MIT
#include "driven/plugin_controls.h"

#include <algorithm>

#include "commands/text_match.h"

namespace kfx::driven {

using commands::Parameter;
using commands::PlainName;
using commands::ReadNumber;
using commands::ShownName;

namespace {

// A slow effect may keep the window busy with its preview.
constexpr int kLongestAnswerSeconds = 60;

// Of the one window that is driven at a time; used on the driving thread only.
int answerSeconds = kLongestAnswerSeconds;
bool stoppedAnswering = false;
HANDLE changed = nullptr;

// The effects' panels live in the window under these ids.
constexpr int kFirstPanelId = 100;
constexpr int kLastPanelId = 1198;

// A slider's companions.
constexpr int kLabelAfterSlider = 1;
constexpr int kCaptionAfterSlider = 2;

int IdOf(HWND control) { return GetDlgCtrlID(control); }
LONG StyleOf(HWND control) { return GetWindowLongA(control, GWL_STYLE); }
bool IsShown(HWND control) { return (StyleOf(control) & WS_VISIBLE) != 0; }

bool IsClass(HWND control, const char* name) { return lstrcmpiA(ControlClass(control).c_str(), name) == 0; }

bool IsCheckBox(HWND control) {
    if (!IsClass(control, "Button")) return false;
    const LONG type = StyleOf(control) & BS_TYPEMASK;
    return type == BS_CHECKBOX || type == BS_AUTOCHECKBOX;
}

bool IsOnPanel(HWND control) {
    const int id = IdOf(control);
    return id >= kFirstPanelId && id <= kLastPanelId;
}

std::vector<HWND> ChildrenOf(HWND window) {
    std::vector<HWND> children;
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        children.push_back(child);
    }
    return children;
}

Parameter ReadSlider(HWND window, HWND control) {
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_POS;
    Send(control, SBM_GETSCROLLINFO, 0, reinterpret_cast<LPARAM>(&info));
    Parameter slider;
    slider.kind = Parameter::Slider;
    slider.control = IdOf(control);
    slider.name = ShownName(ControlText(GetDlgItem(window, IdOf(control) + kCaptionAfterSlider)));
    int shown = info.nPos;
    ReadNumber(ControlText(GetDlgItem(window, IdOf(control) + kLabelAfterSlider)), &shown);
    slider.shownOffset = shown - info.nPos;
    slider.minimum = info.nMin + slider.shownOffset;
    slider.maximum = info.nMax + slider.shownOffset;
    slider.value = shown;
    return slider;
}

Parameter ReadCheckBox(HWND control) {
    Parameter box;
    box.kind = Parameter::CheckBox;
    box.control = IdOf(control);
    box.name = ShownName(ControlText(control));
    box.maximum = 1;
    box.value = Send(control, BM_GETCHECK) == BST_CHECKED ? 1 : 0;
    return box;
}

Parameter ReadList(HWND window, HWND control) {
    Parameter list;
    list.kind = Parameter::List;
    list.control = IdOf(control);
    list.name = ShownName(ControlText(GetDlgItem(window, IdOf(control) + kLabelAfterSlider)));
    list.items = ListRows(control);
    list.maximum = static_cast<int>(list.items.size()) - 1;
    list.value = static_cast<int>(Send(control, CB_GETCURSEL));
    return list;
}

// Waits for the label beside a slider to show the number; the plug-in updates it by a posted message.
bool LabelShows(HWND window, const Parameter& slider, int value) {
    const HWND label = GetDlgItem(window, slider.control + kLabelAfterSlider);
    const ULONGLONG start = GetTickCount64();
    do {
        int shown = 0;
        if (ReadNumber(ControlText(label), &shown) && shown == value) return true;
        WaitForChange(nullptr);
    } while (!HasStoppedAnswering() && GetTickCount64() - start < 1000ull * AnswerLimit());
    return false;
}

}  // namespace

void SetAnswerLimit(int seconds) {
    answerSeconds = std::min(seconds, kLongestAnswerSeconds);
    stoppedAnswering = false;
}

int AnswerLimit() { return answerSeconds; }

bool HasStoppedAnswering() { return stoppedAnswering; }

LRESULT Send(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (stoppedAnswering) return 0;
    DWORD_PTR answer = 0;
    const UINT milliseconds = static_cast<UINT>(answerSeconds) * 1000;
    if (!SendMessageTimeoutA(window, message, word, pointer, SMTO_NORMAL, milliseconds, &answer)) {
        stoppedAnswering = GetLastError() == ERROR_TIMEOUT;
        return 0;
    }
    return static_cast<LRESULT>(answer);
}

void Notify(HWND window, HWND control, WORD code) {
    Send(window, WM_COMMAND, MAKEWPARAM(IdOf(control), code), reinterpret_cast<LPARAM>(control));
}

bool IsPluginWindow(HWND window) {
    return GetDlgItem(window, kEffectList) && GetDlgItem(window, kPreviewArea);
}

void SetChangeEvent(HANDLE event) { changed = event; }

void WaitForChange(HANDLE thread) {
    HANDLE handles[2];
    DWORD count = 0;
    for (const HANDLE handle : {thread, changed})
        if (handle) handles[count++] = handle;
    if (count == 0)
        Sleep(kLongestLook);
    else
        WaitForMultipleObjects(count, handles, FALSE, kLongestLook);
}

void PressButton(HWND window, int button) {
    PostMessageA(window, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(window, button)));
}

std::string ControlText(HWND control) {
    char text[2048] = "";
    if (control) Send(control, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}

std::string ControlClass(HWND control) {
    char name[64] = "";
    GetClassNameA(control, name, sizeof name);
    return name;
}

std::vector<std::string> ListRows(HWND list) {
    std::vector<std::string> rows;
    const LRESULT count = Send(list, CB_GETCOUNT);
    for (LRESULT i = 0; i < count; ++i) {
        const LRESULT length = Send(list, CB_GETLBTEXTLEN, static_cast<WPARAM>(i));
        std::string row(length > 0 ? static_cast<size_t>(length) : 0, '\0');
        if (length > 0)
            Send(list, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(row.data()));
        rows.push_back(row);
    }
    return rows;
}

HWND FindOption(HWND window, const std::string& name) {
    for (const HWND child : ChildrenOf(window)) {
        if (!IsOnPanel(child) && IsShown(child) && IsCheckBox(child) &&
            PlainName(ControlText(child)) == PlainName(name)) {
            return child;
        }
    }
    return nullptr;
}

std::vector<Parameter> ReadParameters(HWND window) {
    std::vector<Parameter> parameters;
    for (const HWND child : ChildrenOf(window)) {
        if (!IsOnPanel(child) || !IsShown(child)) continue;
        if (IsClass(child, "ScrollBar")) {
            parameters.push_back(ReadSlider(window, child));
        } else if (IsCheckBox(child)) {
            parameters.push_back(ReadCheckBox(child));
        } else if (IsClass(child, "ComboBox")) {
            parameters.push_back(ReadList(window, child));
        }
    }
    return parameters;
}

bool SetParameterValue(HWND window, const Parameter& parameter, int value) {
    const auto word = static_cast<WPARAM>(value);
    const HWND control = GetDlgItem(window, parameter.control);
    switch (parameter.kind) {
        case Parameter::Slider: {
            // The message that releasing the thumb at this position sends; it carries 16 bits.
            const auto position = static_cast<WORD>(value - parameter.shownOffset);
            Send(window, WM_HSCROLL, MAKEWPARAM(SB_THUMBPOSITION, position),
                 reinterpret_cast<LPARAM>(control));
            return LabelShows(window, parameter, value);
        }
        case Parameter::CheckBox:
            Send(control, BM_SETCHECK, word);
            Notify(window, control, BN_CLICKED);
            return Send(control, BM_GETCHECK) == value;
        case Parameter::List:
            Send(control, CB_SETCURSEL, word);
            Notify(window, control, CBN_CLOSEUP);
            return Send(control, CB_GETCURSEL) == value;
    }
    return false;
}

}  // namespace kfx::driven
