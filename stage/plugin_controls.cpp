// SPDX-License-Identifier: MIT
#include "stage/plugin_controls.h"

#include <algorithm>
#include <cstdlib>

#include "stage/text_match.h"

namespace kfx::stage {
namespace {

// A slow effect may keep the window busy with its preview.
constexpr int kLongestAnswerSeconds = 60;

// Of the one window that is driven at a time; used on the driving thread only.
int answerSeconds = kLongestAnswerSeconds;
bool stoppedAnswering = false;

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

// "Center &X:" is shown as "Center X".
std::string ShownName(const std::string& text) {
    std::string name;
    for (const char c : text) {
        if (c != '&' && c != ':') name += c;
    }
    return name;
}

bool ReadNumber(const std::string& text, int* number) {
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || *end != '\0' || value < -1000000 || value > 1000000) return false;
    *number = static_cast<int>(value);
    return true;
}

Parameter ReadSlider(HWND window, HWND control) {
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_POS;
    Send(control, SBM_GETSCROLLINFO, 0, reinterpret_cast<LPARAM>(&info));
    Parameter slider = {};
    slider.kind = Parameter::Slider;
    slider.window = control;
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
    Parameter box = {};
    box.kind = Parameter::CheckBox;
    box.window = control;
    box.name = ShownName(ControlText(control));
    box.maximum = 1;
    box.value = Send(control, BM_GETCHECK) == BST_CHECKED ? 1 : 0;
    return box;
}

Parameter ReadList(HWND window, HWND control) {
    Parameter list = {};
    list.kind = Parameter::List;
    list.window = control;
    list.name = ShownName(ControlText(GetDlgItem(window, IdOf(control) + kLabelAfterSlider)));
    list.items = ListRows(control);
    list.maximum = static_cast<int>(list.items.size()) - 1;
    list.value = static_cast<int>(Send(control, CB_GETCURSEL));
    return list;
}

// Waits for the label beside a slider to show the number; the plug-in updates it by a posted message.
bool LabelShows(HWND window, const Parameter& slider, int value) {
    const HWND label = GetDlgItem(window, IdOf(slider.window) + kLabelAfterSlider);
    for (int tries = 0; tries < 400; ++tries) {
        int shown = 0;
        if (ReadNumber(ControlText(label), &shown) && shown == value) return true;
        Sleep(5);
    }
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

bool ParseValue(const Parameter& parameter, const std::string& text, int* value, std::string* error) {
    const std::string plain = PlainName(text);
    bool known = false;
    if (parameter.kind == Parameter::CheckBox) {
        const bool on = plain == "on" || plain == "1" || plain == "yes" || plain == "true";
        known = on || plain == "off" || plain == "0" || plain == "no" || plain == "false";
        *value = on ? 1 : 0;
    } else if (parameter.kind == Parameter::List) {
        *value = FindName(text, parameter.items);
        known = *value >= 0;
    } else {
        known = ReadNumber(text, value) && *value >= parameter.minimum && *value <= parameter.maximum;
    }
    if (!known) *error = parameter.name + " takes " + RangeText(parameter) + ", not \"" + text + "\".";
    return known;
}

std::string RangeText(const Parameter& parameter) {
    if (parameter.kind == Parameter::CheckBox) return "on or off";
    if (parameter.kind == Parameter::List) return JoinNames(parameter.items);
    return std::to_string(parameter.minimum) + " to " + std::to_string(parameter.maximum);
}

std::string ValueText(const Parameter& parameter, int value) {
    if (parameter.kind == Parameter::CheckBox) return value ? "on" : "off";
    if (parameter.kind == Parameter::Slider) return std::to_string(value);
    return value >= 0 && value <= parameter.maximum ? parameter.items[static_cast<size_t>(value)] : "";
}

bool SetParameterValue(HWND window, const Parameter& parameter, int value) {
    const auto word = static_cast<WPARAM>(value);
    switch (parameter.kind) {
        case Parameter::Slider: {
            // The message that releasing the thumb at this position sends; it carries 16 bits.
            const auto position = static_cast<WORD>(value - parameter.shownOffset);
            Send(window, WM_HSCROLL, MAKEWPARAM(SB_THUMBPOSITION, position),
                 reinterpret_cast<LPARAM>(parameter.window));
            return LabelShows(window, parameter, value);
        }
        case Parameter::CheckBox:
            Send(parameter.window, BM_SETCHECK, word);
            Notify(window, parameter.window, BN_CLICKED);
            return Send(parameter.window, BM_GETCHECK) == value;
        case Parameter::List:
            Send(parameter.window, CB_SETCURSEL, word);
            Notify(window, parameter.window, CBN_CLOSEUP);
            return Send(parameter.window, CB_GETCURSEL) == value;
    }
    return false;
}

}  // namespace kfx::stage
