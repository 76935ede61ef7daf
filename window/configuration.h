// SPDX-License-Identifier: MIT
// The configuration file in the user's application-data folder. Every failure is silent: settings keep their
// values.
#pragma once

namespace kfx {

// Whether the user holds Shift now, which leaves the stored settings unread when the window opens.
bool IsShiftHeld();

// Reads the file into the settings; once, when the window opens. False: a file is there that could not be
// read, or the shell does not tell where it would be: it must not be replaced then. With Shift held the user
// wants it unread, so it may be replaced.
bool ReadConfiguration(bool shiftHeld);

// Writes the file anew; once, when the window is destroyed. The folder is not created: without it nothing is
// written.
void WriteConfiguration();

}  // namespace kfx
