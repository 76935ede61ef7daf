// SPDX-License-Identifier: MIT
// How the canvas shows an animation: arrangement, size, place and ground. All rectangles are in pixels.
#pragma once

#include <windows.h>

namespace kfx::stage {

enum class Arrangement {
    Wipe,        // source and result on one canvas, with a line between them
    SideBySide,  // source on the left, result on the right
};

enum class Ground { Checkered, Light, Dark, Colored };

constexpr double kZoomToFit = 0;
constexpr int kWipeSteps = 1000;  // from the picture's left edge to its right one

struct View {
    Arrangement arrangement = Arrangement::Wipe;
    bool allEffects = false;   // the wall stands in the picture's place
    double zoom = kZoomToFit;  // pixels of the screen for one of the picture
    double focusX = 0.5;       // which point of the picture is in the middle, as a part of its sides
    double focusY = 0.5;
    int wipe = kWipeSteps / 2;
    bool sourceAlone = false;  // while a key is held
    Ground ground = Ground::Checkered;
    COLORREF groundColor = RGB(0, 160, 80);
};

// The scale at which the view shows a picture in an area.
double ScaleOf(const View& view, SIZE picture, const RECT& area);

// Where the picture stands: centred in the area, or so that it covers it.
RECT PlaceOf(const View& view, SIZE picture, const RECT& area);

// Zooms by a factor; the picture's point under `fixed` stays there.
void ZoomAt(View* view, SIZE picture, const RECT& area, double factor, POINT fixed);

// Moves a picture that is larger than the area, by as many pixels as the pointer has moved.
void PanBy(View* view, SIZE picture, const RECT& area, int x, int y);

// Whether the picture is larger than the area, so that it can be moved.
bool CanPan(const View& view, SIZE picture, const RECT& area);

// The x of the dividing line in a picture at this place, and the other way round.
int WipeLineAt(const View& view, const RECT& place);
void MoveWipeTo(View* view, const RECT& place, int x);

}  // namespace kfx::stage
