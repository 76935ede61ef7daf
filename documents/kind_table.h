// SPDX-License-Identifier: MIT
// The table of kinds: what each kind of bound control reads, writes and stores. For control_kinds.cpp only.
#pragma once

#include <cstdio>

#include "documents/control_kinds.h"

namespace kfx {

constexpr int kAnyNotification = -1;

// What a kind does. A null function: the kind does nothing there.
struct KindRow {
    BoundKind kind = BoundKind::None;
    const char* word = nullptr;  // six letters, as documents name the kind
    WNDPROC procedure = nullptr;
    void (*write)(HWND control, const char* word, std::FILE* file) = nullptr;
    void (*set)(HWND control, const char* value) = nullptr;   // puts a line's value into the control
    void (*refresh)(HWND control, void* variable) = nullptr;  // after a line has been applied
    void (*store)(HWND control, void* variable) = nullptr;    // after the user has changed the control
    void (*showValue)(HWND control) = nullptr;                // in a label, after it has been stored
    bool ignoresScroll = false;                               // the window moves the slider
    int notification = kAnyNotification;                      // the one that means a change
    Follow follow = Follow::None;                             // None: no notification means a change
};

// Null: there is no such kind.
const KindRow* RowOf(BoundKind kind);

// The row whose procedure the control has; null: it is not bound.
const KindRow* RowOfControl(HWND control);

// Sets a colour button's text.
void SetColorText(HWND button, uint32_t color);

// Sets a colour button's variable and has its swatch drawn again: when its text changed, the button has drawn
// itself with the variable of before.
void StoreColor(HWND button, void* variable, uint32_t color);

// What the procedures of all kinds do.
LRESULT OnControlMessage(const KindRow& row, HWND control, UINT message, WPARAM word, LPARAM pointer);

}  // namespace kfx
