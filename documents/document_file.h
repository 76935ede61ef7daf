// SPDX-License-Identifier: MIT
// Settings documents (.kx1): the state of all bound controls of a window, saved to and restored from a file.
#pragma once

#include <windows.h>

namespace kfx {

// Shows a message box owned by the window and repaints the window afterwards; the answer is not used. The
// caller gives it, because this folder has no dialogs of its own.
using ShowMessageFunction = int (*)(HWND window, const char* text);

// Writes the state of every bound control below the window. False, after a message: the file could not be
// written.
bool WriteDocument(HWND window, const char* path, ShowMessageFunction showMessage);

// Applies a document to the window's controls; what depends on them is the caller's to bring up to date.
// False, after a message: the file cannot be read or is no document; nothing has changed.
bool ReadDocument(HWND window, const char* path, ShowMessageFunction showMessage);

}  // namespace kfx
