// SPDX-License-Identifier: MIT
// The dialogs in which a user names files.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace kfx::stage {

// Asks for an animation to open, starting in `folder`. False: the user cancelled.
bool ChooseAnimationToOpen(HWND owner, const std::string& folder, std::string* path);

enum class SaveKind { Animation, Gif, Frames };

bool AnyExists(const std::vector<std::string>& files);

// Asks where to save; `*path` holds the suggestion and the answer, which always has an ending of the kind.
// The user has agreed that a file of this name is replaced. False: the user cancelled.
bool ChooseFileToSave(HWND owner, SaveKind kind, std::string* path);

}  // namespace kfx::stage
