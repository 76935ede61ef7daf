// SPDX-License-Identifier: MIT
#include "commands/direct_engine.h"

#include <new>

#include "builder/build_driver.h"
#include "commands/frame_threads.h"
#include "effects/effect_table.h"
#include "framework/number_text.h"
#include "framework/panel.h"
#include "framework/random.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "host/floating_point_state.h"
#include "host/host_requests.h"
#include "resources/palette_names.h"

namespace kfx::commands {
namespace {

struct Direct {
    EngineStart start;
    MemoryHandle source = nullptr;                     // the animation block that the session handed over
    BuildMessage message = BuildMessage::MemoryError;  // why the last build failed
};

// The request for progress, passed on to whoever watches the engine.
void ShowProgress(HostSession* session) { static_cast<Direct*>(session->user)->start.onProgress(*session); }

void* Open(const void*, const EngineStart& start, Failure* failure) {
    auto* direct = new (std::nothrow) Direct{start};
    if (!direct) {
        *failure = {kExitEngine, "there is not enough memory."};
        return nullptr;
    }
    BeginSession(start.session, start.capabilities);
    start.session->user = direct;
    if (start.onProgress) start.session->actions.showProgress = ShowProgress;
    return direct;
}

void Close(void* opened) {
    auto* direct = static_cast<Direct*>(opened);
    if (!direct) return;
    FreeMemory(direct->source);
    direct->start.session->actions.showProgress = nullptr;
    direct->start.session->user = nullptr;
    EndSession();
    delete direct;
}

std::string Name(void*) { return kPluginName; }

bool ListEffects(void*, std::vector<std::string>* names, Failure*) {
    for (size_t i = 0; i < EffectCount(); ++i) names->emplace_back(EffectAt(i)->name);
    return true;
}

std::vector<std::string> SplitItems(const std::string& text) {
    std::vector<std::string> items;
    for (size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
        end = text.find(';', start);
        items.push_back(text.substr(start, end == std::string::npos ? end : end - start));
    }
    return items;
}

// The value label of a slider stands behind it.
int ShownOffset(const EffectControl& slider) { return ShownPosition(slider.id + 1, 0); }

Parameter DescribeControl(const EffectControl& control) {
    Parameter parameter;
    parameter.control = control.id;
    parameter.value = ReadControl(control, nullptr);
    if (control.kind == ControlKind::Slider) {
        ControlRange range;
        ParseControlRange(control.text, &range);
        parameter.kind = Parameter::Slider;
        parameter.name = ShownName(control.caption);
        parameter.shownOffset = ShownOffset(control);
        parameter.minimum = range.least + parameter.shownOffset;
        parameter.maximum = range.most + parameter.shownOffset;
        parameter.value += parameter.shownOffset;
    } else if (control.kind == ControlKind::List) {
        parameter.kind = Parameter::List;
        parameter.name = ShownName(control.caption);
        parameter.items = SplitItems(control.text);
        parameter.maximum = static_cast<int>(parameter.items.size()) - 1;
    } else {
        parameter.kind = Parameter::CheckBox;
        parameter.name = ShownName(control.text);
        parameter.maximum = 1;
    }
    return parameter;
}

bool ListParameters(void*, int effect, std::vector<Parameter>* parameters, Failure*) {
    settings = Settings();
    const EffectControls& controls = EffectAt(static_cast<size_t>(effect))->controls;
    for (size_t i = 0; i < controls.count; ++i) parameters->push_back(DescribeControl(controls.rows[i]));
    return true;
}

bool ListPalettes(void*, std::vector<std::string>* names, Failure*) {
    *names = SplitItems(FIXED_PALETTE_NAMES);
    return true;
}

void DropSource(void* opened) {
    auto* direct = static_cast<Direct*>(opened);
    FreeMemory(direct->source);
    direct->source = nullptr;
}

// Takes the source from the session as the plug-in does, once.
bool SelectSource(Direct* direct, Failure* failure) {
    if (direct->source) return true;
    OpenAnimationRequest request = MakeOpenAnimationRequest(nullptr, "");
    const uint64_t block = RequestOpenAnimation(&direct->start.session->context, &request);
    direct->source = reinterpret_cast<MemoryHandle>(static_cast<uintptr_t>(block));
    if (IsSoundAnimation(direct->source)) return true;
    *failure = direct->source ? Failure{kExitEngine, "the animation that was handed over is not sound."}
                              : Failure{kExitEngine, "there is not enough memory for this animation."};
    DropSource(direct);
    return false;
}

// The settings of one build: the plug-in's own, but for what the job and the command say.
void FillSettings(const EngineStart& start, const Job& job) {
    settings = Settings();
    if (job.background != Background::Standard)
        settings.localBackgroundUse = job.background == Background::Color;
    if (job.background == Background::Color) settings.localBackgroundColor = job.backgroundColor;
    if (start.fastRemap) settings.fastRemap = 1;
    if (start.ditherBrightness >= 0)
        settings.ditherBrightness = static_cast<uint32_t>(start.ditherBrightness);
    if (start.ditherContrast >= 0) settings.ditherContrast = static_cast<uint32_t>(start.ditherContrast);
    const EffectControls& controls = EffectAt(static_cast<size_t>(job.effect))->controls;
    for (const ChosenValue& chosen : job.values) {
        for (size_t i = 0; i < controls.count; ++i) {
            if (controls.rows[i].id == chosen.parameter.control)
                *controls.rows[i].variable = chosen.value - chosen.parameter.shownOffset;
        }
    }
}

BuildOptions OptionsOf(const Job& job) {
    BuildOptions options = OptionsFromSettings();
    options.trueColor = job.paletteUse == PaletteUse::TrueColor;
    options.customPalette = job.paletteUse == PaletteUse::Computed;
    options.mostColors = job.mostColors;
    options.dither = job.dither;
    options.supercompress = job.supercompress;
    if (job.paletteUse == PaletteUse::Listed) options.paletteChoice = job.palette;
    options.addComment = job.comment;
    return options;
}

std::string SentenceOf(BuildMessage message) {
    switch (message) {
        case BuildMessage::MemoryError:
            break;
        case BuildMessage::NewTaskRefused:
            return "the result is too large for an animation.";
        case BuildMessage::ImageRefused:
            return "there is not enough memory for the result.";
    }
    return "there is not enough memory to build the result.";
}

// The build driver's window: nothing but a place for its message.
void NoteMessage(void* window, BuildMessage message) { static_cast<Direct*>(window)->message = message; }

// The second from which effects take their seed, for a scope; the clock's own without one.
struct HeldSeed {
    explicit HeldSeed(int64_t wanted)
        : seed(wanted), before(seed == kNoSeed ? kClockRuns : HoldClock(seed)) {}
    ~HeldSeed() {
        if (seed != kNoSeed) HoldClock(before);
    }
    HeldSeed(const HeldSeed&) = delete;
    HeldSeed& operator=(const HeldSeed&) = delete;

    const int64_t seed;
    const int64_t before;
};

bool Build(void* opened, const Job& job, bool, Failure* failure) {
    auto* direct = static_cast<Direct*>(opened);
    if (!SelectSource(direct, failure)) return false;
    FillSettings(direct->start, job);
    BuildEnvironment environment = {};
    environment.window = direct;
    environment.host = &direct->start.session->context;
    environment.effect = DescriptorAt(static_cast<size_t>(job.effect));
    environment.source = direct->source;
    environment.showMessage = NoteMessage;
    const int threads = direct->start.threads;
    const FrameRunner runner = FramesOnThreads(threads > 0 ? threads : UsableThreads());
    if (runner.threads > 1) environment.runner = &runner;
    environment.whole = job.whole;
    const OwnFloatingPoint core;
    const HeldSeed held(direct->start.seed);
    if (RunBuild(environment, OptionsOf(job))) return true;
    *failure = {kExitEngine, SentenceOf(direct->message)};
    return false;
}

}  // namespace

const Engine kDirectEngine = {.options = nullptr,
                              .usesThreads = true,
                              .takesSeed = true,
                              .limitsColors = true,
                              .buildsParts = true,
                              .open = Open,
                              .close = Close,
                              .name = Name,
                              .listEffects = ListEffects,
                              .listParameters = ListParameters,
                              .listPalettes = ListPalettes,
                              .dropSource = DropSource,
                              .build = Build};

}  // namespace kfx::commands
