// SPDX-License-Identifier: MIT
// The commands around apply: what effects there are, and pictures to look at.
#include "commands/commands.h"

#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/parameter_help.h"
#include "commands/stages.h"
#include "commands/text.h"
#include "media/animation_writer.h"
#include "media/contact_sheet.h"
#include "media/sample_animation.h"

namespace kfx::commands {
namespace {

constexpr int kGalleryColumns = 7;
constexpr int kGalleryWidth = 200;
constexpr int kGalleryHeight = 150;
constexpr int kSheetColumns = 6;
constexpr int kSheetWidth = 200;
constexpr int kSheetHeight = 150;

// Where the listing of effects has ranges and meanings.
constexpr size_t kRangeColumn = 20;
constexpr size_t kMeaningColumn = 44;

nlohmann::ordered_json DescribeParameter(const Parameter& parameter, const ParameterHelp& help) {
    nlohmann::ordered_json object = {{"name", parameter.name}};
    switch (parameter.kind) {
        case Parameter::Slider:
            object.update({{"kind", "number"},
                           {"minimum", parameter.minimum},
                           {"maximum", parameter.maximum},
                           {"default", parameter.value}});
            break;
        case Parameter::CheckBox:
            object.update({{"kind", "switch"}, {"default", parameter.value != 0}});
            break;
        case Parameter::List:
            object.update({{"kind", "choice"},
                           {"choices", parameter.items},
                           {"default", ValueText(parameter, parameter.value)}});
            break;
    }
    if (!help.unit.empty()) object["unit"] = help.unit;
    if (!help.meaning.empty()) object["meaning"] = help.meaning;
    return object;
}

// The text with spaces up to a column, at least one.
std::string UpToColumn(std::string text, size_t column) {
    text.resize(text.size() < column ? column : text.size() + 1, ' ');
    return text;
}

std::string DescribeLine(const Parameter& parameter, const ParameterHelp& help) {
    const std::string range = UpToColumn("  " + parameter.name, kRangeColumn) + RangeText(parameter) + " (" +
                              ValueText(parameter, parameter.value) + ")";
    return (help.meaning.empty() ? range : UpToColumn(range, kMeaningColumn) + help.meaning) + "\n";
}

SheetPicture PictureOf(const Animation& animation, const std::string& label) {
    return {animation.width, animation.height, animation.frames.front().pixels.data(), label};
}

Report WriteSheet(const Picture& sheet, const std::string& output, Report report) {
    std::string error;
    if (sheet.width == 0) return FailedReport(kExitBadInput, "there is nothing to draw.");
    if (!WritePng(SystemPath(output), sheet, &error))
        return FailedReport(kExitBadOutput, WithFolderAsGiven(error, output));
    report.text = output + ": " + std::to_string(sheet.width) + " x " + std::to_string(sheet.height) + ".\n";
    report.result["output"] = output;
    report.result["width"] = sheet.width;
    report.result["height"] = sheet.height;
    return report;
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

// The engine opened for a command that changes nothing of its defaults.
EngineStart PlainStart(const CommandContext& context, HostSession* session) {
    EngineStart start;
    start.session = session;
    start.onProgress = context.onProgress;
    return start;
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

// Adds one effect to the listing.
bool DescribeEffect(const OpenEngine& engine, int effect, const std::string& name, Report* report,
                    Failure* failure) {
    std::vector<Parameter> parameters;
    if (!engine.engine.listParameters(engine.opened, effect, &parameters, failure)) return false;
    auto described = nlohmann::ordered_json::array();
    report->text += name + "\n";
    for (const Parameter& parameter : parameters) {
        const ParameterHelp help = FindParameterHelp(kHelpDocument, name, parameter.name);
        described.push_back(DescribeParameter(parameter, help));
        report->text += DescribeLine(parameter, help);
    }
    report->result["effects"].push_back({{"name", name}, {"parameters", described}});
    return true;
}

bool DescribeAll(const OpenEngine& engine, Report* report, Failure* failure) {
    std::vector<std::string> effects, palettes;
    if (!engine || !engine.engine.listEffects(engine.opened, &effects, failure)) return false;
    report->result["plugin"] = engine.engine.name(engine.opened);
    report->result["effects"] = nlohmann::ordered_json::array();
    for (size_t i = 0; i < effects.size(); ++i) {
        if (!DescribeEffect(engine, static_cast<int>(i), effects[i], report, failure)) return false;
    }
    if (!engine.engine.listPalettes(engine.opened, &palettes, failure)) return false;
    report->result["palettes"] = palettes;
    return true;
}

}  // namespace

Report RunEffects(const CommandLine&, const CommandContext& context) {
    Animation source;
    HostSession session;
    session.source = &source;
    Failure failure;
    Report report;
    const OpenEngine engine(context.engine, PlainStart(context, &session), &failure);
    return DescribeAll(engine, &report, &failure) ? report : FailedReport(failure);
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

Report RunSample(const CommandLine& line) {
    Report report;
    if (!CheckOutput(line, {line.output}, &report)) return report;
    std::string error;
    const GifAnimation sample = DrawSampleAnimation();
    if (!WriteGif(SystemPath(line.output), sample, &error))
        return FailedReport(kExitBadOutput, WithFolderAsGiven(error, line.output));
    report.text = line.output + ": " + std::to_string(sample.frames.size()) + " frames, " +
                  std::to_string(sample.width) + " x " + std::to_string(sample.height) + ".\n";
    report.result = {{"output", line.output},
                     {"frames", sample.frames.size()},
                     {"width", sample.width},
                     {"height", sample.height}};
    return report;
}

Report RunSheet(const CommandLine& line) {
    Report report;
    Animation source, result;
    if (!ReadSource(line, 0, &source, &report) || !ReadSource(line, 1, &result, &report) ||
        !CheckOutput(line, {line.output}, &report)) {
        return report;
    }
    const std::string title =
        FileNameOf(line.sources[0].files[0]) + " and " + FileNameOf(line.sources[1].files[0]);
    return WriteSheet(DrawComparison(title, source, result, kSheetColumns, kSheetWidth, kSheetHeight),
                      line.output, std::move(report));
}

}  // namespace kfx::commands
