// SPDX-License-Identifier: MIT
// kestrel gallery: a picture under every effect.
#include <utility>

#include <CLI/CLI.hpp>

#include "commands/alpha_pixels.h"
#include "commands/common_options.h"
#include "commands/parameter_help.h"
#include "commands/sheet_file.h"
#include "commands/stages.h"
#include "commands/text.h"
#include "media/sample_animation.h"

namespace kfx::commands {
namespace {

constexpr int kGalleryColumns = 7;
constexpr int kGalleryWidth = 200;
constexpr int kGalleryHeight = 150;

SheetPicture PictureOf(const Animation& animation, const std::string& label) {
    return {animation.width, animation.height, animation.frames.front().pixels.data(), label};
}

// The first frame of the file, or of the sample, as an animation of its own.
bool ReadGallerySource(const CommandLine& line, Animation* source, Report* report) {
    if (!line.inputs.empty()) {
        if (!ReadSource(line, 0, source, report)) return false;
        source->frames.resize(1);
        return true;
    }
    Picture picture = DrawSampleFrame(0);
    source->width = picture.width;
    source->height = picture.height;
    source->frames.resize(1);
    source->frames[0].pixels = std::move(picture.pixels);
    return true;
}

// The values at which a gallery shows an effect. What a plug-in of another kind does not take keeps its
// default.
void ChoosePictureValues(const std::string& name, Job* job) {
    for (const Setting& setting : FindPictureSettings(kHelpDocument, name)) {
        for (const Parameter& parameter : job->parameters) {
            ChosenValue chosen = {parameter, 0};
            std::string ignored;
            if (parameter.name == setting.name &&
                ParseValue(parameter, name, setting.value, &chosen.value, &ignored))
                job->values.push_back(chosen);
        }
    }
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
bool BuildEveryEffect(const OpenEngine& engine, HostSession* session, std::vector<Animation>* results,
                      std::vector<std::string>* names, Failure* failure) {
    if (!engine || !engine.engine.listEffects(engine.opened, names, failure)) return false;
    for (size_t i = 0; i < names->size(); ++i) {
        Job job;
        Animation result;
        if (!ResolveEffectJob({(*names)[i], {}}, engine.engine, engine.opened, &job, failure)) return false;
        ChoosePictureValues((*names)[i], &job);
        if (!BuildPicture(engine, session, job, i + 1 < names->size(), &result, failure)) return false;
        results->push_back(std::move(result));
    }
    return true;
}

Report RunGallery(const CommandLine& line, const CommandContext& context) {
    Report report;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = line.inputs.empty() ? "sample" : SystemPath(line.inputs[0]);
    session.keepSource = true;
    if (!ReadGallerySource(line, &source, &report) || !CheckOutput(line, {line.output}, &report))
        return report;
    std::vector<Animation> results;
    std::vector<std::string> names;
    std::string title;
    Failure failure;
    {
        const OpenEngine engine(context.engine, PlainStart(context, &session), &failure);
        if (!BuildEveryEffect(engine, &session, &results, &names, &failure)) return FailedReport(failure);
        title = context.engine.name(engine.opened);
    }
    std::vector<SheetPicture> pictures = {PictureOf(source, "Source")};
    for (size_t i = 0; i < results.size(); ++i) pictures.push_back(PictureOf(results[i], names[i]));
    report.result["effects"] = names;
    const Picture sheet =
        DrawGallery(title + ": its effects", pictures, kGalleryColumns, kGalleryWidth, kGalleryHeight);
    return WriteSheet(sheet, line.output, std::move(report));
}

void AddGallery(CLI::App* app, const OptionTarget& target) {
    CLI::App* const gallery =
        app->add_subcommand("gallery", "Draw one picture sheet of a picture under every effect");
    AddInput(gallery, target.line, "input", "Picture or animation (default: the sample's first frame)");
    AddReadLimit(gallery, target.line);
    AddOutput(gallery, target.line, "-o,--output", "PNG file");
    AddEngineOptions(gallery, target);
}

bool FinishGallery(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    return CheckEnding(*line, ".png", error);
}

}  // namespace

const CommandRow kGalleryCommand = {.name = "gallery",
                                    .inputs = InputUse::FirstPicture,
                                    .add = AddGallery,
                                    .finish = FinishGallery,
                                    .run = RunGallery,
                                    .examples = "kestrel gallery IN.gif -o SHEET.png"};

}  // namespace kfx::commands
