// SPDX-License-Identifier: MIT
#include <new>
#include <string>
#include <vector>

#include <windows.h>
#include <shellapi.h>

#include "stage/child_command.h"
#include "stage/commands.h"
#include "stage/settings_folder.h"
#include "stage/stage_window.h"
#include "stage/text_windows.h"

using namespace kfx::stage;

namespace {

std::vector<std::string> Arguments() {
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; wide && i < count; ++i) arguments.push_back(Narrow(wide[i]));
    LocalFree(wide);
    return arguments;
}

Report RunCommand(const CommandLine& line) {
    try {
        switch (line.command) {
            case Command::Apply:
                return RunApply(line);
            case Command::Effects:
                return RunEffects(line);
            case Command::Gallery:
                return RunGallery(line);
            case Command::Sample:
                return RunSample(line);
            case Command::Sheet:
                return RunSheet(line);
            case Command::Window:
                break;
        }
    } catch (const std::bad_alloc&) {
        return FailedReport(kExitBadInput, "there is not enough memory for this animation.");
    }
    return {};
}

bool HasJsonOption(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (argument == "--json") return true;
    }
    return false;
}

}  // namespace

int main() {
    SetConsoleOutputCP(CP_UTF8);
    auto arguments = Arguments();
    const bool isChild = BecomeChild(&arguments);
    CommandLine line;
    std::string text;
    switch (ParseCommandLine(arguments, &line, &text)) {
        case ParseOutcome::ShowText:
            WriteStandardOutput(text);
            return kExitDone;
        case ParseOutcome::Error:
            PrintReport(FailedReport(kExitBadCommand, text), HasJsonOption(arguments), false);
            return kExitBadCommand;
        case ParseOutcome::Run:
            break;
    }
    if (line.command == Command::Window) {
        return RunStageWindow(line.inputs.empty() ? "" : SystemPath(line.inputs[0]),
                              line.plugin.empty() ? "" : SystemPath(line.plugin));
    }
    if (isChild) EndChild(RunCommand(line));
    const std::string leftSettings = PutBackLeftSettings();
    Report report = RunChildCommand();
    if (!leftSettings.empty()) report.notes.push_back(leftSettings);
    PrintReport(report, line.json, line.quiet);
    return report.exitCode;
}
