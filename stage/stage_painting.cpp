// SPDX-License-Identifier: MIT
#include "stage/stage_painting.h"

#include <algorithm>

#include "commands/text_windows.h"

namespace kfx::stage {

using namespace commands;

namespace {

// Device-independent pixels.
constexpr int kMargin = 16, kButtonHeight = 30, kButtonWidth = 150, kGap = 10, kBarHeight = 8;

constexpr COLORREF kBarColor = RGB(35, 57, 93);
constexpr COLORREF kBarGround = RGB(216, 219, 226);
constexpr COLORREF kStatusColor = RGB(90, 98, 114);

HFONT MakeFont(const StageState& state, int height, int weight) {
    return CreateFontW(-Scaled(state, height), 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET, 0, 0,
                       CLEARTYPE_QUALITY, 0, L"Segoe UI");
}

void Fill(HDC target, const RECT& area, COLORREF color) {
    SetDCBrushColor(target, color);
    FillRect(target, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void DrawStatus(const StageState& state, HDC target) {
    RECT area = StatusArea(state);
    Fill(target, area, StageBackground());
    std::string text = state.status;
    if (state.progressTotal > 0) {
        const int total = state.progressTotal, item = std::clamp(state.progressCurrent + 1, 0, total);
        RECT bar = area;
        bar.left = area.right - (area.right - area.left) / 2;
        bar.top = (area.top + area.bottom - Scaled(state, kBarHeight)) / 2;
        bar.bottom = bar.top + Scaled(state, kBarHeight);
        Fill(target, bar, kBarGround);
        bar.right = bar.left + MulDiv(bar.right - bar.left, item, total);
        Fill(target, bar, kBarColor);
        area.right = area.right - (area.right - area.left) / 2 - Scaled(state, kGap);
        text += "  " + std::to_string(item) + " of " + std::to_string(total);
    }
    SetBkMode(target, TRANSPARENT);
    SetTextColor(target, kStatusColor);
    const HGDIOBJ before = SelectObject(target, state.smallFont);
    const std::wstring wide = Widen(text);
    DrawTextW(target, wide.c_str(), -1, &area,
              DT_SINGLELINE | DT_VCENTER | DT_RIGHT | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(target, before);
}

void DrawCard(const StageState& state, HDC target, CardSide side, const RECT& dirty) {
    const ViewStyle style = {state.font, state.smallFont, state.dpi};
    const RECT card = CardArea(state, side);
    RECT drawn;
    if (!IntersectRect(&drawn, &card, &dirty)) return;
    if (side == kSourceCard) {
        const std::string name = FileNameOf(state.sourcePath);
        DrawAnimationCard(target, card, name.empty() ? "Source" : "Source: " + name,
                          "Open an animation,\nor drop one here.", state.source, state.sourceFrame, style);
    } else {
        DrawAnimationCard(target, card, state.resultSaved ? "Result" : "Result (not saved yet)",
                          "Run the effects plug-in\nto make a result.", state.result, state.resultFrame,
                          style);
    }
}

}  // namespace

int Scaled(const StageState& state, int value) { return MulDiv(value, state.dpi, 96); }

void MakeFonts(StageState* state) {
    if (state->font) DeleteObject(state->font);
    if (state->smallFont) DeleteObject(state->smallFont);
    state->font = MakeFont(*state, 15, FW_SEMIBOLD);
    state->smallFont = MakeFont(*state, 13, FW_NORMAL);
    for (const HWND button : {state->openButton, state->effectsButton, state->saveButton}) {
        SendMessageW(button, WM_SETFONT, reinterpret_cast<WPARAM>(state->smallFont), TRUE);
    }
}

RECT CardArea(const StageState& state, CardSide side) {
    RECT client;
    GetClientRect(state.window, &client);
    const int margin = Scaled(state, kMargin);
    const int bottom = client.bottom - 2 * margin - Scaled(state, kButtonHeight);
    const int width = (client.right - 3 * margin) / 2;
    const int left = side == kSourceCard ? margin : 2 * margin + width;
    return {left, margin, left + width, bottom};
}

RECT StatusArea(const StageState& state) {
    RECT client;
    GetClientRect(state.window, &client);
    const int margin = Scaled(state, kMargin);
    const int buttons = 3 * (Scaled(state, kButtonWidth) + Scaled(state, kGap));
    return {margin + buttons + margin, client.bottom - margin - Scaled(state, kButtonHeight),
            client.right - margin, client.bottom - margin};
}

void PlaceButtons(const StageState& state) {
    RECT client;
    GetClientRect(state.window, &client);
    int left = Scaled(state, kMargin);
    const int height = Scaled(state, kButtonHeight), width = Scaled(state, kButtonWidth);
    const int top = client.bottom - Scaled(state, kMargin) - height;
    for (const HWND button : {state.openButton, state.effectsButton, state.saveButton}) {
        MoveWindow(button, left, top, width, height, TRUE);
        left += width + Scaled(state, kGap);
    }
}

// Everything is drawn off screen first: animations must not flicker.
void PaintStage(const StageState& state) {
    PAINTSTRUCT paint;
    const HDC screen = BeginPaint(state.window, &paint);
    RECT client;
    GetClientRect(state.window, &client);
    const HDC target = CreateCompatibleDC(screen);
    const HBITMAP bitmap =
        CreateCompatibleBitmap(screen, std::max<LONG>(client.right, 1), std::max<LONG>(client.bottom, 1));
    const HGDIOBJ before = SelectObject(target, bitmap);
    Fill(target, client, StageBackground());
    const RECT dirty = paint.rcPaint;
    DrawCard(state, target, kSourceCard, dirty);
    DrawCard(state, target, kResultCard, dirty);
    DrawStatus(state, target);
    BitBlt(screen, dirty.left, dirty.top, dirty.right - dirty.left, dirty.bottom - dirty.top, target,
           dirty.left, dirty.top, SRCCOPY);
    SelectObject(target, before);
    DeleteObject(bitmap);
    DeleteDC(target);
    EndPaint(state.window, &paint);
}

}  // namespace kfx::stage
