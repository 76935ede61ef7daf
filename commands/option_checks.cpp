// SPDX-License-Identifier: MIT
#include "commands/option_checks.h"

#include <initializer_list>

#include "commands/batch_plan.h"
#include "commands/output_format.h"
#include "commands/stray_words.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

// The first of the options that is given; null: none is.
struct GivenOption {
    const char* name;
    bool given;
};

const char* FirstGiven(std::initializer_list<GivenOption> options) {
    for (const GivenOption& option : options) {
        if (option.given) return option.name;
    }
    return nullptr;
}

std::string ExcludeEachOther(const char* one, const char* other) {
    return std::string(one) + " and " + other + " exclude each other.";
}

// What does not go with the output's format. Empty: nothing.
std::string FormatMismatch(const CommandLine& line) {
    const bool gif = line.format == "gif";
    const char* const webpOption =
        FirstGiven({{"--quality", line.quality >= 0}, {"--near-lossless", line.nearLossless >= 0}});
    const char* const timeOption = FirstGiven({{"--speed", line.edits.speed != 1},
                                               {"--fps", line.edits.framesPerSecond > 0},
                                               {"--loop", line.edits.setsLoop}});
    if (gif && line.trueColor)
        return "a GIF cannot hold true colour; write .webp or .png, or leave out --true-color.";
    if (!gif && line.comment) return "only a GIF holds the plug-in's comment; leave out --comment.";
    if (!gif && line.lossy >= 0) return "--lossy is for GIF files; leave it out, or write .gif.";
    if (!gif && !line.matte.empty())
        return "--matte is for GIF files, which hold no half-transparent pixels; leave it out, or write "
               ".gif.";
    if (line.format == "png" && timeOption)
        return std::string(timeOption) + " is for animations; leave it out, or write .gif, .webp or .apng.";
    if (IsRawFormat(line.format) && line.edits.setsLoop)
        return "--loop is for animations, and video streams play once; leave it out.";
    if (line.format != "webp" && webpOption)
        return std::string(webpOption) + " is for WebP files; leave it out, or write .webp.";
    if (line.effort >= 0 && (gif || IsRawFormat(line.format)))
        return "--effort is for WebP, PNG and APNG files; leave it out, or write .webp or .png.";
    return "";
}

// Options that contradict each other. Empty: none do.
std::string Contradiction(const CommandLine& line, const char* paletteOption) {
    const char* const searchOption = FirstGiven({{"--fast-remap", line.fastRemap},
                                                 {"--dither-brightness", line.ditherBrightness >= 0},
                                                 {"--dither-contrast", line.ditherContrast >= 0}});
    if (line.trueColor && paletteOption) return ExcludeEachOther("--true-color", paletteOption);
    if (line.trueColor && searchOption) return ExcludeEachOther("--true-color", searchOption);
    if (line.delay >= 0 && line.edits.framesPerSecond > 0) return ExcludeEachOther("--delay", "--fps");
    if (line.edits.speed != 1 && line.edits.framesPerSecond > 0) return ExcludeEachOther("--speed", "--fps");
    // A GIF without an effect may keep its exact colours; then nothing is searched.
    if (searchOption && !paletteOption && (line.format != "gif" || line.effects.empty()))
        return std::string(searchOption) + " is for results on a palette; add --palette, or leave it out.";
    if (line.colors > 0 && !line.palette.empty() && PlainName(line.palette) != "custom")
        return "--colors is for a computed palette; leave it out, or take --palette custom.";
    if (line.colors == 2 && line.supercompress)
        return "--supercompress takes one entry of the palette for itself; take --colors 3 or more.";
    if (line.journeys.seamless && line.fit.mostBytes > 0) return ExcludeEachOther("--seamless", "--max-size");
    if (line.quality >= 0 && line.nearLossless >= 0) return ExcludeEachOther("--quality", "--near-lossless");
    return "";
}

// What goes with several results only, or not with these. Empty: nothing is there.
std::string BatchMismatch(const CommandLine& line, bool isFolder) {
    if (line.batch.recursive && (line.join || line.delay >= 0))
        return ExcludeEachOther("--recursive", line.join ? "--join" : "--delay");
    if (line.batch.recursive && !isFolder)
        return "--recursive needs a folder for the results; end the output's name in /.";
    if (line.batch.jobs >= 0 && !isFolder)
        return "--jobs is for several results; leave it out, or name a folder for them by -o FOLDER/.";
    return "";
}

// What goes with an effect only. Empty: nothing is there.
std::string MissingEffect(const CommandLine& line, bool formatGiven) {
    if (!line.effects.empty()) return "";
    const char* const effectOption = FirstGiven({{"--local-background", !line.localBackground.empty()},
                                                 {"--edges", !line.edges.empty()},
                                                 {"--comment", line.comment}});
    if (effectOption) return std::string(effectOption) + " needs an --effect.";
    const bool joins = line.join || line.delay >= 0;
    if (!HasEdits(line.edits) && !HasResultEdits(line.resultEdits) && line.fit.size.empty() && !formatGiven &&
        !joins)
        return line.inputs.size() > 1 && !NamesFolder(line.output)
                   ? "there are several inputs; --join makes them one animation, -o FOLDER/ takes a "
                     "result for each."
                   : "--effect NAME is missing; to convert without an effect, add --format.";
    return "";
}

// Whether --edges has one of its names, which is then put in small letters.
bool CheckEdges(CommandLine* line) {
    const std::string plain = PlainName(line->edges);
    if (line->edges.empty()) return true;
    if (plain != "background" && plain != "extend") return false;
    line->edges = plain;
    return true;
}

}  // namespace

bool CheckApply(const ApplyWords& words, CommandLine* line, std::string* error) {
    unsigned color = 0;
    const bool isFolder = NamesFolder(line->output);
    const bool formatOpen = isFolder && words.format.empty();
    const bool joins = line->join || line->delay >= 0;
    *error = StrayWord(*line, !isFolder && !joins);
    if (error->empty()) *error = MissingEffect(*line, !words.format.empty());
    if (error->empty() && line->inputs.size() > 1 && !isFolder && !joins && !IsStream(line->output) &&
        EndingOf(line->output).empty())
        *error = "there are several inputs; to get a result for each in a folder, write -o \"" +
                 line->output + "/\".";
    if (error->empty() && !formatOpen)
        line->format = ResolveFormat(isFolder ? "" : line->output, words.format, error);
    if (error->empty()) *error = BatchMismatch(*line, isFolder);
    if (error->empty() && line->comment && words.noComment)
        *error = ExcludeEachOther("--comment", "--no-comment");
    if (error->empty() && !line->localBackground.empty() && PlainName(line->localBackground) != "none" &&
        !ParseColor(line->localBackground, &color)) {
        *error =
            "--local-background takes a colour as RRGGBB or none, not \"" + line->localBackground + "\".";
    }
    if (error->empty() && !CheckEdges(line))
        *error = "--edges takes background or extend, not \"" + line->edges + "\".";
    if (error->empty() && !line->matte.empty() && !ParseColor(line->matte, &color))
        *error = "--matte takes a colour as RRGGBB, not \"" + line->matte + "\".";
    return error->empty() && (formatOpen || CompleteFormat(line, error));
}

bool CompleteFormat(CommandLine* line, std::string* error) {
    const char* const paletteOption = FirstGiven({{"--palette", !line->palette.empty()},
                                                  {"--colors", line->colors > 0},
                                                  {"--dither", line->dither},
                                                  {"--supercompress", line->supercompress}});
    *error = FormatMismatch(*line);
    if (error->empty()) *error = Contradiction(*line, paletteOption);
    if (error->empty()) CheckFit(line, error);
    if (!error->empty()) return false;
    line->trueColor = line->format != "gif" && !paletteOption;
    line->keepsColors = line->effects.empty() && !paletteOption;
    if (line->palette.empty()) line->palette = "custom";
    return true;
}

}  // namespace kfx::commands
