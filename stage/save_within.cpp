// SPDX-License-Identifier: MIT
// Saving within a size: several files are looked for on the worker, and one of them is chosen.
#include <limits>
#include <utility>

#include "commands/build_steps.h"
#include "commands/direct_engine.h"
#include "commands/text_windows.h"
#include "media/file_io.h"
#include "media/readers.h"
#include "stage/canvas_drawing.h"
#include "stage/choice_box.h"
#include "stage/choice_text.h"
#include "stage/document.h"
#include "stage/file_choice.h"
#include "stage/stage.h"
#include "stage/step_recipe.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr int kWays = 4;  // that are looked at, as a rule
constexpr const char* kNumbers[kMostFitChoices + 1] = {"No", "One", "Two", "Three", "Four"};

struct SizeSearch {
    Step step;          // shares its pixels with the history's
    std::string input;  // the opened file
    std::shared_ptr<FramePool> pool;
    WantedSize size;
    uint64_t mostBytes = 0;
    FitChoices choices;
    std::vector<std::shared_ptr<const Film>> films;  // of the choices, as their files play
    std::string error;
};

bool ReadFilms(SizeSearch* search) {
    ReadLimits limits;
    limits.maxPixels = std::numeric_limits<uint64_t>::max();
    for (const FitChoice& choice : search->choices.found) {
        Animation played;
        const std::vector<uint8_t>& file = choice.trial.file;
        if (!ReadAnimationFromMemory(file.data(), file.size(), &played, &search->error, limits)) return false;
        search->films.push_back(MakeFilm(std::move(played), search->pool.get()));
    }
    return true;
}

void FindFiles(SizeSearch* search, Work* work) {
    Animation source = AnimationOf(*search->step.film);
    HostSession session;
    session.source = &source;
    CommandLine line;
    Failure failure;
    const std::vector<std::string> words = {"apply", "in.gif", "-o", "out.gif",
                                            "--max-size=" + std::to_string(search->mostBytes)};
    if (ParseCommandLine(words, {}, &line, &search->error) != ParseOutcome::Run) return;
    // The file keeps how the step was made, and what was given up for its size.
    const auto optionsOf = [search](const CommandLine& plain) {
        ResultOptions options = ResultOptionsOf(plain);
        if (!search->step.settings.lines.empty())
            options.recipe = DraftStepRecipe(search->step, "gif", plain.recipe.kept);
        return options;
    };
    FitWay last = FitWay::Colors;
    int done = 0;
    const auto tell = [&](FitWay way, const FitSettings& settings) {
        if (way != last) done = std::min(done + 1, kWays - 1);
        last = way;
        NoteProgress(&work->progress, work->window, NameOfWay(way) + ": " + ChangesText(settings), done,
                     kWays);
    };
    const FitSteps steps = {PipelineOptionsOf, optionsOf, commands::StartOf, &work->progress.stop};
    if (!FindFitChoices(line, {.engine = kDirectEngine}, steps, &session, tell, &search->choices, &failure) ||
        !ReadFilms(search))
        search->error = failure.error.empty() ? search->error : failure.error;
}

std::string NothingFits(const SizeSearch& search) {
    const std::string size = TextOfSize(search.size);
    if (search.choices.fewestBytes == 0) return "Nothing could be tried with these frames.";
    return "Nothing fits into " + size + ": the smallest file that was tried has " +
           SizeText(search.choices.fewestBytes) + ". Take a larger size.";
}

// What the user should know about the choice.
std::string SentenceOf(const SizeSearch& search) {
    const FitChoices& choices = search.choices;
    const std::string size = TextOfSize(search.size);
    if (choices.isUnchanged) return "It fits into " + size + " as it is: nothing has to be given up.";
    std::string text = choices.found.size() == 1
                           ? "Only one file fits into " + size + "."
                           : kNumbers[choices.found.size()] + std::string(" files fit into ") + size +
                                 "; each gives up something else.";
    if (choices.found.size() > 1 && choices.found.size() < kMostFitChoices)
        text += " Other ways lead to larger files.";
    for (const FitChoice& choice : choices.found) {
        if (!choice.trial.notes.thresholdApplied) continue;
        text += " Half-transparent pixels become opaque or hidden in a GIF.";
        break;
    }
    return text;
}

std::string Capital(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
}

OfferedFile OfferedFileOf(const SizeSearch& search, size_t number, bool isBest) {
    const FitChoice& choice = search.choices.found[number];
    const FitTrial& trial = choice.trial;
    OfferedFile file;
    file.film = search.films[number];
    file.name = search.choices.isUnchanged ? "As it is" : NameOfWay(choice.way);
    if (isBest) file.name += ", looks best";
    file.lines = {SizeText(trial.bytes) + " (" + ByteCountText(trial.bytes) + ")", FactsText(trial),
                  Capital(ChangesText(trial.settings))};
    file.whole = ChoiceText(choice);
    return file;
}

// What the worker writes.
struct ChoiceWriting {
    std::shared_ptr<SizeSearch> search;
    size_t number = 0;
    std::string path;
    std::string error;
    bool isWritten = false;
};

void WriteChoice(ChoiceWriting* writing) {
    const std::vector<uint8_t>& file = writing->search->choices.found[writing->number].trial.file;
    // The dialog has asked whether the file may be replaced.
    writing->isWritten = MayWriteFile(writing->path, {writing->search->input}, true, &writing->error) &&
                         WriteWholeFile(writing->path, file, &writing->error);
}

// Asks for a name and writes the file that was chosen. True: it is written.
bool SaveChoice(Stage* stage, const std::shared_ptr<SizeSearch>& search, HWND box, size_t number) {
    if (IsWorking(*stage)) return false;
    auto writing = std::make_shared<ChoiceWriting>();
    writing->search = search;
    writing->number = number;
    writing->path = SuggestedPath(*stage, "small.gif");
    if (!ChooseFileToSave(box, SaveKind::Gif, &writing->path)) return false;
    StartWork(
        stage, "Writing " + FileNameOf(writing->path), [writing](Work*) { WriteChoice(writing.get()); },
        [](Stage*) {});
    WaitForWork(stage);
    if (!writing->isWritten) {
        if (!writing->error.empty()) ShowMessage(*stage, box, writing->error, MB_ICONERROR);
        return false;
    }
    MarkSaved(stage, search->step);
    RememberFile(&stage->remembered, AbsolutePath(writing->path));
    ShowStatus(stage, "Saved " + FileNameOf(writing->path) + ", " +
                          SizeText(search->choices.found[number].trial.bytes));
    return true;
}

void OfferFiles(Stage* stage, const std::shared_ptr<SizeSearch>& search) {
    const FitChoices& choices = search->choices;
    Offer offer;
    offer.sentence = SentenceOf(*search);
    offer.ground = GroundOf(*stage);
    for (size_t i = 1; i < choices.found.size(); ++i) {
        if (choices.found[i].trial.look > choices.found[offer.first].trial.look) offer.first = i;
    }
    const bool isChoice = choices.found.size() > 1;
    for (size_t i = 0; i < choices.found.size(); ++i)
        offer.files.push_back(OfferedFileOf(*search, i, isChoice && i == offer.first));
    offer.take = [stage, search](HWND box, size_t number) { return SaveChoice(stage, search, box, number); };
    ShowOffer(stage->window, offer);
}

void TakeFiles(Stage* stage, const std::shared_ptr<SizeSearch>& search) {
    ShowStatus(stage, "");
    if (stage->work.progress.stop)
        ShowStatus(stage, "Stopped.");
    else if (!search->error.empty())
        ShowMessage(*stage, nullptr, "The search has failed: " + search->error, MB_ICONERROR);
    else if (search->choices.found.empty())
        ShowMessage(*stage, nullptr, NothingFits(*search), MB_ICONINFORMATION);
    else
        OfferFiles(stage, search);
}

}  // namespace

void OnSaveWithin(Stage* stage) {
    const History& history = stage->history;
    if (history.steps.empty() || IsWorking(*stage)) return;
    if (!AskForSize(stage->window, &stage->document.wantedSize)) return;
    auto search = std::make_shared<SizeSearch>();
    search->step = history.steps[history.current];
    search->input = stage->document.path;
    search->pool = stage->document.pool;
    search->size = stage->document.wantedSize;
    if (!BytesOfSize(search->size, &search->mostBytes)) return;
    StartWork(
        stage, "Looking for files within " + TextOfSize(search->size),
        [search](Work* work) { FindFiles(search.get(), work); },
        [search](Stage* done) { TakeFiles(done, search); });
}

}  // namespace kfx::stage
