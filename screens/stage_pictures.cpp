// SPDX-License-Identifier: MIT
#include "screens/stage_pictures.h"

#include <filesystem>
#include <system_error>

#include <windows.h>

#include "driven/plugin_controls.h"
#include "media/sample_animation.h"
#include "media/utf8_path.h"
#include "screens/window_pictures.h"
#include "stage/command_ids.h"

namespace kfx::screens {

using namespace driven;

namespace {

namespace fs = std::filesystem;

constexpr DWORD kLongestEnd = 30000;  // milliseconds, until a program that was closed has ended

struct StageRun {
    PROCESS_INFORMATION process = {};
    HWND window = nullptr;
};

fs::path ProgramFolder() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return fs::path(path).parent_path();
}

bool Start(const fs::path& sample, StageRun* run) {
    const fs::path program = ProgramFolder() / "kestrel-stage.exe";
    std::wstring line = L"\"" + program.wstring() + L"\" \"" + sample.wstring() + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    return CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                          &startup, &run->process) != FALSE;
}

// A visible window of Stage's process with this class.
HWND FindWindowOf(const StageRun& run, const char* className) {
    for (HWND found = nullptr; (found = FindWindowExA(nullptr, found, className, nullptr)) != nullptr;) {
        DWORD process = 0;
        GetWindowThreadProcessId(found, &process);
        if (process == run.process.dwProcessId && IsWindowVisible(found)) return found;
    }
    return nullptr;
}

std::string FrameText(const StageRun& run) { return ControlText(GetDlgItem(run.window, stage::kFrameText)); }

bool HasOpened(StageRun* run) {
    run->window = FindWindowOf(*run, "KestrelStage");
    return run->window && FrameText(*run).find("Frame ") == 0;
}

void Command(const StageRun& run, int command) {
    PostMessageA(run.window, WM_COMMAND, static_cast<WPARAM>(command), 0);
}

HWND PluginIn(const StageRun& run) {
    const HWND dialog = FindWindowOf(run, "#32770");
    const bool isShown =
        dialog && IsPluginWindow(dialog) && IsWindowVisible(GetDlgItem(dialog, kPreviewArea));
    return isShown && IsWindowEnabled(GetDlgItem(dialog, kBuildButton)) ? dialog : nullptr;
}

bool TakeViews(const StageRun& run, const PictureTaker& take, std::string* error) {
    // This stops it, too: what moves gives no picture.
    Command(run, stage::kFirstFrame);
    if (!WaitFor([&run] { return FrameText(run).find("Frame 1 of ") == 0; })) {
        *error = "Stage does not show its first frame.";
        return false;
    }
    if (!take("Stage with every effect", SettledPictureOf(run.window))) return false;
    Command(run, stage::kWipeView);
    if (!WaitFor([&run] { return IsWindowVisible(GetDlgItem(run.window, stage::kCanvas)) != FALSE; })) {
        *error = "Stage does not show its canvas.";
        return false;
    }
    return take("Stage", SettledPictureOf(run.window));
}

bool TakePlugin(const StageRun& run, const PictureTaker& take, std::string* error) {
    Command(run, stage::kEffects);
    HWND plugin = nullptr;
    if (!WaitFor([&] { return (plugin = PluginIn(run)) != nullptr; })) {
        *error = "Stage does not open the plug-in.";
        return false;
    }
    const bool taken = take("The plug-in in Stage", PictureOf(plugin));
    PressButton(plugin, kCancelButton);
    if (!WaitFor([plugin] { return !IsWindow(plugin); })) *error = "The plug-in in Stage does not close.";
    return taken && error->empty();
}

bool TakeAll(StageRun* run, const PictureTaker& take, std::string* error) {
    if (!WaitFor([run] { return HasOpened(run); })) {
        *error = "Stage does not open the sample animation.";
        return false;
    }
    return TakeViews(*run, take, error) && TakePlugin(*run, take, error);
}

// Nothing in it needs saving.
void End(const StageRun& run) {
    if (run.window) PostMessageA(run.window, WM_CLOSE, 0, 0);
    if (WaitForSingleObject(run.process.hProcess, kLongestEnd) != WAIT_OBJECT_0)
        TerminateProcess(run.process.hProcess, 1);
    WaitForSingleObject(run.process.hProcess, kLongestEnd);  // an ended program holds no file
    CloseHandle(run.process.hThread);
    CloseHandle(run.process.hProcess);
}

}  // namespace

bool ShowStage(const PictureTaker& take, std::string* error) {
    std::error_code failure;
    // Stage's title has the name; the folder is this process's alone.
    const fs::path folder =
        fs::temp_directory_path(failure) / ("kestrel-screens-" + std::to_string(GetCurrentProcessId()));
    const fs::path sample = folder / "kestrel.gif";
    if (!failure) fs::create_directory(folder, failure);
    if (failure || !WriteGif(Utf8Of(sample), DrawSampleAnimation(), error)) {
        if (error->empty()) *error = "There is no folder for temporary files.";
        return false;
    }
    StageRun run;
    bool shown = false;
    if (Start(sample, &run)) {
        shown = TakeAll(&run, take, error);
        End(run);
    } else {
        *error = "kestrel-stage.exe cannot be started.";
    }
    fs::remove_all(folder, failure);
    return shown;
}

}  // namespace kfx::screens
