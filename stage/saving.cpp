// SPDX-License-Identifier: MIT
// Results on their way into files, and frames onto the clipboard.
#include <algorithm>
#include <utility>

#include "commands/command_line.h"
#include "commands/result_files.h"
#include "commands/text_windows.h"
#include "media/animation_writer.h"
#include "stage/clipboard.h"
#include "stage/document.h"
#include "stage/file_choice.h"
#include "stage/stage.h"
#include "stage/step_recipe.h"

namespace kfx::stage {

using namespace commands;

namespace {

// What the worker writes.
struct Writing {
    std::string path;
    Step step;  // shares its pixels with the history's
    std::string input;
    std::vector<std::string> files;
    std::string error;  // empty: done
};

void WriteStep(Writing* writing) {
    const Step& step = writing->step;
    ResultOptions options;
    // Single frames are what Export is for.
    if (EndingOf(writing->path) == ".png") options.format = "apng";
    const std::string format = options.format.empty() ? EndingOf(writing->path).substr(1) : options.format;
    options.recipe = DraftStepRecipe(step, format);
    const auto files = ResultPaths(writing->path, step.built->frames.size(), options.format);
    WrittenResult written;
    // The dialog has asked whether the chosen file may be replaced.
    if (MayWriteResult(files, {writing->input}, true, &writing->error) &&
        WriteResult(writing->path, *step.built, *step.record, options, &written, &writing->error))
        writing->files = written.files;
}

bool TakeWritten(Stage* stage, const Writing& writing) {
    if (writing.files.empty()) {
        ShowStatus(stage, "");
        ShowMessage(*stage, nullptr, writing.error, MB_ICONERROR);
        return false;
    }
    MarkSaved(stage, writing.step);
    RememberFile(&stage->remembered, AbsolutePath(writing.path));
    ShowStatus(stage, "Saved " + FileNameOf(writing.files.front()));
    return true;
}

void WriteFrames(Writing* writing) {
    const Animation animation = AnimationOf(*writing->step.film);
    writing->files = PngFramePaths(writing->path, animation.frames.size());
    if (!MayWriteResult(writing->files, {writing->input}, true, &writing->error) ||
        !WritePngFrames(writing->path, animation, &writing->error))
        writing->files.clear();
}

void TakeExported(Stage* stage, const Writing& writing) {
    if (writing.files.empty()) {
        ShowStatus(stage, "");
        ShowMessage(*stage, nullptr, writing.error, MB_ICONERROR);
        return;
    }
    const std::string first = FileNameOf(writing.files.front()), last = FileNameOf(writing.files.back());
    ShowStatus(stage, "Exported " + first + (first == last ? "" : " to " + last));
}

}  // namespace

std::string SuggestedPath(const Stage& stage, const std::string& ending) {
    const std::string name = FileNameOf(stage.document.path);
    return FolderOf(stage.document.path) + name.substr(0, name.find_last_of('.')) + "-" + ending;
}

void MarkSaved(Stage* stage, const Step& saved) {
    for (Step& step : stage->history.steps) {
        if (step.built && step.built == saved.built) step.saved = true;
    }
}

bool SaveResultAs(Stage* stage) {
    const History& history = stage->history;
    if (history.current == 0 || IsWorking(*stage)) return false;
    auto writing = std::make_shared<Writing>();
    writing->path = SuggestedPath(*stage, "result.gif");
    writing->step = history.steps[history.current];
    writing->input = stage->document.path;
    if (!ChooseFileToSave(stage->window, SaveKind::Animation, &writing->path)) return false;
    const auto saved = std::make_shared<bool>(false);
    StartWork(
        stage, "Writing " + FileNameOf(writing->path), [writing](Work*) { WriteStep(writing.get()); },
        [writing, saved](Stage* done) { *saved = TakeWritten(done, *writing); }, WhenStopped::IsLeft);
    WaitForWork(stage);
    return *saved;
}

void ExportFrames(Stage* stage) {
    const Film* film = ShownFilm(stage->history);
    if (!film || IsWorking(*stage)) return;
    auto writing = std::make_shared<Writing>();
    writing->path = SuggestedPath(*stage, "frame.png");
    writing->input = stage->document.path;
    const Step* shown = ShownStep(stage->history);
    writing->step = shown ? *shown : stage->history.steps.front();
    if (!ChooseFileToSave(stage->window, SaveKind::Frames, &writing->path)) return;
    const auto files = PngFramePaths(writing->path, film->frames.size());
    if (files.size() > 1 && AnyExists(files) &&
        MessageBoxW(stage->window, L"Some of the frames' files exist already. Replace them?", kStageTitle,
                    MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    StartWork(
        stage, "Writing " + std::to_string(files.size()) + " frames",
        [writing](Work*) { WriteFrames(writing.get()); },
        [writing](Stage* done) { TakeExported(done, *writing); }, WhenStopped::IsLeft);
}

void CopyShownFrame(Stage* stage) {
    const Film* film = ShownFilm(stage->history);
    if (!film || film->frames.empty()) return;
    const size_t frame = std::min(stage->playback.frame, film->frames.size() - 1);
    const SIZE size = {film->facts.width, film->facts.height};
    const auto picture = std::make_shared<ClipboardPicture>();
    // Compressing a large frame takes longer than the window may wait.
    StartWork(
        stage, "Copying frame " + std::to_string(frame + 1),
        [picture, size, pixels = film->frames[frame].pixels](Work*) {
            *picture = MakeClipboardPicture(pixels->data(), size);
        },
        [picture, frame](Stage* done) {
            const bool copied = PutOnClipboard(done->window, *picture);
            ShowStatus(done, copied ? "Copied frame " + std::to_string(frame + 1)
                                    : "The clipboard is in use by another program; copy once more.");
        },
        WhenStopped::IsLeft);
}

}  // namespace kfx::stage
