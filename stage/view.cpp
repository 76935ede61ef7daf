// SPDX-License-Identifier: MIT
#include "stage/view.h"

#include <algorithm>
#include <cmath>

namespace kfx::stage {
namespace {

constexpr double kLargestFit = 4;  // small pictures grow by whole factors, up to this one
constexpr double kSmallestZoom = 1.0 / 32;
constexpr double kLargestZoom = 64;

int WidthOf(const RECT& area) { return std::max<int>(area.right - area.left, 1); }
int HeightOf(const RECT& area) { return std::max<int>(area.bottom - area.top, 1); }

double FitScale(SIZE picture, const RECT& area) {
    const double fit = std::min(static_cast<double>(WidthOf(area)) / std::max<int>(picture.cx, 1),
                                static_cast<double>(HeightOf(area)) / std::max<int>(picture.cy, 1));
    return fit < 1 ? fit : std::min(std::floor(fit), kLargestFit);
}

SIZE ShownSize(double scale, SIZE picture) {
    return {std::max<LONG>(std::lround(picture.cx * scale), 1),
            std::max<LONG>(std::lround(picture.cy * scale), 1)};
}

// Where a side of `shown` pixels begins in an area that begins at `start` and has `room` of them.
int StartOfSide(int start, int room, int shown, double focus) {
    if (shown <= room) return start + (room - shown) / 2;
    const int wanted = start + room / 2 - static_cast<int>(std::lround(focus * shown));
    return std::clamp(wanted, start + room - shown, start);
}

// What StartOfSide does, undone.
double FocusOf(int start, int room, int shown, int begin) {
    return shown <= room ? 0.5 : static_cast<double>(start + room / 2 - begin) / shown;
}

void KeepPlace(View* view, const RECT& area, int left, int top, SIZE shown) {
    view->focusX = FocusOf(area.left, WidthOf(area), shown.cx, left);
    view->focusY = FocusOf(area.top, HeightOf(area), shown.cy, top);
}

}  // namespace

double ScaleOf(const View& view, SIZE picture, const RECT& area) {
    return view.zoom == kZoomToFit ? FitScale(picture, area) : view.zoom;
}

RECT PlaceOf(const View& view, SIZE picture, const RECT& area) {
    const SIZE shown = ShownSize(ScaleOf(view, picture, area), picture);
    const int left = StartOfSide(area.left, WidthOf(area), shown.cx, view.focusX);
    const int top = StartOfSide(area.top, HeightOf(area), shown.cy, view.focusY);
    return {left, top, left + shown.cx, top + shown.cy};
}

void ZoomAt(View* view, SIZE picture, const RECT& area, double factor, POINT fixed) {
    const RECT before = PlaceOf(*view, picture, area);
    const double pointX = static_cast<double>(fixed.x - before.left) / WidthOf(before);
    const double pointY = static_cast<double>(fixed.y - before.top) / HeightOf(before);
    view->zoom = std::clamp(ScaleOf(*view, picture, area) * factor, kSmallestZoom, kLargestZoom);
    // Steps of a half and more meet the picture's own size instead of passing it.
    if (std::abs(view->zoom - 1) < 0.02) view->zoom = 1;
    const SIZE shown = ShownSize(view->zoom, picture);
    KeepPlace(view, area, fixed.x - static_cast<int>(std::lround(pointX * shown.cx)),
              fixed.y - static_cast<int>(std::lround(pointY * shown.cy)), shown);
}

void PanBy(View* view, SIZE picture, const RECT& area, int x, int y) {
    const RECT place = PlaceOf(*view, picture, area);
    KeepPlace(view, area, place.left + x, place.top + y, {WidthOf(place), HeightOf(place)});
    const RECT moved = PlaceOf(*view, picture, area);
    // The focus follows the picture where an edge has stopped it.
    KeepPlace(view, area, moved.left, moved.top, {WidthOf(moved), HeightOf(moved)});
}

bool CanPan(const View& view, SIZE picture, const RECT& area) {
    const RECT place = PlaceOf(view, picture, area);
    return WidthOf(place) > WidthOf(area) || HeightOf(place) > HeightOf(area);
}

int WipeLineAt(const View& view, const RECT& place) {
    return place.left + MulDiv(WidthOf(place), view.wipe, kWipeSteps);
}

void MoveWipeTo(View* view, const RECT& place, int x) {
    view->wipe = std::clamp(MulDiv(x - place.left, kWipeSteps, WidthOf(place)), 0, kWipeSteps);
}

}  // namespace kfx::stage
