// SPDX-License-Identifier: MIT
// The controls round the canvas: two bars of buttons, the frame slider, the list of steps, the status line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <windows.h>

namespace kfx::stage {

struct Stage;

// What a button of the bars shows beside its text.
struct ButtonLook {
    bool isPossible = false;
    bool isChecked = false;  // of Play: whether it shows the sign for a pause
    int speed = 0;           // of the one that shows it

    bool operator==(const ButtonLook&) const = default;
};

struct BarButtonState {
    HWND window = nullptr;
    int width = 0;  // pixels
    std::wstring text = {};
    std::optional<ButtonLook> look = std::nullopt;  // as it was last brought up to date
};

struct Controls {
    std::vector<BarButtonState> bars;  // the buttons of both
    HWND canvas = nullptr;
    HWND slider = nullptr;  // frames, counted from 1
    HWND frameText = nullptr;
    HWND status = nullptr;
    HWND progress = nullptr;
    HWND stop = nullptr;  // both are shown when they are needed
    HWND giveUp = nullptr;
    HWND history = nullptr;  // shown once there is a step
    HWND tooltips = nullptr;
    HWND hotButton = nullptr;        // under the pointer
    HBITMAP canvasBitmap = nullptr;  // the canvas is drawn on it first
    SIZE canvasBitmapSize = {};
    POINT dragged = {};  // where the pointer was while it moves the picture
    HFONT font = nullptr;
    HFONT boldFont = nullptr;
    std::string lasting;  // the status text while nothing is being done
};

void MakeControls(Stage* stage);

// Makes the fonts anew for the window's resolution and the user's choice.
void MakeFonts(Stage* stage);

// Puts everything where it belongs in the window.
void PlaceControls(Stage* stage);

// The least size of the window at which nothing is cut off or covered; pixels.
SIZE LeastWindowSize(const Stage& stage);

// After the user has changed the system's colours, fonts or looks.
void RenewLooks(Stage* stage, UINT message, WPARAM word, LPARAM pointer);

// After anything has changed: what is possible, texts, the title.
void UpdateControls(Stage* stage);

// After another frame is shown.
void UpdatePosition(const Stage& stage);

// A text for the status line, until the next one.
void ShowStatus(Stage* stage, const std::string& text);

// What is being done, in the status line and on the task bar.
void ShowProgress(Stage* stage);
void ClearProgress(Stage* stage);

// Brings the list's rows up to date. Rows that have not changed stay as they are.
void UpdateHistoryList(const Stage& stage);

// Answers WM_DRAWITEM for the list of steps.
void DrawHistoryRow(const Stage& stage, const DRAWITEMSTRUCT& item);

}  // namespace kfx::stage
