// SPDX-License-Identifier: MIT
// kestrel info: what files hold.
#include <algorithm>
#include <cstdio>
#include <utility>

#include "commands/color_profile.h"
#include "commands/common_options.h"
#include "commands/console.h"
#include "commands/fingerprint.h"
#include "commands/frame_colors.h"
#include "commands/output_format.h"
#include "commands/part_file.h"
#include "commands/parser_words.h"
#include "commands/recipe_text.h"
#include "commands/recipe_words.h"
#include "commands/report.h"
#include "commands/text.h"
#include "commands/text_columns.h"
#include "commands/text_match.h"
#include "commands/times.h"
#include "media/file_io.h"
#include "media/orientation.h"

namespace kfx::commands {
namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kValueColumn = 15;
constexpr size_t kLongestComment = 400;  // bytes of it that people are shown

// A file as it was read, and what has to be counted.
struct ReadFile {
    std::string format;
    size_t bytes = 0;
    Animation animation;
    std::vector<size_t> colors;  // of each frame
    size_t allColors = 0;
    size_t transparentFrames = 0;
    bool isHalfTransparent = false;
};

bool HasHalfTransparency(const Frame& frame) {
    for (size_t i = 3; i < frame.pixels.size(); i += 4) {
        if (frame.pixels[i] != 0 && frame.pixels[i] != 255) return true;
    }
    return false;
}

void CountPixels(ReadFile* file) {
    ColorSet all;
    for (const Frame& frame : file->animation.frames) {
        file->colors.push_back(CountFrameColors(frame, &all));
        if (!frame.transparent) continue;
        ++file->transparentFrames;
        if (!file->isHalfTransparent) file->isHalfTransparent = HasHalfTransparency(frame);
    }
    file->allColors = all.count;
}

// False: `*error` is a sentence, the file's name first.
bool Read(const std::string& name, const ReadLimits& limits, ReadFile* file, std::string* error) {
    std::vector<uint8_t> content;
    if (!IsStream(name) && !ReadWholeFile(SystemPath(name), &content, error)) {
        *error = WithFolderAsGiven(*error, name);
        return false;
    }
    const bool isRead =
        (!IsStream(name) || ReadStandardInput(&content, error)) &&
        ReadAnimationFromMemory(content.data(), content.size(), &file->animation, error, limits);
    if (!isRead) {
        *error = ShownInput(name) + ": " + *error + ".";
        if (!IsStream(name)) ExplainPart(name, error);
        return false;
    }
    if (file->animation.frames.empty()) {
        *error = ShownInput(name) + ": holds no picture.";
        return false;
    }
    file->format = FormatNameOf(content.data(), content.size());
    if (file->format == "PNG" && file->animation.frames.size() > 1) file->format = "APNG";
    file->bytes = content.size();
    CountPixels(file);
    return true;
}

std::string Counted(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string HexColor(RgbColor color) {
    char text[8];
    std::snprintf(text, sizeof text, "%02X%02X%02X", unsigned{color.red}, unsigned{color.green},
                  unsigned{color.blue});
    return text;
}

std::string SizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

const char* DisposalName(int disposal) {
    if (disposal == kDisposalBackground) return "clear";
    if (disposal == kDisposalPrevious) return "restore";
    return "keep";
}

std::string TransparencyText(const ReadFile& file) {
    if (file.transparentFrames == 0) return "none";
    const std::string kind = file.isHalfTransparent ? "half-transparent pixels" : "transparent pixels";
    const size_t frames = file.animation.frames.size();
    return frames == 1
               ? kind
               : kind + " in " + std::to_string(file.transparentFrames) + " of " + Counted(frames, "frame");
}

std::string ColorsText(const ReadFile& file) {
    const auto [least, most] = std::minmax_element(file.colors.begin(), file.colors.end());
    std::string text = Counted(file.allColors, "color");
    if (file.colors.size() > 1) {
        text += ", " + std::to_string(*least) + (*least == *most ? "" : " to " + std::to_string(*most)) +
                " a frame";
    }
    if (file.animation.hasGlobalPalette)
        text += "; global palette of " + std::to_string(file.animation.globalPalette.size());
    return text;
}

// One line, without what would move a terminal's cursor.
std::string OneLine(const std::string& comment) {
    std::string text;
    for (const char c : comment) {
        if (text.size() == kLongestComment) return text + "...";
        const bool isControl = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
        text += isControl ? ' ' : c;
    }
    return text;
}

std::string ProfileText(const std::vector<uint8_t>& profile) {
    const std::string name = ProfileName(profile);
    return (name.empty() ? "without a name" : "\"" + name + "\"") + ", " + Counted(profile.size(), "byte");
}

int StoredOrientation(const Animation& animation) {
    return animation.turnedFrom ? animation.turnedFrom : OrientationNumber(animation.metadata.exif);
}

std::string ExifText(const Animation& animation) {
    const int orientation = StoredOrientation(animation);
    return Counted(animation.metadata.exif.size(), "byte") +
           (orientation ? ", orientation " + std::to_string(orientation) : "") +
           (animation.turnedFrom ? " (read upright)" : "");
}

// "kestrel 16.0a, --format=gif, --effect=Neon".
std::string RecipeText(const Animation& animation) {
    Recipe recipe;
    std::string error;
    if (!ReadRecipe(animation.recipe, &recipe, &error)) return "cannot be read: " + error;
    std::string text = "kestrel " + recipe.version;
    for (const OptionWord& word : recipe.words) text += ", " + TextOf(word);
    return text;
}

void AddRow(const char* name, const std::string& value, std::string* text) {
    std::string row = std::string("  ") + name;
    row.resize(kValueColumn, ' ');
    *text += row + value + "\n";
}

void AddMetadata(const Animation& animation, std::string* text) {
    const Metadata& metadata = animation.metadata;
    if (animation.hasBackground) AddRow("Background", HexColor(animation.background), text);
    if (!animation.comment.empty()) AddRow("Comment", OneLine(animation.comment), text);
    if (!metadata.colorProfile.empty()) AddRow("ICC profile", ProfileText(metadata.colorProfile), text);
    if (!metadata.exif.empty()) AddRow("EXIF", ExifText(animation), text);
    if (!metadata.xmp.empty()) AddRow("XMP", Counted(metadata.xmp.size(), "byte"), text);
    if (!animation.recipe.empty()) AddRow("Recipe", OneLine(RecipeText(animation)), text);
}

std::string Describe(const std::string& name, const ReadFile& file) {
    const Animation& animation = file.animation;
    std::string text = ShownInput(name) + "\n";
    AddRow("Format", file.format + ", " + Counted(file.bytes, "byte"), &text);
    AddRow("Size", SizeText(animation.width, animation.height), &text);
    if (animation.frames.size() == 1) {
        AddRow("Frames", "1, a still picture", &text);
    } else {
        AddRow("Frames",
               std::to_string(animation.frames.size()) + " in " + SecondsText(DurationOf(animation)), &text);
        AddRow("Times", TimesText(animation), &text);
        AddRow("Plays", PlaysText(animation.loopCount), &text);
    }
    AddRow("Colors", ColorsText(file), &text);
    AddRow("Transparency", TransparencyText(file), &text);
    AddMetadata(animation, &text);
    AddRow("Fingerprint", FingerprintOf(animation), &text);
    const std::string shortTimes = ShortDelayNote(animation);
    if (!shortTimes.empty()) AddRow("Note", shortTimes, &text);
    if (!animation.warning.empty()) AddRow("Warning", animation.warning, &text);
    return text;
}

// The part of the canvas that the frame draws.
struct Part {
    int left, top, width, height;
};

Part PartOf(const Animation& animation, const Frame& frame) {
    if (frame.partWidth == 0) return {0, 0, animation.width, animation.height};
    return {frame.left, frame.top, frame.partWidth, frame.partHeight};
}

std::string FrameTable(const ReadFile& file) {
    std::string text = "  Frame   Milliseconds          Part      At    After it   Colors\n";
    for (size_t i = 0; i < file.animation.frames.size(); ++i) {
        const Frame& frame = file.animation.frames[i];
        const Part part = PartOf(file.animation, frame);
        text += AtRight(7, i) + AtRight(15, std::to_string(MillisecondsOf(frame))) +
                AtRight(14, SizeText(part.width, part.height)) + AtRight(8, std::to_string(part.left)) + "," +
                AtLeft(7, std::to_string(part.top)) + AtLeft(8, DisposalName(frame.disposal)) +
                AtRight(9, file.colors[i]) + (frame.transparent ? "  transparent" : "") + "\n";
    }
    return text;
}

Json FrameList(const ReadFile& file) {
    Json list = Json::array();
    for (size_t i = 0; i < file.animation.frames.size(); ++i) {
        const Frame& frame = file.animation.frames[i];
        const Part part = PartOf(file.animation, frame);
        list.push_back({{"delay", MillisecondsOf(frame)},
                        {"left", part.left},
                        {"top", part.top},
                        {"width", part.width},
                        {"height", part.height},
                        {"disposal", DisposalName(frame.disposal)},
                        {"colors", file.colors[i]},
                        {"transparent", frame.transparent}});
    }
    return list;
}

Json DescribeRecipe(const std::string& text) {
    Recipe recipe;
    std::string error;
    if (!ReadRecipe(text, &recipe, &error)) return {{"error", error}};
    Json options = Json::array();
    for (const OptionWord& word : recipe.words) options.push_back(TextOf(word));
    return {{"version", recipe.version}, {"options", std::move(options)}};
}

Json DescribeMetadata(const Animation& animation) {
    const Metadata& metadata = animation.metadata;
    Json object = Json::object();
    if (animation.hasBackground) object["background"] = HexColor(animation.background);
    if (!animation.comment.empty()) object["comment"] = animation.comment;
    if (!metadata.colorProfile.empty()) {
        object["colorProfile"] = {{"name", ProfileName(metadata.colorProfile)},
                                  {"bytes", metadata.colorProfile.size()}};
    }
    if (!metadata.exif.empty()) {
        object["exif"] = {{"bytes", metadata.exif.size()}};
        if (StoredOrientation(animation)) object["exif"]["orientation"] = StoredOrientation(animation);
    }
    if (!metadata.xmp.empty()) object["xmp"] = {{"bytes", metadata.xmp.size()}};
    if (!animation.recipe.empty()) object["recipe"] = DescribeRecipe(animation.recipe);
    return object;
}

Json DescribeForScripts(const std::string& name, const ReadFile& file, bool listsFrames) {
    const Animation& animation = file.animation;
    Json object = {{"input", name},
                   {"format", PlainName(file.format)},
                   {"bytes", file.bytes},
                   {"width", animation.width},
                   {"height", animation.height},
                   {"frames", animation.frames.size()},
                   {"duration", DurationOf(animation)}};
    for (const Frame& frame : animation.frames) object["delays"].push_back(MillisecondsOf(frame));
    object["plays"] =
        animation.loopCount == kLoopForever ? Json("forever") : Json(PlaysOf(animation.loopCount));
    object["colors"] = file.allColors;
    object["colorsOfFrames"] = file.colors;
    if (animation.hasGlobalPalette) object["globalPalette"] = animation.globalPalette.size();
    object["transparency"] = file.transparentFrames == 0 ? "none" : file.isHalfTransparent ? "half" : "full";
    object["transparentFrames"] = file.transparentFrames;
    object.update(DescribeMetadata(animation));
    object["fingerprint"] = FingerprintOf(animation);
    if (!animation.warning.empty()) object["warning"] = animation.warning;
    if (listsFrames) object["frameList"] = FrameList(file);
    return object;
}

Report DescribeFile(const std::string& name, const CommandLine& line) {
    ReadFile file;
    std::string error;
    if (!Read(name, LimitsOf(line), &file, &error)) {
        Report failed = FailedReport(kExitBadInput, error);
        failed.result["input"] = name;
        return failed;
    }
    Report report;
    report.text = Describe(name, file);
    if (line.look.listsFrames) report.text += FrameTable(file);
    report.result = DescribeForScripts(name, file, line.look.listsFrames);
    return report;
}

Report RunInfo(const CommandLine& line, const CommandContext&) {
    Report report;
    for (const SourceFiles& source : line.sources) {
        report.parts.push_back(DescribeFile(source.files.front(), line));
        Report& part = report.parts.back();
        const bool isFirstText = std::none_of(report.parts.begin(), report.parts.end() - 1,
                                              [](const Report& before) { return !before.text.empty(); });
        if (!part.text.empty() && !isFirstText) part.text.insert(0, "\n");
        if (report.exitCode == kExitDone) report.exitCode = part.exitCode;
    }
    return report;
}

void AddInfo(CLI::App* app, const OptionTarget& target) {
    CLI::App* const info =
        AddCommand(app, "info", "Tell what files hold: frames, times, colors, metadata, recipe");
    RequireOption(AddInputs(info, target.line, "input",
                            "Pictures and animations, folders, patterns, or - for standard input"));
    AddFlag(info, "--frames", &target.line->look.listsFrames,
            "List the frames, too: part, time, disposal, colors");
    AddReadLimit(info, target.line);
    AddReportOptions(info, target.line);
    SetFooter(
        info,
        "A file that cannot be read does not stop the others; the exit code is that of the first failure.");
}

}  // namespace

const CommandRow kInfoCommand = {
    .name = "info",
    .inputs = InputUse::EachFile,
    .add = AddInfo,
    .finish = nullptr,
    .run = RunInfo,
    .examples = "kestrel info FILE.gif\nkestrel info --frames FILE.webp\nkestrel info FOLDER --json"};

}  // namespace kfx::commands
