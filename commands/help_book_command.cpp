// SPDX-License-Identifier: MIT
// kestrel help-book: the help document with pictures, of the sample or of a picture of the user's own.
#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/common_options.h"
#include "commands/frame_threads.h"
#include "commands/help_book.h"
#include "commands/parameter_help.h"
#include "commands/parser_words.h"
#include "commands/report.h"
#include "commands/resize_frame.h"
#include "commands/text.h"
#include "media/contact_sheet.h"
#include "media/file_io.h"
#include "media/sample_animation.h"

namespace kfx::commands {
namespace {

constexpr int kMostWidth = 240;
constexpr int kMostHeight = 180;
constexpr int64_t kSeed = 1;  // a book looks the same each time

// One opaque frame, no larger than the book shows it: so the effects are as easy to see as on a small
// picture.
bool MakeSmall(Animation* source, Failure* failure) {
    source->frames.resize(1);
    Frame& frame = source->frames[0];
    constexpr RgbColor kPaper = {255, 255, 255};
    if (frame.transparent) {
        MixOnto(kPaper, &frame.pixels);
        FillWith(kPaper, &frame.pixels);
        TakeAlphaOut(&frame.pixels);
        frame.transparent = false;
    }
    frame.indexed = false;
    frame.indices.clear();
    source->hasGlobalPalette = false;
    source->globalPalette.clear();
    const PictureSize size = FitPicture(source->width, source->height, kMostWidth, kMostHeight);
    if (size.width == source->width && size.height == source->height) return true;
    if (!ResizeFrame(source->width, source->height, size.width, size.height, &frame)) {
        *failure = {kExitEngine, "there is not enough memory to scale the picture."};
        return false;
    }
    source->width = size.width;
    source->height = size.height;
    return true;
}

bool ReadPicture(const CommandLine& line, Animation* source, Report* report) {
    if (!line.inputs.empty()) return ReadSource(line, 0, source, report);
    Picture picture = DrawSampleFrame(8);
    source->width = picture.width;
    source->height = picture.height;
    source->frames.resize(1);
    source->frames[0].pixels = std::move(picture.pixels);
    return true;
}

// Puts the rows behind the heading; the pictures are not needed any more then.
bool PutRows(const std::string& heading, const std::vector<PictureRow>& rows, std::string* document,
             Failure* failure) {
    const std::string html = HtmlOf(rows);
    if (!html.empty() && PutIntoDocument(heading, html, document)) return true;
    *failure = {kExitEngine, html.empty() ? "there is not enough memory for the pictures."
                                          : "the help document has no section \"" + heading + "\"."};
    return false;
}

bool MakeBook(const CommandLine& line, const CommandContext& context, HostSession* session,
              std::string* document, Failure* failure) {
    EngineStart start = PlainStart(context, session);
    start.threads = line.threads;
    start.seed = kSeed;
    const OpenEngine engine(context.engine, start, failure);
    std::vector<std::string> effects;
    if (!engine || !engine.engine.listEffects(engine.opened, &effects, failure)) return false;
    if (!PutWindowPicture(document)) {
        *failure = {kExitEngine, "the help document does not name the picture of the window."};
        return false;
    }
    PictureRow overview;
    if (!DrawOverview(engine, session, effects, &overview, failure) ||
        !PutRows("", {overview}, document, failure))
        return false;
    for (const std::string& effect : effects) {
        std::vector<PictureRow> rows;
        if (!DrawEffectRows(engine, session, effect, &rows, failure) ||
            !PutRows(effect, rows, document, failure))
            return false;
    }
    std::vector<PictureRow> rows;
    return DrawOutputRows(engine, session, &rows, failure) &&
           PutRows("Output options", rows, document, failure);
}

Report RunHelpBook(const CommandLine& line, const CommandContext& context) {
    Report report;
    Failure failure;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = line.inputs.empty() ? "sample" : SystemPath(line.inputs[0]);
    session.keepSource = true;
    if (!CheckThreads(line, context.engine, &failure)) return FailedReport(failure);
    if (!CheckOutput(line, {line.output}, &report) || !ReadPicture(line, &source, &report)) return report;
    std::string document = kHelpDocument;
    if (!MakeSmall(&source, &failure) || !MakeBook(line, context, &session, &document, &failure))
        return FailedReport(failure);
    std::string error;
    if (!WriteWholeFile(SystemPath(line.output), {document.begin(), document.end()}, &error))
        return FailedReport(kExitBadOutput, WithFolderAsGiven(error, line.output));
    report.text = line.output + ": " + std::to_string(document.size()) + " bytes.\n";
    report.result["output"] = line.output;
    report.result["bytes"] = document.size();
    return report;
}

void AddHelpBook(CLI::App* app, const OptionTarget& target) {
    CLI::App* const book =
        AddCommand(app, "help-book",
                   "Write the plug-in's help with pictures of what each control does, as one HTML file");
    AddInput(book, target.line, "input", "Picture to show the effects on (default: the sample)");
    AddReadLimit(book, target.line);
    AddOutput(book, target.line, "-o,--output", "HTML file");
    AddThreads(book, target.line, false);
    AddEngineOptions(book, target);
}

bool FinishHelpBook(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    return CheckEnding(*line, {".html", ".htm"}, error);
}

}  // namespace

const CommandRow kHelpBookCommand = {
    .name = "help-book",
    .inputs = InputUse::FirstPicture,
    .add = AddHelpBook,
    .finish = FinishHelpBook,
    .run = RunHelpBook,
    .examples = "kestrel help-book -o KFXPLUG1.HTML\nkestrel help-book PHOTO.jpg -o EFFECTS.html"};

}  // namespace kfx::commands
