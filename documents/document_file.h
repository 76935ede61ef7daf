// SPDX-License-Identifier: MIT
// Settings documents (.kx1): the state of all bound controls of a window, saved to and restored from a file.
#pragma once

namespace kfx {

// The window's own message. Its word parameter 1 brings the window up to date with its controls; the other
// words are the window's.
constexpr unsigned kWindowMessage = 1224;
constexpr unsigned kShowCurrentPanel = 1;

// Shows a message box owned by the window and repaints the window afterwards. Given by the caller, because
// documents know no dialogs.
using ShowMessageFunction = void (*)(void* window, const char* text);

// Writes the state of every bound control below the window. False, after a message: the file could not be
// written.
bool WriteDocument(void* window, const char* path, ShowMessageFunction showMessage);

// Applies a document to the window's controls and then has the window show its current panel. False, after
// a message: the file cannot be read or is no document; nothing has changed.
bool ReadDocument(void* window, const char* path, ShowMessageFunction showMessage);

}  // namespace kfx
