// SPDX-License-Identifier: MIT
// What the parameters of the effects mean, as the help document says it.
#pragma once

#include <string>
#include <vector>

#include "commands/command_line.h"

namespace kfx::commands {

// docs/help/KFXPLUG1.HTML, which the build puts into the program.
extern const char* const kHelpDocument;

struct ParameterHelp {
    std::string unit;     // such as "degrees"; empty: a number without one, a switch or a choice
    std::string meaning;  // one or two sentences without the range; empty: the document does not know it
};

// Looks up a parameter of an effect, both as the plug-in's window shows them, in a help document.
ParameterHelp FindParameterHelp(const std::string& document, const std::string& effect,
                                const std::string& parameter);

// The settings at which the document's picture shows an effect (data-picture="Radius=18, Depth=30" in its
// heading). Empty: its defaults.
std::vector<Setting> FindPictureSettings(const std::string& document, const std::string& effect);

}  // namespace kfx::commands
