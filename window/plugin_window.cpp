// SPDX-License-Identifier: MIT
#include "window/plugin_window.h"

#include <windowsx.h>

#include <atomic>
#include <cstdio>

#include "documents/control_kinds.h"
#include "host/floating_point_state.h"
#include "host/host_requests.h"
#include "resources/resource_ids.h"
#include "window/captions.h"
#include "window/commands.h"
#include "window/configuration.h"
#include "window/control_binding.h"
#include "window/dialog_services.h"
#include "window/effect_list.h"
#include "window/effect_sentence.h"
#include "window/file_dialogs.h"
#include "window/input_filter.h"
#include "window/logo.h"
#include "window/output_options.h"
#include "window/owner_drawn.h"
#include "window/picture_controls.h"
#include "window/plugin_state.h"
#include "window/preview.h"
#include "window/push_buttons.h"
#include "window/screen_readers.h"
#include "window/slider_menu.h"
#include "window/source_opening.h"
#include "window/tooltips.h"

namespace kfx {
namespace {

Logo windowLogo = {};  // runs while the window is open

// plugin.window for other threads, which may look while the window's own thread opens or closes it.
std::atomic<HWND> windowForOthers = nullptr;
static_assert(std::atomic<HWND>::is_always_lock_free);

constexpr int kPushButtons[] = {IDC_BUILD,     IDC_CANCEL, IDC_HELP_BUTTON, IDC_ABOUT,
                                IDC_OPEN_SAVE, IDC_SELECT, IDC_TEST};

constexpr int kSmallTexts[] = {IDC_SOURCE_PATH, IDC_SOURCE_SIZE};

// Ends the window after a message. WM_DESTROY is posted and ends the dialog (OnDestroy); the system sends it
// once more when the dialog is destroyed.
void CloseByItself(HWND window, UINT reason) {
    ShowMessage(window, LoadText(reason));
    PostMessageA(window, WM_DESTROY, 0, 0);
}

void StartFromUntitledDocument() {
    std::snprintf(settings.currentFileName, kTextBytes, "%suntitled.kx1", plugin.documentsFolder);
    std::snprintf(settings.openPath, kTextBytes, "%s", plugin.documentsFolder);
}

void DressControls(HWND window) {
    SetDialogFonts(window);
    ReplacePlaceholders(window);
    for (const int button : kPushButtons) GiveButtonLook(window, button);
    for (const int picture : {IDC_PREVIEW, IDC_LOGO}) MakePictureControl(window, picture);
    for (const int box : kSmallTexts) {
        SendDlgItemMessageA(window, box, WM_SETFONT, reinterpret_cast<WPARAM>(plugin.smallFont), FALSE);
    }
}

void BindControls(HWND window) {
    const HWND path = GetDlgItem(window, IDC_SOURCE_PATH);
    SendMessageA(path, EM_LIMITTEXT, kTextBytes - 1, 0);
    SetWindowTextA(path, settings.fileNamePath);
    BindControl(path, BoundKind::TextField, settings.fileNamePath);
    BindOutputOptions(window);
}

void OnInitDialog(HWND window, const HostContext* host) {
    plugin.buttonStyle = host->buttonStyle;
    plugin.host = host;
    plugin.window = windowForOthers = window;
    DressControls(window);
    const bool shiftHeld = IsShiftHeld();
    plugin.configurationUnread = !ReadConfiguration(shiftHeld);
    ApplyHostLimits(window);
    if (!host->callback) {
        CloseByItself(window, IDS_INTERNAL_ERROR);
        return;
    }
    if (shiftHeld) StartFromUntitledDocument();
    BindControls(window);
    ApplyHostLimits(window);
    MoveFocus(window, IDC_BUILD);
    PostMessageA(window, WM_COMMAND, IDC_CUSTOM_PALETTE, 0);
    uint32_t width, height;
    RequestWindowSize(host, &width, &height);
    if (!IsOpen(window)) return;
    RememberFileDialogSize(width, height);
    StartLogo(&windowLogo, window, IDC_LOGO);
    StartInputFilter();
    SetWindowTextA(window, kPluginName);
    EnableDependentControls(window);
    CenterOnScreen(window);
    PostMessageA(window, kWindowMessage, kFillEffectList, 0);
    PostMessageA(window, kWindowMessage, kShowCurrentPanel, 0);
}

void ComeToFront(HWND window) {
    if (IsWindowVisible(window)) SetForegroundWindow(GetLastActivePopup(window));
}

void OnEffectListWanted(HWND window) {
    if (!FillEffectList(window)) {
        CloseByItself(window, IDS_EFFECT_NOT_INITIALIZED);
        return;
    }
    MakeCaptions(window);
    StartTooltips(window);
    StartScreenReaderTexts(window);
    if (settings.reloadPreviousSession == 1 && RememberedSourceExists())
        PostMessageA(window, WM_COMMAND, IDM_REOPEN_SOURCE, 0);
}

void OnWindowMessage(HWND window, WPARAM what) {
    if (what == kComeToFront) {
        ComeToFront(window);
    } else if (what == kShowCurrentPanel) {
        ShowCurrentPanel(window);
        TellValues(window);
    } else if (what == kFillEffectList) {
        OnEffectListWanted(window);
    }
}

void OnDrawItem(HWND window, const DRAWITEMSTRUCT& item) {
    switch (item.CtlID) {
        case IDC_PREVIEW:
            DrawPreview(window, item);
            break;
        case IDC_LOGO:
            DrawLogo(&windowLogo, item);
            break;
        case IDC_SOURCE_PATH:
            DrawFlatBox(item, true);
            break;
        case IDC_SOURCE_SIZE:
            DrawFlatBox(item, false);
            break;
        case IDC_BACKGROUND_COLOR:
            DrawColorButton(item);
            break;
        default:
            DrawPushButton(item);
            break;
    }
}

void OnPaint(HWND window) {
    PAINTSTRUCT paint;
    if (!BeginPaint(window, &paint)) return;
    DrawEffectSentence(window, paint.hdc);
    EndPaint(window, &paint);
}

void OnScrollMessage(HWND window, WPARAM word, LPARAM data) {
    // The window has no scroll bars of its own.
    if (data) OnScroll(window, reinterpret_cast<HWND>(data), LOWORD(word), HIWORD(word));
}

// F1 in a window that this one owns comes here, too, when nobody has answered it; it is not for this window.
INT_PTR OnHelp(HWND window, const HELPINFO* asked) {
    const HWND item = asked ? static_cast<HWND>(asked->hItemHandle) : window;
    if (item != window && !IsChild(window, item)) return FALSE;
    OnCommand(window, IDC_HELP_BUTTON, BN_CLICKED, nullptr);
    return TRUE;
}

void OnDestroy(HWND window) {
    if (!plugin.window) return;
    NotifyCurrentEffect(window, EffectEvent::Leaving);
    FreeSourceAnimation();
    StopLogo(&windowLogo);
    StopInputFilter();
    StopTooltips();
    StopScreenReaderTexts(window);
    if (!plugin.configurationUnread) WriteConfiguration();
    KillTimer(window, kUpdateTimer);
    plugin.window = windowForOthers = nullptr;
    plugin.host = nullptr;
    EndDialog(window, 0);
}

INT_PTR OnGetFont(HWND window) {
    SetWindowLongPtrA(window, DWLP_MSGRESULT, reinterpret_cast<LONG_PTR>(plugin.textFont));
    return TRUE;
}

INT_PTR CALLBACK PluginWindowProcedure(HWND window, UINT message, WPARAM word, LPARAM data) {
    if (OnLogoTick(&windowLogo, word)) return TRUE;
    switch (message) {
        case WM_INITDIALOG:
            OnInitDialog(window, reinterpret_cast<const HostContext*>(data));
            return FALSE;
        case WM_GETFONT:
            return OnGetFont(window);
        case kWindowMessage:
            OnWindowMessage(window, word);
            return TRUE;
        case WM_COMMAND:
            OnCommand(window, LOWORD(word), HIWORD(word), reinterpret_cast<HWND>(data));
            return TRUE;
        case WM_HSCROLL:
        case WM_VSCROLL:
            OnScrollMessage(window, word, data);
            return TRUE;
        case WM_MOUSEWHEEL:
            return OnWheel(window, GET_WHEEL_DELTA_WPARAM(word), {GET_X_LPARAM(data), GET_Y_LPARAM(data)});
        case WM_CONTEXTMENU:
            return OnContextMenu(window, reinterpret_cast<HWND>(word), data);
        case WM_HELP:
            return OnHelp(window, reinterpret_cast<const HELPINFO*>(data));
        case WM_TIMER:
            if (word == kUpdateTimer) OnUpdateTimer(window);
            return TRUE;
        case WM_PAINT:
            OnPaint(window);
            return TRUE;
        case WM_DRAWITEM:
            OnDrawItem(window, *reinterpret_cast<const DRAWITEMSTRUCT*>(data));
            return TRUE;
        case WM_DESTROY:
            OnDestroy(window);
            return TRUE;
    }
    return FALSE;
}

}  // namespace

INT_PTR RunPluginWindow(HWND parent, const HostContext* host) {
    const HostFloatingPoint turn;  // the host's windows get their messages while this one is open
    return DialogBoxParamA(plugin.module, MAKEINTRESOURCEA(IDD_PLUGIN_WINDOW), parent, PluginWindowProcedure,
                           reinterpret_cast<LPARAM>(host));
}

void BringPluginWindowToFront() {
    const HWND window = windowForOthers;
    if (!window) return;
    // Another thread must not wait for the window's thread, which may be waiting for it inside a request.
    if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId())
        ComeToFront(window);
    else
        PostMessageA(window, kWindowMessage, kComeToFront, 0);
}

}  // namespace kfx
