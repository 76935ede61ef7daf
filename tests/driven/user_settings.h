// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/cli/program.h"

namespace kfx::test {

// Runs kestrel.exe with --through-plugin and waits for its end.
ProgramResult RunThroughPlugin(std::vector<std::string> arguments);

// The plug-in's files in the user's folder: none at the start of the scope; those that were found are put
// back at its end.
struct UserSettings {
    UserSettings();
    ~UserSettings();
    UserSettings(const UserSettings&) = delete;
    UserSettings& operator=(const UserSettings&) = delete;

    // The names of the plug-in's files in the folder.
    std::vector<std::string> Files() const;

    std::string folder;
    std::string path;

private:
    std::map<std::string, std::string> found;  // contents by name
};

}  // namespace kfx::test
