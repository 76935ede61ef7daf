// SPDX-License-Identifier: MIT
// Preview and logo: owner-drawn buttons that only show something.
#pragma once

#include <windows.h>

namespace kfx {

// From now on a click on the control leaves the focus where it is, and the control is never erased, since
// every pixel of it is drawn. The control tells its dialog of a click (BN_CLICKED) when
// the mouse button is released over it.
void MakePictureControl(HWND dialog, int id);

}  // namespace kfx
