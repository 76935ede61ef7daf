// SPDX-License-Identifier: MIT
// What builds have in common, whoever asks in a session: the plug-in's window or an engine in its place.
#pragma once

#include <cstdint>

#include <windows.h>

#include "commands/host_session.h"
#include "stage/progress.h"

namespace kfx::stage {

// Notes what the session has said last of its progress, and tells the main window.
void NoteSessionProgress(Progress* progress, HWND window, const commands::HostSession& session);

// Whether a request hands over a frame of a build that the user has stopped: it is to be refused.
bool IsFrameAfterStop(const Progress& progress, uint32_t request);

}  // namespace kfx::stage
