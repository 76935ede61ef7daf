// SPDX-License-Identifier: MIT
// What a plug-in that a command drives learns of the user's folders: its calls of the shell's folder
// functions are answered here, so that it neither reads nor writes the settings that the user has in it.
#pragma once

#include <string>

#include <windows.h>

namespace kfx::driven {

// Puts the answers in place of the functions that the DLL imports. To be called before the first function of
// the DLL is. False: it could find the folders in another way, which `*error` names in a clause; it must then
// not be run.
bool AnswerFolderLookups(HMODULE module, std::string* error);

// The application-data folder that lookups are answered with from now on, without a final backslash. Empty,
// as at the start: the lookup fails, and the plug-in has no settings file.
void SetAnsweredSettingsFolder(const std::string& folder);

}  // namespace kfx::driven
