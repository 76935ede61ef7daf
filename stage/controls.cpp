// SPDX-License-Identifier: MIT
#include "stage/controls.h"

#include <algorithm>

#include <windows.h>
#include <commctrl.h>

#include "commands/text_windows.h"
#include "stage/bar_buttons.h"
#include "stage/canvas.h"
#include "stage/child_windows.h"
#include "stage/command_table.h"
#include "stage/control_names.h"
#include "stage/plain_dialog.h"
#include "stage/plugin_opening.h"
#include "stage/stage.h"
#include "stage/taskbar.h"
#include "stage/wall_commands.h"

namespace kfx::stage {

using namespace commands;

namespace {

// Device-independent pixels.
constexpr int kMargin = 8, kBarHeight = 32, kSliderHeight = 28, kFrameTextWidth = 230, kStatusHeight = 24;
constexpr int kProgressWidth = 180, kProgressHeight = 14, kStopWidth = 60, kGiveUpWidth = 90,
              kHistoryWidth = 216;
constexpr int kHistoryRow = 60, kLeastSliderWidth = 80, kLeastWidth = 760, kLeastHeight = 420;

struct Areas {
    RECT upper, canvas, history, lower, status;
};

Areas AreasOf(const Stage& stage) {
    RECT client;
    GetClientRect(stage.window, &client);
    const LONG margin = Scaled(stage, kMargin), half = margin / 2;
    Areas areas;
    areas.upper = {margin, half, client.right - margin, half + Scaled(stage, kBarHeight)};
    areas.status = {margin, client.bottom - half - Scaled(stage, kStatusHeight), client.right - margin,
                    client.bottom - half};
    areas.lower = {margin, areas.status.top - half - Scaled(stage, kBarHeight), client.right - margin,
                   areas.status.top - half};
    areas.canvas = {margin, areas.upper.bottom + half, client.right - margin,
                    std::max(areas.lower.top - half, areas.upper.bottom + half)};
    areas.history = areas.canvas;
    const bool hasSteps = stage.history.steps.size() > 1;
    areas.history.left = hasSteps ? areas.canvas.right - Scaled(stage, kHistoryWidth) : areas.canvas.right;
    if (hasSteps) areas.canvas.right = areas.history.left - half;
    return areas;
}

HWND Make(Stage* stage, const wchar_t* className, const wchar_t* text, DWORD style, int id) {
    return CreateWindowExW(0, className, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, stage->window,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr),
                           nullptr);
}

void ReplaceFont(HFONT* font, const LOGFONTW& description) {
    if (*font) DeleteObject(*font);
    *font = CreateFontIndirectW(&description);
}

std::string TitleOf(const Stage& stage) {
    const std::string name = FileNameOf(stage.document.path);
    const std::string title = Narrow(kStageTitle);
    if (name.empty()) return title;
    return (HasUnsavedStep(stage.history) ? "*" : "") + name + " - " + title;
}

void SetText(HWND window, const std::string& text) { SetChildText(window, Widen(text)); }

}  // namespace

void MakeControls(Stage* stage) {
    Controls& controls = stage->controls;
    MakeBarButtons(stage);
    controls.slider = Make(stage, TRACKBAR_CLASSW, NameOfControl(kFrameSlider),
                           WS_TABSTOP | TBS_HORZ | TBS_NOTICKS, kFrameSlider);
    controls.frameText = Make(stage, L"STATIC", L"", SS_CENTER | SS_NOPREFIX | SS_CENTERIMAGE, kFrameText);
    controls.canvas = MakeCanvas(stage);
    MakeWall(stage);
    controls.history = Make(stage, L"LISTBOX", NameOfControl(kHistoryList),
                            WS_TABSTOP | WS_VSCROLL | WS_BORDER | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS |
                                LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
                            kHistoryList);
    controls.status =
        Make(stage, L"STATIC", L"", SS_LEFT | SS_NOPREFIX | SS_CENTERIMAGE | SS_ENDELLIPSIS, kStatusText);
    controls.progress = Make(stage, PROGRESS_CLASSW, NameOfControl(kStatusProgress), 0, kStatusProgress);
    controls.stop = Make(stage, L"BUTTON", L"Stop", WS_TABSTOP | BS_PUSHBUTTON, kStopWork);
    controls.giveUp = Make(stage, L"BUTTON", L"Give up...", WS_TABSTOP | BS_PUSHBUTTON, kGiveUpPlugin);
    controls.tooltips = CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP, 0, 0, 0, 0,
                                        stage->window, nullptr, GetModuleHandleW(nullptr), nullptr);
    for (const ControlName& named : kControlNames) NameForReaders(GetDlgItem(stage->window, named.control));
    MakeFonts(stage);
    ClearProgress(stage);
}

void MakeFonts(Stage* stage) {
    LOGFONTW font = MessageFont(stage->dpi);
    ReplaceFont(&stage->controls.font, font);
    font.lfWeight = FW_BOLD;
    ReplaceFont(&stage->controls.boldFont, font);
    for (HWND child = GetWindow(stage->window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(stage->controls.font), TRUE);
    }
    SendMessageW(stage->controls.history, LB_SETITEMHEIGHT, 0, Scaled(*stage, kHistoryRow));
    MeasureBarButtons(stage);
}

void PlaceControls(Stage* stage) {
    const Areas areas = AreasOf(*stage);
    const Controls& controls = stage->controls;
    int left = 0, right = 0;
    PlaceBarButtons(*stage, areas.upper, areas.lower, &left, &right);
    const int margin = Scaled(*stage, kMargin);
    const int text = std::max(right - margin - Scaled(*stage, kFrameTextWidth), left);
    const int top = (areas.lower.top + areas.lower.bottom - Scaled(*stage, kSliderHeight)) / 2;
    PlaceChild(controls.slider,
               {left + margin, top, std::max(text, left + margin), top + Scaled(*stage, kSliderHeight)});
    PlaceChild(controls.frameText, {text, areas.lower.top, right - margin, areas.lower.bottom});
    PlaceChild(controls.canvas, areas.canvas);
    UpdateWall(stage, areas.canvas);
    const bool hasSteps = areas.history.right > areas.history.left;
    if (hasSteps) PlaceChild(controls.history, areas.history);
    ShowChild(controls.history, hasSteps);
    RECT status = areas.status;
    RECT stop = status;
    stop.left = stop.right - Scaled(*stage, kStopWidth);
    PlaceChild(controls.stop, stop);
    const int middle = (status.top + status.bottom - Scaled(*stage, kProgressHeight)) / 2;
    RECT bar = {stop.left - margin - Scaled(*stage, kProgressWidth), middle, stop.left - margin,
                middle + Scaled(*stage, kProgressHeight)};
    PlaceChild(controls.progress, bar);
    RECT giveUp = status;
    giveUp.left = giveUp.right - Scaled(*stage, kGiveUpWidth);
    PlaceChild(controls.giveUp, giveUp);
    if (IsChildShown(controls.progress))
        status.right = bar.left - margin;
    else if (IsChildShown(controls.giveUp))
        status.right = giveUp.left - margin;
    PlaceChild(controls.status, status);
}

SIZE LeastWindowSize(const Stage& stage) {
    const int between = Scaled(stage, kLeastSliderWidth + kFrameTextWidth + 3 * kMargin),
              margins = 2 * Scaled(stage, kMargin);
    RECT window, client;
    GetWindowRect(stage.window, &window);
    GetClientRect(stage.window, &client);
    const int frame = static_cast<int>(window.right - window.left - client.right);
    return {std::max(LeastBarWidth(stage, between) + margins + frame, Scaled(stage, kLeastWidth)),
            Scaled(stage, kLeastHeight)};
}

// Common controls keep colours and sizes of their own, and only the main window is told. Windows whose fonts
// have grown must grow with them.
void RenewLooks(Stage* stage, UINT message, WPARAM word, LPARAM pointer) {
    for (HWND child = GetWindow(stage->window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        SendMessageW(child, message, word, pointer);
    SendMessageW(stage->controls.tooltips, message, word, pointer);
    MakeFonts(stage);
    RECT window;
    GetWindowRect(stage->window, &window);
    const SIZE least = LeastWindowSize(*stage);
    if (!IsIconic(stage->window) && window.right - window.left < least.cx)
        SetWindowPos(stage->window, nullptr, 0, 0, least.cx, window.bottom - window.top,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    UpdateControls(stage);
    RedrawWindow(stage->window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void UpdateControls(Stage* stage) {
    UpdateBarButtons(stage);
    UpdateHistoryList(*stage);
    const Film* film = ShownFilm(stage->history);
    const int frames = film ? static_cast<int>(film->frames.size()) : 0;
    if (SendMessageW(stage->controls.slider, TBM_GETRANGEMAX, 0, 0) != std::max(frames, 1)) {
        SendMessageW(stage->controls.slider, TBM_SETRANGEMIN, FALSE, 1);
        SendMessageW(stage->controls.slider, TBM_SETRANGEMAX, TRUE, std::max(frames, 1));
    }
    EnableChild(stage->controls.slider, frames > 1);
    EnableChild(stage->controls.stop, IsPossible(*stage, *FindCommand(kStopWork)));
    EnableChild(stage->controls.giveUp, IsPossible(*stage, *FindCommand(kGiveUpPlugin)));
    SetText(stage->window, TitleOf(*stage));
    PlaceControls(stage);
    UpdatePosition(*stage);
    InvalidateCanvas(*stage);
}

void UpdatePosition(const Stage& stage) {
    const Film* film = ShownFilm(stage.history);
    SendMessageW(stage.controls.slider, TBM_SETPOS, TRUE, static_cast<LPARAM>(stage.playback.frame + 1));
    SetText(stage.controls.frameText, film ? PositionText(stage.playback, *film) : "");
    UpdateWallMoment(stage);
}

void ShowStatus(Stage* stage, const std::string& text) {
    stage->controls.lasting = text;
    SetText(stage->controls.status, text);
}

void ShowProgress(Stage* stage) {
    if (!IsWorking(*stage) && IsPluginSilent(*stage)) {
        SetText(stage->controls.status, "The plug-in does not answer.");
        if (ShowChild(stage->controls.giveUp, true)) PlaceControls(stage);
        return;
    }
    Progress* progress = IsWorking(*stage)      ? &stage->work.progress
                         : IsPluginOpen(*stage) ? &stage->plugin.opening->progress
                                                : nullptr;
    if (!progress) return;
    const ShownProgress shown = LookAtProgress(progress, GetTickCount64());
    // Between its parts a build counts nothing; one that is to stop has not ended there.
    const bool isBusy = IsWorking(*stage) || shown.total > 0 || progress->stop;
    if (!isBusy) {
        ClearProgress(stage);
        return;
    }
    std::string text = progress->stop ? "Stopping." : shown.text;
    if (shown.total > 0 && !progress->stop)
        text += "  " + std::to_string(std::min(shown.done + 1, shown.total)) + " of " +
                std::to_string(shown.total);
    if (!shown.timeLeft.empty() && !progress->stop) text += ", " + shown.timeLeft;
    SetText(stage->controls.status, text);
    SendMessageW(stage->controls.progress, PBM_SETRANGE32, 0, std::max(shown.total, 1));
    SendMessageW(stage->controls.progress, PBM_SETPOS, static_cast<WPARAM>(shown.done), 0);
    if (ShowChild(stage->controls.progress, true)) {
        ShowChild(stage->controls.stop, true);
        EnableChild(stage->controls.stop, IsPossible(*stage, *FindCommand(kStopWork)));
        PlaceControls(stage);
    }
    ShowTaskbarProgress(stage->window, shown.done, shown.total);
}

void ClearProgress(Stage* stage) {
    const Controls& controls = stage->controls;
    for (const HWND button : {controls.stop, controls.giveUp}) {
        if (IsChildShown(button) && GetFocus() == button) FocusPicture(*stage);
        ShowChild(button, false);
    }
    if (ShowChild(controls.progress, false)) ClearTaskbarProgress(stage->window);
    SetText(controls.status, controls.lasting);
    PlaceControls(stage);
}

}  // namespace kfx::stage
