// SPDX-License-Identifier: MIT
#include "driven/driven_engine.h"

#include <memory>
#include <utility>

#include "commands/text_windows.h"
#include "commands/child_process.h"
#include "driven/command_settings.h"
#include "driven/folder_answers.h"
#include "driven/plugin_run.h"

namespace kfx::driven {

using namespace commands;

namespace {

// The plug-in's settings for one command: its own defaults, whatever the user chose in the window the last
// time, so that the same command gives the same file on each machine. Only what has no control is written
// here; usually nothing.
std::string SettingsFor(const EngineStart& start) {
    std::string text;
    const auto add = [&text](const char* key, int value) {
        text += std::string(key) + " = " + std::to_string(value) + "\r\n";
    };
    if (start.fastRemap) add("FastRemap", 1);
    if (start.ditherBrightness >= 0) add("DitherBrightness", start.ditherBrightness);
    if (start.ditherContrast >= 0) add("DitherContrast", start.ditherContrast);
    return text.empty() ? text : "[PlugIn]\r\n" + text;
}

std::wstring CurrentFolder() {
    std::wstring folder(GetCurrentDirectoryW(0, nullptr), L'\0');
    folder.resize(GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data()));
    return folder;
}

// What the plug-in shows beyond the picture's edges by itself, once a job has changed it.
struct StandardBackground {
    bool changed = false;
    bool local = false;  // its own colour, not the source's
    uint32_t color = 0;
};

// A plug-in's open window.
struct Driven {
    explicit Driven(const EngineStart& start) : settings(SettingsFor(start)) {}
    ~Driven();
    Driven(const Driven&) = delete;
    Driven& operator=(const Driven&) = delete;

    CommandSettings settings;
    PluginLibrary library;
    PluginRun run;
    std::wstring folder = CurrentFolder();  // a plug-in may change it, and relative names mean this one
    int effect = -1;                        // the row that has been chosen
    bool sourceSelected = false;
    StandardBackground background;
};

Driven::~Driven() {
    const bool ended = ClosePluginWindow(&run);
    SetCurrentDirectoryW(folder.c_str());
    EndSession();
    // Code that still runs must stay loaded; it ends with the process.
    if (!ended) library.module = nullptr;
}

// A window that has stopped answering is the reason for whatever else went wrong.
bool Fail(Driven* driven, Failure* failure) {
    StillAnswers(&driven->run);
    *failure = driven->run.failure;
    return false;
}

bool OpenWindow(const DrivenOptions& options, const EngineStart& start, Driven* driven) {
    PluginRun* run = &driven->run;
    run->library = &driven->library;
    run->session = start.session;
    run->showWindow = options.showWindow;
    run->timeoutSeconds = options.timeoutSeconds;
    run->onWait = start.onProgress;
    run->failure = {kExitEngine, driven->settings.error};
    const std::string path = options.plugin.empty() ? DefaultPluginPath() : SystemPath(options.plugin);
    TellOfPlugin();
    if (!run->failure.error.empty() ||
        !LoadPlugin(path, AnswerFolderLookups, &driven->library, &run->failure.error)) {
        return false;
    }
    run->failure = {};
    if (!OpenPluginWindow(run)) return false;
    if (driven->settings.taken) return true;
    run->failure = {kExitEngine, "the plug-in has not read the settings that have no control in its window."};
    return false;
}

void* Open(const void* options, const EngineStart& start, Failure* failure) {
    BeginSession(start.session, start.capabilities);
    auto driven = std::make_unique<Driven>(start);
    if (OpenWindow(*static_cast<const DrivenOptions*>(options), start, driven.get())) return driven.release();
    Fail(driven.get(), failure);
    return nullptr;
}

void Close(void* opened) { delete static_cast<Driven*>(opened); }

std::string Name(void* opened) { return static_cast<Driven*>(opened)->library.name; }

bool ListRowsOf(Driven* driven, int list, std::vector<std::string>* names, Failure* failure) {
    *names = ListRows(GetDlgItem(driven->run.window, list));
    return StillAnswers(&driven->run) || Fail(driven, failure);
}

bool ListEffects(void* opened, std::vector<std::string>* names, Failure* failure) {
    return ListRowsOf(static_cast<Driven*>(opened), kEffectList, names, failure);
}

bool ListPalettes(void* opened, std::vector<std::string>* names, Failure* failure) {
    return ListRowsOf(static_cast<Driven*>(opened), kPaletteList, names, failure);
}

bool ChooseEffect(Driven* driven, int effect) {
    if (driven->effect == effect) return true;
    if (!ChooseRow(&driven->run, kEffectList, effect)) return false;
    driven->effect = effect;
    return true;
}

bool ListParameters(void* opened, int effect, std::vector<Parameter>* parameters, Failure* failure) {
    auto* driven = static_cast<Driven*>(opened);
    if (!ChooseEffect(driven, effect)) return Fail(driven, failure);
    *parameters = ReadParameters(driven->run.window);
    return StillAnswers(&driven->run) || Fail(driven, failure);
}

bool SetValues(PluginRun* run, const std::vector<ChosenValue>& values) {
    for (const ChosenValue& chosen : values) {
        if (SetParameterValue(run->window, chosen.parameter, chosen.value)) continue;
        run->failure = {kExitEngine, "the plug-in does not take " + chosen.parameter.name + "=" +
                                         ValueText(chosen.parameter, chosen.value) + "."};
        return false;
    }
    return true;
}

// The answer for when the plug-in's colour button asks; the colour before it comes back in the same place.
bool AnswerColor(HostSession* session, void*, const uint8_t*, uint32_t* color) {
    std::swap(*color, *static_cast<uint32_t*>(session->user));
    return true;
}

// Gives the plug-in a background colour and returns the one that it had.
uint32_t ExchangeColor(PluginRun* run, uint32_t color) {
    run->session->actions.chooseColor = AnswerColor;
    run->session->user = &color;
    Notify(run->window, GetDlgItem(run->window, kBackgroundButton), BN_CLICKED);
    run->session->actions.chooseColor = nullptr;
    run->session->user = nullptr;
    return color;
}

constexpr char kLocalBackground[] = "Local background";

bool SetBackground(Driven* driven, const Job& job) {
    PluginRun* run = &driven->run;
    StandardBackground* standard = &driven->background;
    if (!standard->changed && job.background == Background::Standard) return true;
    const bool back = job.background == Background::Standard;
    const bool wasLocal = Send(FindOption(run->window, kLocalBackground), BM_GETCHECK) == BST_CHECKED;
    if (!SetOption(run, kLocalBackground, true)) return false;
    const uint32_t before = ExchangeColor(run, back ? standard->color : job.backgroundColor);
    if (!standard->changed) *standard = {true, wasLocal, before};
    return SetOption(run, kLocalBackground, back ? standard->local : job.background == Background::Color);
}

bool SetOptions(Driven* driven, const Job& job) {
    PluginRun* run = &driven->run;
    return SetOption(run, "True color", job.paletteUse == PaletteUse::TrueColor) &&
           SetOption(run, "Dither", job.dither) && SetOption(run, "Supercompress", job.supercompress) &&
           SetOption(run, "Add comment", job.comment) && SetBackground(driven, job);
}

// A palette from the list can be chosen while "Custom palette" is on, and is used when it is off.
bool ChoosePalette(PluginRun* run, const Job& job) {
    if (job.paletteUse == PaletteUse::TrueColor) return SetOption(run, "Custom palette", false);
    if (!SetOption(run, "Custom palette", true)) return false;
    return job.paletteUse == PaletteUse::Computed ||
           (ChooseRow(run, kPaletteList, job.palette) && SetOption(run, "Custom palette", false));
}

bool Drive(Driven* driven, const Job& job, bool more) {
    PluginRun* run = &driven->run;
    if (!ChooseEffect(driven, job.effect) || !SetValues(run, job.values) || !SetOptions(driven, job))
        return false;
    if (!driven->sourceSelected && !SelectSource(run)) return false;
    driven->sourceSelected = true;
    // The row for the source's own palette comes with the source.
    return ChoosePalette(run, job) && (more ? PressTest(run) : PressBuild(run));
}

void DropSource(void* opened) { static_cast<Driven*>(opened)->sourceSelected = false; }

bool Build(void* opened, const Job& job, bool more, Failure* failure) {
    auto* driven = static_cast<Driven*>(opened);
    return Drive(driven, job, more) || Fail(driven, failure);
}

}  // namespace

Engine MakeDrivenEngine(const DrivenOptions* options) {
    return {.options = options,
            .takesSeed = false,
            .limitsColors = false,
            .open = Open,
            .close = Close,
            .name = Name,
            .listEffects = ListEffects,
            .listParameters = ListParameters,
            .listPalettes = ListPalettes,
            .dropSource = DropSource,
            .build = Build};
}

}  // namespace kfx::driven
