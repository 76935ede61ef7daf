// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include "commands/parser_words.h"
#include "driven/driven_engine.h"

namespace kfx::driven {
namespace {

void AddOptions(CLI::App* command, void* values) {
    auto* options = static_cast<DrivenOptions*>(values);
    CLI::Option* const through = commands::AddFlag(command, "--through-plugin", &options->throughPlugin,
                                                   "Load the plug-in and drive its window");
    command
        ->add_option("--plugin", options->plugin, "The plug-in (default: kfxplug1.dll beside this program)")
        ->type_name("PATH")
        ->needs(through);
    commands::AddFlag(command, "--show-window", &options->showWindow,
                      "Let the plug-in's window be seen while it is driven")
        ->needs(through);
    commands::AddNumber(command, "--timeout", &options->timeoutSeconds, 1, 86400,
                        "Give up when the plug-in has asked for nothing for so many seconds")
        ->needs(through);
}

}  // namespace

commands::OwnOptions DrivenCommandOptions(DrivenOptions* options) { return {AddOptions, options}; }

}  // namespace kfx::driven
