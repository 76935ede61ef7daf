// SPDX-License-Identifier: MIT
// The settings that a command gives the plug-in it drives: in place of the user's file the plug-in finds a
// pipe with a few lines, or nothing. Nothing of it is on the disk.
#pragma once

#include <atomic>
#include <string>

#include <windows.h>

namespace kfx::driven {

// For its scope, a driven plug-in (see folder_answers.h) reads `text` as its settings file, once, and can
// write none. Without text it finds no settings. One at a time.
struct CommandSettings {
    explicit CommandSettings(const std::string& text);
    ~CommandSettings();
    CommandSettings(const CommandSettings&) = delete;
    CommandSettings& operator=(const CommandSettings&) = delete;

    std::string text;
    std::string error;               // one sentence when the text cannot be offered
    std::atomic<bool> taken{false};  // this process has read all of it, or there is nothing to take
    std::string path;                // where it is offered; empty without text

    HANDLE pipe = INVALID_HANDLE_VALUE;
    SRWLOCK closing = SRWLOCK_INIT;  // held while the pipe is closed or disconnected
    HANDLE stop = nullptr;
    HANDLE thread = nullptr;
};

}  // namespace kfx::driven
