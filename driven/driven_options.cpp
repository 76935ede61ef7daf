// SPDX-License-Identifier: MIT
#include "commands/parser_words.h"
#include "driven/driven_engine.h"

namespace kfx::driven {
namespace {

void AddOptions(CLI::App* command, void* values) {
    auto* options = static_cast<DrivenOptions*>(values);
    CLI::Option* const through = commands::AddFlag(command, "--through-plugin", &options->throughPlugin,
                                                   "Load the plug-in and drive its window");
    CLI::Option* const plugin =
        commands::AddText(command,
                          {.name = "--plugin",
                           .typeName = "PATH",
                           .description = "The plug-in (default: kfxplug1.dll beside this program)"},
                          &options->plugin);
    CLI::Option* const showWindow = commands::AddFlag(command, "--show-window", &options->showWindow,
                                                      "Let the plug-in's window be seen while it is driven");
    CLI::Option* const timeout =
        commands::AddNumber(command, "--timeout", &options->timeoutSeconds, 1, 86400,
                            "Give up when the plug-in has asked for nothing for so many seconds");
    for (CLI::Option* const option : {plugin, showWindow, timeout}) commands::RequireWith(option, through);
}

}  // namespace

commands::OwnOptions DrivenCommandOptions(DrivenOptions* options) { return {AddOptions, options}; }

}  // namespace kfx::driven
