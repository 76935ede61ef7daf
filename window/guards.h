// SPDX-License-Identifier: MIT
// Scope guards over what Windows hands out.
#pragma once

#include <windows.h>

namespace kfx {

// Shows the wait cursor for its scope.
struct WaitCursor {
    WaitCursor() : previous(SetCursor(LoadCursor(nullptr, IDC_WAIT))) {}
    ~WaitCursor() { SetCursor(previous); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

    const HCURSOR previous;
};

// Undoes all changes to a device context (selected objects, clipping, colours) at the end of its scope.
struct SavedContext {
    explicit SavedContext(HDC context) : dc(context), state(SaveDC(context)) {}
    ~SavedContext() { RestoreDC(dc, state); }
    SavedContext(const SavedContext&) = delete;
    SavedContext& operator=(const SavedContext&) = delete;

    const HDC dc;
    const int state;
};

// Deletes a pen, brush, font or region at the end of its scope. Declare it before the SavedContext under
// which it is selected, so that it is no longer selected by then.
template <typename Handle>
struct GdiObject {
    explicit GdiObject(Handle object) : handle(object) {}
    ~GdiObject() {
        if (handle) DeleteObject(handle);
    }
    GdiObject(const GdiObject&) = delete;
    GdiObject& operator=(const GdiObject&) = delete;

    const Handle handle;
};

}  // namespace kfx
