// SPDX-License-Identifier: MIT
// The folder of the user's settings, the plug-in's and Stage's own.
#pragma once

#include <string>

namespace kfx::driven {

// The folder with a final backslash (UTF-8), whether it is there or not. Empty when the system names no
// application-data folder.
std::string SettingsFolder();

// Makes the folder when it is missing: the plug-in writes its file there but does not make it.
void MakeSettingsFolder();

// Earlier versions renamed the user's kfxplug1.ini while a command ran; when the command was killed, it
// stayed so. Gives it its name back unless a file of that name stands there, which is neither opened nor
// changed. Returns one sentence for the user, how to put it back, when both stand there; else nothing.
std::string PutBackLeftSettings();

}  // namespace kfx::driven
