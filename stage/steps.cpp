// SPDX-License-Identifier: MIT
#include "stage/steps.h"

#include <utility>

#include "commands/direct_engine.h"
#include "commands/host_session.h"
#include "commands/settings_file.h"
#include "stage/plugin_host.h"
#include "stage/plugin_opening.h"
#include "stage/plugin_source.h"
#include "stage/release_later.h"
#include "stage/session_progress.h"
#include "stage/stage.h"
#include "stage/step_recipe.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr uint64_t kLeastHistoryBytes = uint64_t{1} << 30;

// Steps may take a quarter of the machine's memory, or a gigabyte where that is more.
uint64_t MostHistoryBytes() {
    MEMORYSTATUSEX memory = {};
    memory.dwLength = sizeof memory;
    if (!GlobalMemoryStatusEx(&memory)) return kLeastHistoryBytes;
    return memory.ullTotalPhys / 4 > kLeastHistoryBytes ? memory.ullTotalPhys / 4 : kLeastHistoryBytes;
}

// What the worker makes of a step's settings, and what comes of it.
struct Repeat {
    std::shared_ptr<const Film> film;
    std::string comment;
    std::shared_ptr<FramePool> pool;
    Step step;  // with the name, the summary and the settings
    std::string error;
};

// The engine's callbacks get no context; one piece of work runs at a time.
Work* repeating = nullptr;
HostCallback answer = nullptr;

uint64_t AnswerEngine(uint64_t context, uint32_t request, uint64_t word, uint64_t pointer) {
    if (IsFrameAfterStop(repeating->progress, request)) return 0;
    return answer(context, request, word, pointer);
}

void ShowRepeat(const HostSession& session) {
    NoteSessionProgress(&repeating->progress, repeating->window, session);
}

// Why the step cannot be built again, for somebody who uses windows.
std::string RefusalOf(const Step& step) {
    return step.name +
           " cannot be repeated on this animation: it has no such palette or effect. Choose the "
           "settings in the plug-in's window.";
}

// A GIF's options are those of the window, but for true colour.
bool JobOf(const Step& step, bool ownPalette, const OpenEngine& engine, Job* job) {
    CommandLine line;
    bool isTrueColor = false;
    std::string error;
    std::vector<Job> jobs;
    Failure failure;
    if (!LineOfStep(step, "gif", {}, &line, &isTrueColor, &error) ||
        !ResolveJobs(line, ownPalette, engine.engine, engine.opened, &jobs, &failure))
        return false;
    *job = jobs.back();
    if (isTrueColor) job->paletteUse = PaletteUse::TrueColor;
    return true;
}

void BuildRepeat(Repeat* repeat) {
    Animation source = AnimationOf(*repeat->film);
    source.comment = repeat->comment;
    HostSession session;
    session.source = &source;
    EngineStart start;
    start.session = &session;
    start.onProgress = ShowRepeat;
    Failure failure;
    start.fastRemap = repeat->step.search.fast;
    start.ditherBrightness = repeat->step.search.ditherBrightness;
    start.ditherContrast = repeat->step.search.ditherContrast;
    repeat->step.sourceFingerprint = FingerprintOf(*repeat->film);
    const OpenEngine engine(kDirectEngine, start, &failure);
    Job job;
    if (!engine || !JobOf(repeat->step, HasOwnPalette(source), engine, &job)) {
        repeat->error = engine ? RefusalOf(repeat->step) : failure.error;
        return;
    }
    answer = session.context.callback;
    session.context.callback = AnswerEngine;
    if (!kDirectEngine.build(engine.opened, job, false, &failure)) {
        repeat->error = failure.error;
        return;
    }
    Step& step = repeat->step;
    step.record = std::make_shared<const SourceRecord>(std::move(session.record));
    step.built = std::make_shared<const BuiltAnimation>(std::move(session.built));
    step.film = MakeFilm(PlayBuilt(*step.built, *step.record), repeat->pool.get());
    step.thumbnail = ThumbnailOf(*step.film, kThumbnailSide);
}

void TakeRepeat(Stage* stage, Repeat* repeat) {
    repeating = nullptr;
    if (stage->work.progress.stop) {
        ShowStatus(stage, "Stopped.");
    } else if (!repeat->error.empty()) {
        ShowMessage(*stage, nullptr, repeat->error, MB_ICONWARNING);
    } else {
        TakeStep(stage, std::move(repeat->step), false);
    }
}

}  // namespace

void TakeOpened(Stage* stage, const std::string& path, std::shared_ptr<const Film> film) {
    stage->document.path = path;
    Step opened;
    opened.name = "Opened";
    opened.thumbnail = ThumbnailOf(*film, kThumbnailSide);
    opened.film = std::move(film);
    ShowStatus(stage, opened.film->facts.warning);
    ReleaseLater(StartHistory(&stage->history, std::move(opened)));
    stage->view.zoom = kZoomToFit;
    stage->view.allEffects = true;
    ShowFilmAnew(stage, PlayFrom::Start);
}

void TakeStep(Stage* stage, Step step, bool isTest) {
    History& history = stage->history;
    std::vector<Step> gone;
    if (history.test) gone.push_back(std::move(*history.test));
    history.test.reset();
    if (isTest) {
        history.test = std::move(step);
        for (Step& old : DropOldest(&history, MostHistoryBytes())) gone.push_back(std::move(old));
        ShowStatus(stage, "A test of " + history.test->name + ": keep it, or drop it.");
    } else {
        ShowStatus(stage, "");
        if (!step.settings.lines.empty())
            history.lastUse = {step.name, step.summary, step.settings, step.search};
        for (Step& old : AddStep(&history, std::move(step), MostHistoryBytes()))
            gone.push_back(std::move(old));
    }
    ReleaseLater(std::move(gone));
    stage->view.allEffects = false;  // what has been made is to be seen
    ShowFilmAnew(stage, PlayFrom::Start);
}

void GoToStep(Stage* stage, size_t step) {
    if (step >= stage->history.steps.size()) return;
    OnDropTest(stage);
    stage->history.current = step;
    ShowFilmAnew(stage, PlayFrom::HereOn);
}

void OnKeepTest(Stage* stage) {
    if (!stage->history.test) return;
    Step step = std::move(*stage->history.test);
    stage->history.test.reset();
    // The next build stands on it.
    if (IsPluginOpen(*stage)) GiveFilm(*stage->plugin.opening, step.film);
    TakeStep(stage, std::move(step), false);
}

void OnDropTest(Stage* stage) {
    if (!stage->history.test) return;
    std::vector<Step> gone;
    gone.push_back(std::move(*stage->history.test));
    stage->history.test.reset();
    ReleaseLater(std::move(gone));
    ShowStatus(stage, "");
    ShowFilmAnew(stage, PlayFrom::HereOn);
}

bool CanRepeat(const Stage& stage) {
    return stage.history.lastUse && !stage.history.steps.empty() && !IsWorking(stage) &&
           !IsPluginOpen(stage) && !stage.history.test;
}

void OnRepeatEffect(Stage* stage) {
    const EffectUse last = *stage->history.lastUse;
    auto repeat = std::make_shared<Repeat>();
    repeat->film = stage->history.steps[stage->history.current].film;
    repeat->comment = SourceFilm(stage->history)->facts.comment;
    repeat->pool = stage->document.pool;
    repeat->step.name = last.name;
    repeat->step.summary = last.summary;
    repeat->step.settings = last.settings;
    repeat->step.search = last.search;
    repeating = &stage->work;
    StartWork(
        stage, last.name, [repeat](Work*) { BuildRepeat(repeat.get()); },
        [repeat](Stage* done) { TakeRepeat(done, repeat.get()); });
}

}  // namespace kfx::stage
