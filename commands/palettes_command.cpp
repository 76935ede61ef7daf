// SPDX-License-Identifier: MIT
// kestrel palettes: a GIF under every palette, with its size.
#include <utility>

#include "commands/common_options.h"
#include "commands/frame_threads.h"
#include "commands/parser_words.h"
#include "commands/picture_size.h"
#include "commands/pipeline.h"
#include "commands/plain_build.h"
#include "commands/report.h"
#include "commands/sheet_file.h"
#include "commands/text.h"
#include "commands/text_columns.h"

namespace kfx::commands {
namespace {

constexpr PictureSize kPictureSize = {200, 150};
constexpr size_t kPerRow = 6;  // three palettes, plain and dithered

// One palette with or without dither, and what a GIF gets by it.
struct Trial {
    std::string palette;  // as --palette takes it
    bool dither = false;
    size_t colors = 0;
    size_t bytes = 0;
    std::vector<uint8_t> firstFrame;  // RGBA
};

// The computed palette first, then the source's own if it has one, then those of the plug-in.
bool ListTrials(const OpenEngine& engine, bool ownPalette, std::vector<Trial>* trials, Failure* failure) {
    std::vector<std::string> listed;
    if (!engine.engine.listPalettes(engine.opened, &listed, failure)) return false;
    std::vector<std::string> names = {"custom"};
    if (ownPalette) names.emplace_back("original");
    names.insert(names.end(), listed.begin(), listed.end());
    for (const std::string& name : names) {
        for (const bool dither : {false, true}) {
            trials->emplace_back();
            trials->back().palette = name;
            trials->back().dither = dither;
        }
    }
    return true;
}

// Builds and encodes as `apply` without an effect does.
bool Try(const OpenEngine& engine, HostSession* session, const CommandLine& given, const Animation& source,
         Trial* trial, Failure* failure) {
    CommandLine line = given;
    line.effects = {UnchangingEffect()};
    line.palette = trial->palette;
    line.dither = trial->dither;
    std::vector<Job> jobs;
    PipelineNotes ignored;
    PipelineOptions options;
    options.halfTransparency = HalfTransparency::Threshold;
    *session->source = source;
    SettleHalfTransparency(options, session->source, &ignored);
    engine.engine.dropSource(engine.opened);
    if (!ResolveJobs(line, HasOwnPalette(source), engine.engine, engine.opened, &jobs, failure) ||
        !RunJobs(engine, session, std::move(jobs), options, &ignored, failure)) {
        return false;
    }
    trial->colors = CountColors(session->built, session->record);
    trial->firstFrame = PlayBuilt(session->built, session->record).frames.front().pixels;
    std::vector<uint8_t> file;
    std::string error;
    const GifOptions writing{.jobs = JobsOnThreads(line.threads)};
    if (!EncodeGif(MakeGif(std::move(session->built), session->record, writing.jobs), &file, &error,
                   writing)) {
        *failure = {kExitEngine, "the GIF cannot be made: " + error + "."};
        return false;
    }
    trial->bytes = file.size();
    return true;
}

std::string ShownName(const Trial& trial) {
    if (trial.palette == "custom") return "Custom";
    return trial.palette == "original" ? "Original" : trial.palette;
}

std::string Describe(const std::vector<Trial>& trials) {
    std::string text = "Palette                   Plain bytes  Colors   Dithered bytes  Colors\n";
    for (size_t i = 0; i + 1 < trials.size(); i += 2) {
        const Trial& plain = trials[i];
        const Trial& dithered = trials[i + 1];
        text += AtLeft(24, ShownName(plain)) + AtRight(13, plain.bytes) + AtRight(8, plain.colors) +
                AtRight(17, dithered.bytes) + AtRight(8, dithered.colors) + "\n";
    }
    return text;
}

Picture DrawTrials(const std::string& title, const std::vector<Trial>& trials, const Animation& source,
                   PictureSize most) {
    const int times = TimesAsLarge(source.width, source.height, most.width, most.height);
    const auto pictureOf = [&](const std::vector<uint8_t>& pixels, const std::string& label,
                               const std::string& note) {
        return SheetPicture{source.width, source.height, pixels.data(), label, times, note};
    };
    std::vector<SheetRow> rows(1);
    rows[0].pictures.push_back(pictureOf(source.frames.front().pixels, "Source", ""));
    for (const Trial& trial : trials) {
        const bool isListed = trial.palette != "custom" && trial.palette != "original";
        const bool isFirstRow = rows.size() == 1;
        if (isListed && (isFirstRow || rows.back().pictures.size() == kPerRow)) rows.emplace_back();
        rows.back().pictures.push_back(pictureOf(trial.firstFrame,
                                                 ShownName(trial) + (trial.dither ? ", dithered" : ""),
                                                 std::to_string(trial.bytes) + " bytes"));
    }
    return DrawContactSheet(title, rows, most.width, most.height);
}

Report RunPalettes(const CommandLine& line, const CommandContext& context) {
    Report report;
    Animation source, working;
    HostSession session;
    session.source = &working;
    session.sourcePath = SystemPath(line.inputs[0]);
    Failure failure;
    if (!CheckThreads(line, context.engine, &failure)) return FailedReport(failure);
    if (!line.output.empty() && !CheckOutput(line, {line.output}, &report)) return report;
    if (!ReadSource(line, 0, &source, &report)) return report;
    std::vector<Trial> trials;
    {
        EngineStart start = PlainStart(context, &session);
        start.threads = line.threads;
        start.capabilities = kHostTakesSupercompressed;
        const OpenEngine engine(context.engine, start, &failure);
        if (!engine || !ListTrials(engine, HasOwnPalette(source), &trials, &failure))
            return FailedReport(failure);
        for (Trial& trial : trials) {
            if (!Try(engine, &session, line, source, &trial, &failure)) return FailedReport(failure);
        }
    }
    report.result["input"] = line.inputs[0];
    report.result["palettes"] = nlohmann::ordered_json::array();
    for (const Trial& trial : trials) {
        report.result["palettes"].push_back({{"name", trial.palette},
                                             {"dither", trial.dither},
                                             {"colors", trial.colors},
                                             {"bytes", trial.bytes}});
    }
    const std::string list = Describe(trials);
    report.text = list;
    if (line.output.empty()) return report;
    PictureSize size = kPictureSize;
    ParsePictureSize(line.look.pictureSize, &size);
    const std::string title = FileNameOf(line.sources[0].files[0]) + " as a GIF";
    report = WriteSheet(DrawTrials(title, trials, source, size), line.output, std::move(report));
    if (report.error.empty()) report.text.insert(0, list);
    return report;
}

void AddPalettes(CLI::App* app, const OptionTarget& target) {
    CLI::App* const palettes = AddCommand(
        app, "palettes", "Show a GIF under every palette, plain and dithered, and how many bytes it takes");
    RequireOption(AddInput(palettes, target.line, "input", "Picture or animation"));
    AddJoinOptions(palettes, target.line);
    AddReadLimit(palettes, target.line);
    AddOptionalOutput(palettes, target.line, "-o,--output", "PNG file: a sheet of the first frame");
    AddPictureSize(palettes, target.line, "200x150");
    AddThreads(palettes, target.line, false);
    AddEngineOptions(palettes, target);
    SetFooter(palettes,
              "The bytes are those of whole GIF files, as kestrel apply writes them; no GIF is kept.");
}

bool FinishPalettes(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    return (line->output.empty() || CheckEnding(*line, {".png"}, error)) &&
           CheckPictureSize(line->look.pictureSize, error);
}

}  // namespace

const CommandRow kPalettesCommand = {.name = "palettes",
                                     .inputs = InputUse::OneAnimation,
                                     .add = AddPalettes,
                                     .finish = FinishPalettes,
                                     .run = RunPalettes,
                                     .examples = "kestrel palettes IN.gif -o SHEET.png"};

}  // namespace kfx::commands
