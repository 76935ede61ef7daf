// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include "driven/driven_engine.h"

namespace kfx::driven {
namespace {

void AddOptions(CLI::App* command, void* values) {
    auto* options = static_cast<DrivenOptions*>(values);
    CLI::Option* const through = command->add_flag("--through-plugin", options->throughPlugin,
                                                   "Load the plug-in and drive its window");
    command
        ->add_option("--plugin", options->plugin, "The plug-in (default: kfxplug1.dll beside this program)")
        ->type_name("PATH")
        ->needs(through);
    command
        ->add_flag("--show-window", options->showWindow,
                   "Let the plug-in's window be seen while it is driven")
        ->needs(through);
    command
        ->add_option("--timeout", options->timeoutSeconds, "Give up after this long without a sign of life")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 86400).description(""))
        ->needs(through);
}

}  // namespace

commands::OwnOptions DrivenCommandOptions(DrivenOptions* options) { return {AddOptions, options}; }

}  // namespace kfx::driven
