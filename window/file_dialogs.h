// SPDX-License-Identifier: MIT
// The system's file dialogs for settings documents, with the plug-in's buttons and at the size last used.
#pragma once

#include <windows.h>

#include <cstdint>

namespace kfx {

// Asks for a document to open or a name to save under, starting at `path` (kTextBytes); the choice replaces
// it. False: the user chose none, `path` is unchanged.
bool AskDocumentToOpen(HWND owner, char* path);
bool AskDocumentToSave(HWND owner, char* path);

// Sets the size that the dialogs get, limited to the screen; 0 leaves it to the system.
void RememberFileDialogSize(uint32_t width, uint32_t height);

}  // namespace kfx
