// SPDX-License-Identifier: MIT
// What the plug-in asks of its host while its window is open. All of it runs on the plug-in's thread.
#include <exception>
#include <utility>

#include "commands/recipe_text.h"
#include "commands/text_windows.h"
#include "driven/plugin_controls.h"
#include "media/animation.h"
#include "stage/color_box.h"
#include "stage/file_choice.h"
#include "stage/help_browser.h"
#include "stage/plugin_host.h"
#include "stage/plugin_opening.h"
#include "stage/plugin_source.h"
#include "stage/session_progress.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"
#include "stage/steps.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

// The opening whose session answers, and the session's own answers. There is one at a time, and the host's
// function gets no context.
PluginOpening* answering = nullptr;
HostCallback answer = nullptr;

PluginOpening* OpeningOf(HostSession* session) { return static_cast<PluginOpening*>(session->user); }

bool AskForAnimation(HostSession* session, void* owner, std::string* path) {
    const PluginOpening* opening = OpeningOf(session);
    if (!SendMessageW(opening->stageWindow, kMayReplaceSource, 0, 0)) return false;
    *path = opening->dropped;
    if (!path->empty()) return true;
    return ChooseAnimationToOpen(static_cast<HWND>(owner), opening->folder, path);
}

bool AskForColor(HostSession*, void* owner, const uint8_t* palette, uint32_t* color) {
    return ChooseColorFrom(static_cast<HWND>(owner), palette, color);
}

bool ShowHelpDocument(HostSession* session, const std::string& reference) {
    return ShowHelpTopic(FolderOf(OpeningOf(session)->library->path), reference);
}

void ShowBuildProgress(HostSession* session) {
    PluginOpening* opening = OpeningOf(session);
    NoteSessionProgress(&opening->progress, opening->stageWindow, *session);
}

// The user has chosen another source in the plug-in's window.
void ShowSource(HostSession* session) {
    PluginOpening* opening = OpeningOf(session);
    auto opened = std::make_unique<OpenedSource>();
    opened->path = session->sourcePath;
    Recipe recipe;
    std::string unread;
    if (!session->source->recipe.empty() && ReadRecipe(session->source->recipe, &recipe, &unread))
        opened->settings = recipe.document;
    if (!opening->dropped.empty() && !opened->settings.lines.empty())
        ApplyLater(*opening, std::exchange(opened->settings, {}));
    opened->film = MakeFilm(*session->source, opening->pool.get());
    opening->folder = FolderOf(session->sourcePath);
    opening->originalComment = opened->film->facts.comment;
    opening->film = opened->film;
    opening->sourceFingerprint.clear();
    SendMessageW(opening->stageWindow, kPluginSource, 0, reinterpret_cast<LPARAM>(opened.release()));
}

// "Radius 5, Depth 15".
std::string SummaryOf(HWND plugin) {
    std::string summary;
    for (const Parameter& parameter : ReadParameters(plugin)) {
        summary +=
            (summary.empty() ? "" : ", ") + parameter.name + " " + ValueText(parameter, parameter.value);
    }
    return summary;
}

void HandResultOver(HostSession* session) {
    PluginOpening* opening = OpeningOf(session);
    const HWND plugin = opening->builder;
    auto step = std::make_unique<Step>();
    step->name = FromPluginText(ControlText(GetDlgItem(plugin, kEffectList)));
    step->summary = SummaryOf(plugin);
    step->settings = ReadPluginSettings(plugin);
    step->search = opening->search;
    if (opening->sourceFingerprint.empty() && opening->film)
        opening->sourceFingerprint = FingerprintOf(*opening->film);
    step->sourceFingerprint = opening->sourceFingerprint;
    step->record = std::make_shared<const SourceRecord>(session->record);
    const auto built = std::make_shared<const BuiltAnimation>(std::exchange(session->built, {}));
    step->built = built;
    step->film = MakeFilm(PlayBuilt(*built, *step->record), opening->pool.get());
    step->thumbnail = ThumbnailOf(*step->film, kThumbnailSide);
    SendMessageW(opening->stageWindow, kPluginBuilt, opening->isTest ? 1 : 0,
                 reinterpret_cast<LPARAM>(step.release()));
}

void ReportToUser(HostSession*, void* owner, const std::string& message) {
    MessageBoxW(static_cast<HWND>(owner), Widen(message).c_str(), kStageTitle, MB_OK | MB_ICONWARNING);
}

// The plug-in learns nothing of a result that does not fit: it has done its part.
void TakeResult(HostSession* session) {
    try {
        HandResultOver(session);
    } catch (const std::exception&) {
        ReportToUser(session, OpeningOf(session)->builder, "There is not enough memory to show the result.");
    }
}

// The task names the window, which may build before it has been looked at.
void NoteTask(PluginOpening* opening, bool isTest, const FileObjectRecord* task) {
    opening->isTest = isTest;
    opening->builder = task && task->size >= sizeof *task
                           ? reinterpret_cast<HWND>(static_cast<uintptr_t>(task->window))
                           : nullptr;
}

uint64_t AnswerPlugin(uint64_t context, uint32_t request, uint64_t word, uint64_t pointer) {
    PluginOpening* opening = answering;
    if (!opening) return 0;
    const InHost answers(opening);
    if (opening->crashed || opening->abandoned) return 0;
    if (IsFrameAfterStop(opening->progress, request)) {
        opening->refusing = true;
        return 0;
    }
    switch (static_cast<HostRequest>(request)) {
        case HostRequest::NewTask:
        case HostRequest::NewTestTask:
            NoteTask(opening, static_cast<HostRequest>(request) == HostRequest::NewTestTask,
                     reinterpret_cast<const FileObjectRecord*>(static_cast<uintptr_t>(pointer)));
            break;
        case HostRequest::CloseTask: {
            const uint64_t closed = answer(context, request, word, pointer);
            opening->refusing = false;
            EndBuild(&opening->progress, opening->stageWindow);
            return closed;
        }
        case HostRequest::OpenAnimation:
            opening->progress.stop = false;
            break;
        default:
            break;
    }
    return answer(context, request, word, pointer);
}

}  // namespace

void FillActions(PluginOpening* opening) {
    HostSession* session = &opening->session;
    session->user = opening;
    session->source = &opening->source;
    session->actions.chooseAnimation = AskForAnimation;
    session->actions.chooseColor = AskForColor;
    session->actions.showHelp = ShowHelpDocument;
    session->actions.showProgress = ShowBuildProgress;
    session->actions.sourceOpened = ShowSource;
    session->actions.taskClosed = TakeResult;
    session->actions.reportError = ReportToUser;
    session->offerAgain = false;
    session->keepSource = false;
}

void StandBeforeAnswers(PluginOpening* opening) {
    answering = opening;
    answer = opening->session.context.callback;
    opening->session.context.callback = AnswerPlugin;
}

}  // namespace kfx::stage
