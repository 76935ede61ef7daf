// SPDX-License-Identifier: MIT
#include "stage/canvas_drawing.h"

#include <algorithm>
#include <string>

#include "commands/text_windows.h"
#include "stage/canvas.h"
#include "stage/drawing_parts.h"
#include "stage/picture_drawing.h"
#include "stage/stage.h"

namespace kfx::stage {

using namespace commands;

namespace {

// Device-independent pixels.
constexpr int kSquare = 8, kLabelMargin = 8, kLabelPadding = 6, kLineWidth = 2, kHandle = 10;

// The moment is the same in both; the frames may have other times.
void DrawFilm(const Stage& stage, HDC target, const Film& film, size_t frame, const RECT& pane,
              const RECT& visible) {
    if (film.frames.empty()) return;
    const SIZE picture = {film.facts.width, film.facts.height};
    const RECT place = PlaceOf(stage.view, picture, pane);
    RECT part;
    if (!IntersectRect(&part, &visible, &pane)) return;
    const auto& pixels = *film.frames[std::min(frame, film.frames.size() - 1)].pixels;
    DrawPicture(target, place, part, pixels.data(), picture, GroundOf(stage));
}

void DrawLabel(const Stage& stage, HDC target, const RECT& pane, const std::string& text, bool onRight) {
    const std::wstring wide = Widen(text);
    const HGDIOBJ before = SelectObject(target, stage.controls.font);
    SIZE size = {};
    GetTextExtentPoint32W(target, wide.c_str(), static_cast<int>(wide.size()), &size);
    const int margin = Scaled(stage, kLabelMargin), padding = Scaled(stage, kLabelPadding);
    const LONG width = size.cx + 2 * padding, height = size.cy + padding;
    RECT label = {pane.left + margin, pane.top + margin, pane.left + margin + width,
                  pane.top + margin + height};
    if (onRight) OffsetRect(&label, pane.right - margin - label.right, 0);
    if (label.right - label.left + 2 * margin <= pane.right - pane.left) {
        Fill(target, label, COLOR_INFOBK);
        FrameRect(target, &label, GetSysColorBrush(COLOR_BTNSHADOW));
        SetBkMode(target, TRANSPARENT);
        SetTextColor(target, GetSysColor(COLOR_INFOTEXT));
        DrawTextW(target, wide.c_str(), -1, &label, DT_SINGLELINE | DT_CENTER | DT_VCENTER | DT_NOPREFIX);
    }
    SelectObject(target, before);
}

void DrawHint(const Stage& stage, HDC target, RECT area, const wchar_t* text) {
    const HGDIOBJ before = SelectObject(target, stage.controls.font);
    SetBkMode(target, TRANSPARENT);
    SetTextColor(target, GetSysColor(COLOR_BTNTEXT));
    RECT measured = area;
    DrawTextW(target, text, -1, &measured, DT_CENTER | DT_WORDBREAK | DT_NOPREFIX | DT_CALCRECT);
    area.top = (area.top + area.bottom - (measured.bottom - measured.top)) / 2;
    DrawTextW(target, text, -1, &area, DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
    SelectObject(target, before);
}

// The line with a handle in the middle, visible on light and dark pictures.
void DrawWipeLine(const Stage& stage, HDC target, const RECT& pane, const RECT& place, int x) {
    const int half = std::max(Scaled(stage, kLineWidth) / 2, 1), handle = Scaled(stage, kHandle);
    const LONG top = std::max(place.top, pane.top), bottom = std::min(place.bottom, pane.bottom);
    RECT line = {x - 2 * half, top, x + 2 * half, bottom};
    Fill(target, line, COLOR_WINDOWTEXT);
    line = {x - half, top, x + half, bottom};
    Fill(target, line, COLOR_WINDOW);
    const LONG middle = (top + bottom) / 2;
    RECT grip = {x - handle / 2, middle - handle, x + handle / 2, middle + handle};
    Fill(target, grip, COLOR_WINDOW);
    FrameRect(target, &grip, GetSysColorBrush(COLOR_WINDOWTEXT));
}

std::string ResultLabel(const Stage& stage) {
    const Step& step = *ShownStep(stage.history);
    if (stage.history.test) return "Test: " + step.name;
    return step.saved ? step.name : step.name + " (not saved)";
}

void DrawWipe(const Stage& stage, HDC target, const Film& source, size_t sourceFrame) {
    const RECT pane = PanesOf(stage).result;
    const Film& result = *ShownFilm(stage.history);
    const RECT place = PlaceOf(stage.view, {result.facts.width, result.facts.height}, pane);
    const int x = std::clamp<int>(WipeLineAt(stage.view, place), pane.left, pane.right);
    DrawFilm(stage, target, source, sourceFrame, pane, {pane.left, pane.top, x, pane.bottom});
    DrawFilm(stage, target, result, stage.playback.frame, pane, {x, pane.top, pane.right, pane.bottom});
    DrawWipeLine(stage, target, pane, place, x);
    DrawLabel(stage, target, pane, "Source", false);
    DrawLabel(stage, target, pane, ResultLabel(stage), true);
}

void DrawCanvas(const Stage& stage, HDC target, const RECT& client) {
    Fill(target, client, COLOR_APPWORKSPACE);
    const Film* source = SourceFilm(stage.history);
    if (!source) {
        Fill(target, client, COLOR_BTNFACE);
        FrameRect(target, &client, GetSysColorBrush(COLOR_BTNSHADOW));
        DrawHint(stage, target, client,
                 L"Open an animation with Ctrl+O,\nor drop a file here.\n\nGIF, WebP, PNG, JPEG, BMP or Y4M");
        return;
    }
    const size_t frame = stage.playback.frame;
    const Film* shown = ShownFilm(stage.history);
    // The source's frame of the same moment.
    const size_t sourceFrame =
        source->frames.size() == shown->frames.size() ? frame : FrameAt(*source, StartOf(*shown, frame));
    const CanvasPanes panes = PanesOf(stage);
    if (!ShownStep(stage.history) || stage.view.sourceAlone) {
        DrawFilm(stage, target, *source, sourceFrame, client, client);
        if (ShownStep(stage.history)) DrawLabel(stage, target, client, "Source", false);
    } else if (stage.view.arrangement == Arrangement::Wipe) {
        DrawWipe(stage, target, *source, sourceFrame);
    } else {
        DrawFilm(stage, target, *source, sourceFrame, panes.source, panes.source);
        DrawFilm(stage, target, *shown, frame, panes.result, panes.result);
        const RECT gap = {panes.source.right, client.top, panes.result.left, client.bottom};
        Fill(target, gap, COLOR_BTNFACE);
        DrawLabel(stage, target, panes.source, "Source", false);
        DrawLabel(stage, target, panes.result, ResultLabel(stage), false);
    }
}

void DrawCanvasAndFocus(const Stage& stage, HWND canvas, HDC target, const RECT& client) {
    DrawCanvas(stage, target, client);
    if (GetFocus() != canvas) return;
    SetTextColor(target, RGB(0, 0, 0));
    SetBkColor(target, RGB(255, 255, 255));
    DrawFocusRect(target, &client);
}

// Null: the system refuses it. The bitmap stays: a large one that is made for each frame waits for the
// threads that take and give back the memory of animations at that time.
HBITMAP BitmapForCanvas(Controls* controls, HDC screen, SIZE size) {
    const SIZE kept = controls->canvasBitmapSize;
    if (controls->canvasBitmap && kept.cx >= size.cx && kept.cy >= size.cy) return controls->canvasBitmap;
    if (controls->canvasBitmap) DeleteObject(controls->canvasBitmap);
    controls->canvasBitmapSize = {std::max({size.cx, kept.cx, LONG{1}}),
                                  std::max({size.cy, kept.cy, LONG{1}})};
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = controls->canvasBitmapSize.cx;
    info.bmiHeader.biHeight = -controls->canvasBitmapSize.cy;  // rows from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* pixels = nullptr;
    controls->canvasBitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (!controls->canvasBitmap) controls->canvasBitmapSize = {};
    return controls->canvasBitmap;
}

}  // namespace

PictureGround GroundOf(const Stage& stage) {
    const int square = Scaled(stage, kSquare);
    switch (stage.view.ground) {
        case Ground::Light:
            return {RGB(255, 255, 255), RGB(255, 255, 255), square};
        case Ground::Dark:
            return {RGB(0, 0, 0), RGB(0, 0, 0), square};
        case Ground::Colored:
            return {stage.view.groundColor, stage.view.groundColor, square};
        case Ground::Checkered:
            break;
    }
    return ChequeredGround(square);
}

void PaintCanvas(Stage* stage, HWND canvas) {
    PAINTSTRUCT paint;
    const HDC screen = BeginPaint(canvas, &paint);
    RECT client;
    GetClientRect(canvas, &client);
    const HBITMAP bitmap = BitmapForCanvas(&stage->controls, screen, {client.right, client.bottom});
    const HDC target = bitmap ? CreateCompatibleDC(screen) : nullptr;
    if (target) {
        const HGDIOBJ before = SelectObject(target, bitmap);
        DrawCanvasAndFocus(*stage, canvas, target, client);
        BitBlt(screen, 0, 0, client.right, client.bottom, target, 0, 0, SRCCOPY);
        SelectObject(target, before);
        DeleteDC(target);
    } else {
        // It flickers, but it is seen.
        DrawCanvasAndFocus(*stage, canvas, screen, client);
    }
    EndPaint(canvas, &paint);
}

}  // namespace kfx::stage
