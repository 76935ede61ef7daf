// SPDX-License-Identifier: MIT
#include "stage/canvas.h"

#include <cmath>

#include <windowsx.h>

#include "stage/canvas_drawing.h"
#include "stage/command_table.h"
#include "stage/control_names.h"
#include "stage/stage.h"

namespace kfx::stage {
namespace {

constexpr wchar_t kClassName[] = L"KestrelCanvas";
constexpr int kPaneGap = 4;  // device-independent pixels
constexpr double kWheelZoom = 1.25;
constexpr int kArrowWipe = kWipeSteps / 100;

SIZE PictureSize(const Stage& stage) {
    const Film* film = ShownFilm(stage.history);
    return film ? SIZE{film->facts.width, film->facts.height} : SIZE{1, 1};
}

bool IsWiping(const Stage& stage) {
    return stage.view.arrangement == Arrangement::Wipe && ShownStep(stage.history);
}

// The pane under a point: wheel and drag work on both in the same way.
RECT PaneAt(const Stage& stage, POINT point) {
    const CanvasPanes panes = PanesOf(stage);
    return PtInRect(&panes.source, point) ? panes.source : panes.result;
}

void MoveWipe(Stage* stage, int x) {
    const RECT place = PlaceOf(stage->view, PictureSize(*stage), PanesOf(*stage).result);
    const int before = stage->view.wipe;
    MoveWipeTo(&stage->view, place, x);
    if (stage->view.wipe != before) InvalidateCanvas(*stage);
}

void OnMouseMove(Stage* stage, HWND canvas, POINT point, bool isDragged) {
    if (isDragged && GetCapture() == canvas) {
        POINT& last = stage->controls.dragged;
        PanBy(&stage->view, PictureSize(*stage), PaneAt(*stage, last), point.x - last.x, point.y - last.y);
        last = point;
        InvalidateCanvas(*stage);
    } else if (IsWiping(*stage)) {
        MoveWipe(stage, point.x);
    }
}

void OnButtonDown(Stage* stage, HWND canvas, POINT point) {
    SetFocus(canvas);
    if (!ShownFilm(stage->history) || !CanPan(stage->view, PictureSize(*stage), PaneAt(*stage, point)))
        return;
    stage->controls.dragged = point;
    SetCapture(canvas);
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_SIZEALL)));
}

void OnWheel(Stage* stage, HWND canvas, int delta, POINT point) {
    ScreenToClient(canvas, &point);
    if (!ShownFilm(stage->history)) return;
    ZoomAt(&stage->view, PictureSize(*stage), PaneAt(*stage, point),
           std::pow(kWheelZoom, static_cast<double>(delta) / WHEEL_DELTA), point);
    UpdateControls(stage);
}

// False: the key means nothing here.
bool OnKey(Stage* stage, WPARAM key) {
    switch (key) {
        case VK_LEFT:
        case VK_RIGHT:
            if (!IsWiping(*stage)) return false;
            stage->view.wipe += key == VK_LEFT ? -kArrowWipe : kArrowWipe;
            stage->view.wipe = stage->view.wipe < 0            ? 0
                               : stage->view.wipe > kWipeSteps ? kWipeSteps
                                                               : stage->view.wipe;
            InvalidateCanvas(*stage);
            return true;
        case VK_SPACE:
            RunCommand(stage, kPlay);
            return true;
    }
    return false;
}

LRESULT CALLBACK CanvasProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    Stage* stage = StageOf(GetParent(window));
    if (!stage) return DefWindowProcW(window, message, word, pointer);
    const POINT point = {GET_X_LPARAM(pointer), GET_Y_LPARAM(pointer)};
    switch (message) {
        case WM_ERASEBKGND:
            return 1;
        case WM_PAINT:
            PaintCanvas(stage, window);
            return 0;
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS;
        case WM_MOUSEMOVE:
            OnMouseMove(stage, window, point, (word & MK_LBUTTON) != 0);
            return 0;
        case WM_LBUTTONDOWN:
            OnButtonDown(stage, window, point);
            return 0;
        case WM_LBUTTONUP:
            if (GetCapture() == window) ReleaseCapture();
            return 0;
        case WM_MOUSEWHEEL:
            OnWheel(stage, window, GET_WHEEL_DELTA_WPARAM(word), point);
            return 0;
        case WM_KEYDOWN:
            if (OnKey(stage, word)) return 0;
            break;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            InvalidateRect(window, nullptr, FALSE);
            return 0;
    }
    return DefWindowProcW(window, message, word, pointer);
}

}  // namespace

HWND MakeCanvas(Stage* stage) {
    WNDCLASSEXW canvasClass = {};
    canvasClass.cbSize = sizeof canvasClass;
    canvasClass.style = CS_HREDRAW | CS_VREDRAW;
    canvasClass.lpfnWndProc = CanvasProcedure;
    canvasClass.hInstance = GetModuleHandleW(nullptr);
    canvasClass.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    canvasClass.lpszClassName = kClassName;
    RegisterClassExW(&canvasClass);
    return CreateWindowExW(0, kClassName, NameOfControl(kCanvas), WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 0, 0,
                           0, stage->window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(kCanvas)),
                           canvasClass.hInstance, nullptr);
}

void InvalidateCanvas(const Stage& stage) { InvalidateRect(stage.controls.canvas, nullptr, FALSE); }

CanvasPanes PanesOf(const Stage& stage) {
    RECT client;
    GetClientRect(stage.controls.canvas, &client);
    if (stage.view.arrangement == Arrangement::Wipe || !ShownStep(stage.history) || stage.view.sourceAlone)
        return {client, client};
    RECT source = client, result = client;
    const int gap = Scaled(stage, kPaneGap);
    source.right = (client.right - gap) / 2;
    result.left = source.right + gap;
    return {source, result};
}

void ZoomCanvas(Stage* stage, double factor) {
    const RECT pane = PanesOf(*stage).result;
    ZoomAt(&stage->view, PictureSize(*stage), pane, factor,
           {(pane.left + pane.right) / 2, (pane.top + pane.bottom) / 2});
    UpdateControls(stage);
}

}  // namespace kfx::stage
