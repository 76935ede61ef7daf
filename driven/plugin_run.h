// SPDX-License-Identifier: MIT
// One opening of the plug-in's window, driven from outside: the plug-in runs on a thread of its own while the
// caller moves its controls, answers its message boxes and gives up when the plug-in has asked nothing for a
// while.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include "commands/exit_codes.h"
#include "commands/host_session.h"
#include "driven/plugin_controls.h"
#include "driven/plugin_library.h"

namespace kfx::driven {

struct PluginRun {
    PluginLibrary* library = nullptr;
    commands::HostSession* session = nullptr;
    bool showWindow = false;
    int timeoutSeconds = 600;
    void (*onWait)(const commands::HostSession& session) =
        nullptr;  // called while waiting, for a progress display; may be null

    HANDLE thread = nullptr;
    HANDLE changed = nullptr;  // set after anything about the plug-in may have changed
    DWORD threadId = 0;
    HWND window = nullptr;
    std::vector<std::string> messages;  // what the plug-in's message boxes said

    commands::Failure failure;  // why a call returned false
};

// Opens the window and waits until it is ready to be used. Every function below returns false with a sentence
// in run->failure when the plug-in does not do what was asked, shows a message or stops answering.
bool OpenPluginWindow(PluginRun* run);

// Whether every message sent to the window so far has been answered in time; what was read from it is worth
// nothing otherwise.
bool StillAnswers(PluginRun* run);

bool ChooseRow(PluginRun* run, int control, int row);
bool SetOption(PluginRun* run, const std::string& name, bool on);

// Presses "Select..." and waits for the session's source to be accepted.
bool SelectSource(PluginRun* run);

// Presses "&Test": the animation is in session->built and the window stays open.
bool PressTest(PluginRun* run);

// Presses "Build": the animation is in session->built and the window is closed.
bool PressBuild(PluginRun* run);

// Cancels the window if it is still open and waits for the plug-in to return. False: it hangs, and only the
// end of the process ends it.
bool ClosePluginWindow(PluginRun* run);

}  // namespace kfx::driven
