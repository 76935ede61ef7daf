// SPDX-License-Identifier: MIT
#include "tests/driven/user_settings.h"

#include <algorithm>

#include "driven/settings_folder.h"
#include "tests/cli/test_files.h"

namespace kfx::test {

ProgramResult RunThroughPlugin(std::vector<std::string> arguments) {
    arguments.emplace_back("--through-plugin");
    return RunKestrel(arguments);
}

UserSettings::UserSettings() : folder(driven::SettingsFolder()), path(folder + "kfxplug1.ini") {
    driven::MakeSettingsFolder();
    for (const std::string& name : Files()) {
        found[name] = ReadText(folder + name);
        DeleteFileAt(folder + name);
    }
}

UserSettings::~UserSettings() {
    for (const std::string& name : Files()) DeleteFileAt(folder + name);
    for (const auto& file : found) WriteText(folder + file.first, file.second);
}

std::vector<std::string> UserSettings::Files() const {
    std::vector<std::string> files = FilesIn(folder);
    files.erase(std::remove_if(files.begin(), files.end(),
                               [](const std::string& name) { return name.rfind("kfxplug1", 0) != 0; }),
                files.end());
    return files;
}

}  // namespace kfx::test
