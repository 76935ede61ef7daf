// SPDX-License-Identifier: MIT
// The user's configuration file of the plug-in, put aside while a command runs and put back afterwards.
#pragma once

#include <string>

namespace kfx::stage {

// The folder of the plug-in's configuration file with a final backslash (UTF-8), made when it is missing: the
// plug-in does not make it. Empty when the system names no application-data folder.
std::string SettingsFolder();

// Holds the configuration file aside for its scope: the plug-in reads `content` instead and may write what it
// likes. Commands take turns. What a killed command left aside is put back by the next one.
struct SettingsGuard {
    explicit SettingsGuard(const std::string& content);
    ~SettingsGuard();
    SettingsGuard(const SettingsGuard&) = delete;
    SettingsGuard& operator=(const SettingsGuard&) = delete;

    // One sentence when the file could not be put aside; it then stands as it was.
    std::string error;
};

// Puts the file back at once, for a process that is about to be ended from outside. Harmless without a guard.
void RestoreSettingsNow();

}  // namespace kfx::stage
