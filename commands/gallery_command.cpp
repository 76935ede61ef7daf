// SPDX-License-Identifier: MIT
// kestrel gallery: a picture under every effect, or an animation.
#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/common_options.h"
#include "commands/frame_threads.h"
#include "commands/gallery_wall.h"
#include "commands/parser_words.h"
#include "commands/picture_size.h"
#include "commands/pipeline.h"
#include "commands/plain_build.h"
#include "commands/recipe_options.h"
#include "commands/report.h"
#include "commands/result_files.h"
#include "commands/sheet_file.h"
#include "commands/stages.h"
#include "commands/text.h"
#include "media/sample_animation.h"

namespace kfx::commands {
namespace {

constexpr int kColumns = 7;
constexpr int kMostColumns = 21;  // the source and twenty effects
constexpr PictureSize kSheetSize = {200, 150};
constexpr PictureSize kWallSize = {160, 120};

bool IsWall(const CommandLine& line) { return EndingOf(line.output) != ".png"; }

int ColumnsOf(const CommandLine& line) { return line.look.columns > 0 ? line.look.columns : kColumns; }

PictureSize SizeOf(const CommandLine& line) {
    PictureSize size = IsWall(line) ? kWallSize : kSheetSize;
    ParsePictureSize(line.look.pictureSize, &size);
    return size;
}

SheetPicture PictureOf(const Animation& animation, const std::string& label, PictureSize most) {
    return {animation.width,
            animation.height,
            animation.frames.front().pixels.data(),
            label,
            TimesAsLarge(animation.width, animation.height, most.width, most.height),
            ""};
}

Animation DrawSample(int frames) {
    Animation sample;
    sample.loopCount = kLoopForever;
    for (int i = 0; i < frames; ++i) {
        Picture picture = DrawSampleFrame(i);
        sample.width = picture.width;
        sample.height = picture.height;
        Frame frame;
        frame.pixels = std::move(picture.pixels);
        frame.delay = kSampleDelay;
        sample.frames.push_back(std::move(frame));
    }
    return sample;
}

// A gallery looks the same each time.
constexpr int64_t kSeed = 1;

EngineStart StartFor(const CommandLine& line, const CommandContext& context, HostSession* session) {
    EngineStart start = PlainStart(context, session);
    start.threads = line.threads;
    start.seed = line.recipe.seed == kNoSeed ? kSeed : line.recipe.seed;
    return start;
}

// The file, or the sample; of either only the first frame where a sheet is drawn.
bool ReadGallerySource(const CommandLine& line, Animation* source, Report* report) {
    if (line.inputs.empty()) {
        *source = DrawSample(IsWall(line) ? kSampleFrameCount : 1);
        return true;
    }
    if (!ReadSource(line, 0, source, report)) return false;
    if (!IsWall(line)) source->frames.resize(1);
    return true;
}

// The session's source after the job; it is still there then. The alpha of a transparent one follows.
bool BuildPicture(const OpenEngine& engine, HostSession* session, const Job& job, bool more,
                  Animation* result, Failure* failure) {
    if (HasAlpha(*session->source)) {
        const Animation source = *session->source;
        *result = source;
        if (!RunStage(engine, session, job, result, failure)) return false;
        *session->source = source;
        return true;
    }
    if (!engine.engine.build(engine.opened, job, more, failure)) return false;
    *result = PlayBuilt(session->built, session->record);
    return true;
}

// One picture an effect, all colours.
bool BuildEveryEffect(const OpenEngine& engine, HostSession* session, const std::vector<std::string>& names,
                      std::vector<Animation>* results, Failure* failure) {
    for (size_t i = 0; i < names.size(); ++i) {
        Job job;
        Animation result;
        if (!ResolveEffectJob({names[i], {}}, engine.engine, engine.opened, &job, failure)) return false;
        ChoosePictureValues(names[i], &job);
        if (!BuildPicture(engine, session, job, i + 1 < names.size(), &result, failure)) return false;
        results->push_back(std::move(result));
    }
    return true;
}

std::string TitleOf(const OpenEngine& engine) { return engine.engine.name(engine.opened) + ": its effects"; }

Report DrawStill(const CommandLine& line, const CommandContext& context, HostSession* session,
                 Report report) {
    const Animation source = *session->source;
    std::vector<Animation> results;
    std::vector<std::string> names;
    std::string title;
    Failure failure;
    {
        const OpenEngine engine(context.engine, StartFor(line, context, session), &failure);
        if (!engine || !engine.engine.listEffects(engine.opened, &names, &failure) ||
            !BuildEveryEffect(engine, session, names, &results, &failure))
            return FailedReport(failure);
        title = TitleOf(engine);
    }
    const PictureSize size = SizeOf(line);
    std::vector<SheetPicture> pictures = {PictureOf(source, "Source", size)};
    for (size_t i = 0; i < results.size(); ++i) pictures.push_back(PictureOf(results[i], names[i], size));
    report.result["effects"] = names;
    const Picture sheet = DrawGallery(title, pictures, ColumnsOf(line), size.width, size.height);
    return WriteSheet(sheet, line.output, std::move(report));
}

// A GIF gets one palette for all effects and frames, dithered: twenty effects have more colours than it
// holds.
bool BuildWallFile(const OpenEngine& engine, HostSession* session, Wall* wall, bool isGif, Failure* failure) {
    if (!isGif) {
        session->record = MakeSourceRecord(wall->animation);
        session->built = PlainBuild(&wall->animation);
        return true;
    }
    Job job;
    if (!ResolveEffectJob(UnchangingEffect(), engine.engine, engine.opened, &job, failure)) return false;
    job.paletteUse = PaletteUse::Computed;
    job.dither = true;
    CompleteValues(&job);
    *session->source = std::move(wall->animation);
    session->keepSource = false;
    engine.engine.dropSource(engine.opened);
    if (!engine.engine.build(engine.opened, job, false, failure)) return false;
    CleanGround(wall->ground, wall->places, &session->built);
    return true;
}

Report WriteWall(const CommandLine& line, const std::vector<std::string>& names, HostSession* session,
                 Report report) {
    const size_t frames = session->built.frames.size();
    const int width = session->built.width, height = session->built.height;
    WrittenResult written;
    std::string error;
    ResultOptions options;
    options.gif.jobs = options.png.jobs = options.webp.jobs = JobsOnThreads(line.threads);
    if (!WriteResult(line.output, std::move(session->built), session->record, options, &written, &error))
        return FailedReport(kExitBadOutput, error);
    if (!written.note.empty()) report.notes.push_back(line.output + ": " + written.note + ".");
    report.text = line.output + ": " + std::to_string(width) + " x " + std::to_string(height) + ", " +
                  std::to_string(frames) + (frames == 1 ? " frame, " : " frames, ") +
                  std::to_string(written.bytes) + " bytes.\n";
    report.result.update({{"effects", names},
                          {"output", line.output},
                          {"width", width},
                          {"height", height},
                          {"frames", frames},
                          {"bytes", written.bytes}});
    return report;
}

Report DrawAnimated(const CommandLine& line, const CommandContext& context, HostSession* session,
                    Report report) {
    std::vector<std::string> names;
    Wall wall;
    Failure failure;
    const PictureSize size = SizeOf(line);
    {
        const OpenEngine engine(context.engine, StartFor(line, context, session), &failure);
        if (!engine || !engine.engine.listEffects(engine.opened, &names, &failure))
            return FailedReport(failure);
        const WallOptions options = {.title = TitleOf(engine),
                                     .columns = ColumnsOf(line),
                                     .pictureWidth = size.width,
                                     .pictureHeight = size.height,
                                     .limits = LimitsOf(line)};
        Animation source = std::move(*session->source);
        if (!DrawWall(engine, session, names, options, std::move(source), &wall, &failure) ||
            !BuildWallFile(engine, session, &wall, EndingOf(line.output) == ".gif", &failure))
            return FailedReport(failure);
    }
    return WriteWall(line, names, session, std::move(report));
}

Report RunGallery(const CommandLine& line, const CommandContext& context) {
    Report report;
    Failure failure;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = line.inputs.empty() ? "sample" : SystemPath(line.inputs[0]);
    session.keepSource = !IsWall(line);
    if (!CheckThreads(line, context.engine, &failure) || !CheckSeed(line, context.engine, &failure))
        return FailedReport(failure);
    if (!CheckOutput(line, {line.output}, &report) || !ReadGallerySource(line, &source, &report))
        return report;
    if (!line.inputs.empty()) report.result["input"] = line.inputs[0];
    return IsWall(line) ? DrawAnimated(line, context, &session, std::move(report))
                        : DrawStill(line, context, &session, std::move(report));
}

void AddGallery(CLI::App* app, const OptionTarget& target) {
    CLI::App* const gallery =
        AddCommand(app, "gallery", "Draw a picture, or an animation, under every effect at once");
    AddInput(gallery, target.line, "input", "Picture or animation (default: the sample)");
    AddReadLimit(gallery, target.line);
    AddOutput(gallery, target.line, "-o,--output",
              "PNG file: a sheet of the first frame; GIF, WebP or APNG file: a wall of all frames");
    AddNumber(gallery, "--columns", &target.line->look.columns, 1, kMostColumns, "Pictures in a row (7)");
    AddPictureSize(gallery, target.line, "200x150, or 160x120 in a wall");
    AddThreads(gallery, target.line, false);
    AddSeed(gallery, &target.line->recipe, std::to_string(kSeed));
    AddEngineOptions(gallery, target);
}

bool FinishGallery(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    return CheckEnding(*line, {".png", ".gif", ".webp", ".apng"}, error) &&
           CheckPictureSize(line->look.pictureSize, error);
}

}  // namespace

const CommandRow kGalleryCommand = {
    .name = "gallery",
    .inputs = InputUse::FirstPicture,
    .add = AddGallery,
    .finish = FinishGallery,
    .run = RunGallery,
    .examples =
        "kestrel gallery IN.gif -o SHEET.png\nkestrel gallery IN.gif -o WALL.gif\n"
        "kestrel gallery IN.gif -o WALL.gif --size 100x75 --columns 5"};

}  // namespace kfx::commands
