// SPDX-License-Identifier: MIT
#include "stage/commands.h"

#include "stage/child_command.h"
#include "stage/folder_answers.h"
#include "stage/text_windows.h"

namespace kfx::stage {
namespace {

// The plug-in's settings for one command: its own defaults, whatever the user chose in the window the last
// time, so that the same command gives the same file on each machine. Only what has no control is written
// here; usually nothing.
std::string SettingsFor(const CommandLine& line) {
    std::string text;
    const auto add = [&text](const char* key, int value) {
        text += std::string(key) + " = " + std::to_string(value) + "\r\n";
    };
    if (line.fastRemap) add("FastRemap", 1);
    if (line.ditherBrightness >= 0) add("DitherBrightness", line.ditherBrightness);
    if (line.ditherContrast >= 0) add("DitherContrast", line.ditherContrast);
    return text.empty() ? text : "[PlugIn]\r\n" + text;
}

}  // namespace

DrivenPlugin::DrivenPlugin(const CommandLine& line, std::uint8_t capabilities, HostSession* session)
    : settings(SettingsFor(line)) {
    run.library = &library;
    run.session = session;
    run.showWindow = line.showWindow;
    run.timeoutSeconds = line.timeoutSeconds;
    if (!line.quiet && !line.json) run.onWait = ShowProgressLine;
    BeginSession(session, capabilities);
    run.error = settings.error;
    const std::string path = line.plugin.empty() ? DefaultPluginPath() : SystemPath(line.plugin);
    TellOfPlugin();
    if (!run.error.empty() || !LoadPlugin(path, AnswerFolderLookups, &library, &run.error)) {
        run.exitCode = kExitPlugin;
        return;
    }
    if (OpenPluginWindow(&run) && !settings.taken) {
        run.exitCode = kExitPlugin;
        run.error = "the plug-in has not read the settings that have no control in its window.";
    }
}

DrivenPlugin::~DrivenPlugin() {
    const bool ended = ClosePluginWindow(&run);
    EndSession();
    // Code that still runs must stay loaded; it ends with the process.
    if (!ended) library.module = nullptr;
}

Report PluginReport(PluginRun* run) {
    StillAnswers(run);
    return FailedReport(run->exitCode, run->error);
}

bool ReadSource(const std::string& path, Animation* animation, Report* report) {
    std::string error;
    if (!ReadAnimation(SystemPath(path), animation, &error)) {
        *report = FailedReport(kExitBadInput, error);
        return false;
    }
    if (animation->frames.empty()) {
        *report = FailedReport(kExitBadInput, path + ": holds no picture.");
        return false;
    }
    if (!animation->warning.empty()) report->notes.push_back(path + ": " + animation->warning + ".");
    return true;
}

bool CheckWritable(const std::string& path, Report* report) {
    const std::string system = SystemPath(path);
    const std::wstring trial = Widen(system + ".trial-" + std::to_string(GetCurrentProcessId()));
    const DWORD attributes = GetFileAttributesW(Widen(system).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        *report = FailedReport(kExitBadOutput, path + ": is a folder.");
        return false;
    }
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
        *report = FailedReport(kExitBadOutput, path + ": is write-protected.");
        return false;
    }
    const HANDLE file = CreateFileW(trial.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        *report = FailedReport(kExitBadOutput,
                               path + ": cannot be written: " + SystemErrorText(GetLastError()) + ".");
        return false;
    }
    CloseHandle(file);
    return true;
}

}  // namespace kfx::stage
