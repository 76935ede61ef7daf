// SPDX-License-Identifier: MIT
// kestrel compare: whether two animations look equal when they are played.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

#include "commands/common_options.h"
#include "commands/difference_sheet.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"
#include "commands/report.h"
#include "commands/sheet_file.h"
#include "commands/text.h"
#include "commands/text_columns.h"
#include "commands/times.h"

namespace kfx::commands {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kHundredth = 10;  // milliseconds: what GIF files round times to
constexpr double kMostDecibels = 200;

// Both animations, with the names that the user gave them.
struct Pair {
    std::string names[2];
    Animation animations[2];
};

// The least that is still called equal; equal pixels where nothing is given.
struct Thresholds {
    bool given = false;
    double psnr = 0;
    double ssim = -1;
};

bool ReadDecimal(const std::string& text, double most, double* number) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, *number, std::chars_format::fixed);
    return result.ec == std::errc() && result.ptr == end && *number >= 0 && *number <= most;
}

Thresholds ThresholdsOf(const LookOptions& options) {
    Thresholds thresholds;
    thresholds.given = !options.leastPsnr.empty() || !options.leastSsim.empty();
    ReadDecimal(options.leastPsnr, kMostDecibels, &thresholds.psnr);
    ReadDecimal(options.leastSsim, 1, &thresholds.ssim);
    return thresholds;
}

bool IsEqualEnough(const Moment& moment, const Thresholds& thresholds) {
    if (!thresholds.given) return moment.differentPixels == 0;
    return moment.quality.psnr >= thresholds.psnr && moment.quality.ssim >= thresholds.ssim;
}

bool IsEqual(const Comparison& comparison, const Thresholds& thresholds) {
    return comparison.sameSize && comparison.samePlays && comparison.sameDuration &&
           std::all_of(comparison.moments.begin(), comparison.moments.end(),
                       [&](const Moment& moment) { return IsEqualEnough(moment, thresholds); });
}

std::string Decimal(double number, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, number);
    return text;
}

std::string PsnrText(double psnr) { return std::isinf(psnr) ? "equal" : Decimal(psnr, 2) + " dB"; }

// JSON has no infinity: null stands for equal pictures.
Json PsnrValue(double psnr) { return std::isinf(psnr) ? Json() : Json(std::round(psnr * 10000) / 10000); }
Json SsimValue(double ssim) { return std::round(ssim * 1000000) / 1000000; }

std::string ColorText(const uint8_t* pixel) {
    char text[16];
    if (pixel[3] == 0) return "transparent";
    std::snprintf(text, sizeof text, pixel[3] == 255 ? "%02X%02X%02X" : "%02X%02X%02X%02X",
                  unsigned{pixel[0]}, unsigned{pixel[1]}, unsigned{pixel[2]}, unsigned{pixel[3]});
    return text;
}

const uint8_t* PixelOf(const Animation& animation, size_t frame, int x, int y) {
    const size_t pixel =
        static_cast<size_t>(y) * static_cast<size_t>(animation.width) + static_cast<size_t>(x);
    return &animation.frames[frame].pixels[4 * pixel];
}

std::string SizeText(const Animation& animation) {
    return std::to_string(animation.width) + " x " + std::to_string(animation.height);
}

void AddRow(const char* name, const std::string& value, std::string* text) {
    std::string row = std::string("  ") + name;
    row.resize(14, ' ');
    *text += row + value + "\n";
}

size_t CountDifferent(const Comparison& comparison) {
    return static_cast<size_t>(std::count_if(comparison.moments.begin(), comparison.moments.end(),
                                             [](const Moment& m) { return m.differentPixels > 0; }));
}

std::string FirstText(const Pair& pair, const Moment& first) {
    return "at " + SecondsText(first.milliseconds) + ", frame " + std::to_string(first.frameA) +
           " and frame " + std::to_string(first.frameB) + ", pixel " + std::to_string(first.x) + "," +
           std::to_string(first.y) + ": " +
           ColorText(PixelOf(pair.animations[0], first.frameA, first.x, first.y)) + " and " +
           ColorText(PixelOf(pair.animations[1], first.frameB, first.x, first.y));
}

// What differs, a row each.
std::string DifferenceRows(const Pair& pair, const Comparison& comparison) {
    const Animation& a = pair.animations[0];
    const Animation& b = pair.animations[1];
    std::string text;
    if (!comparison.sameSize) AddRow("Size", SizeText(a) + " and " + SizeText(b), &text);
    if (!comparison.samePlays)
        AddRow("Plays", PlaysText(a.loopCount) + " and " + PlaysText(b.loopCount), &text);
    if (!comparison.sameDuration)
        AddRow("Duration", SecondsText(DurationOf(a)) + " and " + SecondsText(DurationOf(b)), &text);
    const Moment* const first = FirstDifference(comparison);
    if (!first) return text;
    const Moment& worst = *WorstMoment(comparison);
    const uint64_t pixels = static_cast<uint64_t>(a.width) * static_cast<uint64_t>(a.height);
    const auto most = std::max_element(
        comparison.moments.begin(), comparison.moments.end(),
        [](const Moment& x, const Moment& y) { return x.differentPixels < y.differentPixels; });
    const auto least =
        std::min_element(comparison.moments.begin(), comparison.moments.end(),
                         [](const Moment& x, const Moment& y) { return x.quality.ssim < y.quality.ssim; });
    AddRow("Pictures",
           std::to_string(CountDifferent(comparison)) + " of " + std::to_string(comparison.moments.size()) +
               " differ",
           &text);
    AddRow("First", FirstText(pair, *first), &text);
    AddRow("Pixels",
           std::to_string(first->differentPixels) + " of " + std::to_string(pixels) + " there, " +
               std::to_string(most->differentPixels) + " at most (frame " + std::to_string(most->frameA) +
               ")",
           &text);
    AddRow("PSNR", PsnrText(worst.quality.psnr) + " at least (frame " + std::to_string(worst.frameA) + ")",
           &text);
    AddRow("SSIM",
           Decimal(least->quality.ssim, 4) + " at least (frame " + std::to_string(least->frameA) + ")",
           &text);
    return text;
}

std::string MomentTable(const Comparison& comparison) {
    std::string text = "     Time    Frames    Different pixels        PSNR    SSIM\n";
    for (const Moment& moment : comparison.moments) {
        text += AtRight(9, SecondsText(moment.milliseconds)) + AtRight(6, moment.frameA) +
                AtRight(5, moment.frameB) + AtRight(20, std::to_string(moment.differentPixels)) +
                AtRight(12, PsnrText(moment.quality.psnr)) + "  " + Decimal(moment.quality.ssim, 4) + "\n";
    }
    return text;
}

Json MomentList(const Comparison& comparison) {
    Json list = Json::array();
    for (const Moment& moment : comparison.moments) {
        list.push_back({{"time", moment.milliseconds},
                        {"frames", {moment.frameA, moment.frameB}},
                        {"differentPixels", moment.differentPixels},
                        {"psnr", PsnrValue(moment.quality.psnr)},
                        {"ssim", SsimValue(moment.quality.ssim)}});
    }
    return list;
}

Json DescribeForScripts(const std::vector<std::string>& inputs, const Pair& pair,
                        const Comparison& comparison, bool isEqual) {
    Json object = {{"inputs", inputs},
                   {"equal", isEqual},
                   {"sameSize", comparison.sameSize},
                   {"samePlays", comparison.samePlays},
                   {"sameDuration", comparison.sameDuration},
                   {"comparedPictures", comparison.moments.size()},
                   {"differentPictures", CountDifferent(comparison)}};
    if (const Moment* const first = FirstDifference(comparison)) {
        object["first"] = {{"time", first->milliseconds},
                           {"frames", {first->frameA, first->frameB}},
                           {"x", first->x},
                           {"y", first->y},
                           {"colors",
                            {ColorText(PixelOf(pair.animations[0], first->frameA, first->x, first->y)),
                             ColorText(PixelOf(pair.animations[1], first->frameB, first->x, first->y))}},
                           {"differentPixels", first->differentPixels}};
    }
    object["pictures"] = MomentList(comparison);
    return object;
}

std::string Describe(const Pair& pair, const Comparison& comparison, bool isEqual) {
    const std::string names = pair.names[0] + " and " + pair.names[1];
    const std::string rows = DifferenceRows(pair, comparison);
    if (!isEqual) return names + " differ:\n" + rows;
    if (!rows.empty()) return names + " look equal within the given limits:\n" + rows;
    return names + " look equal.\n";
}

// Adds the sheet of differences. False: the report says why it was not written.
bool WriteDifferences(const CommandLine& line, const Pair& pair, const Comparison& comparison,
                      Report* report) {
    if (line.output.empty()) return true;
    const Picture sheet = DrawDifferences(FileNameOf(pair.names[0]) + " and " + FileNameOf(pair.names[1]),
                                          pair.animations[0], pair.animations[1], comparison);
    if (sheet.width == 0) {
        report->notes.push_back(line.output + ": was not written, because " +
                                (comparison.sameSize ? "no pixel differs." : "the sizes differ."));
        return true;
    }
    const std::string text = report->text;
    const ExitCode exitCode = report->exitCode;
    *report = WriteSheet(sheet, line.output, std::move(*report));
    if (!report->error.empty()) return false;
    report->exitCode = exitCode;
    report->text.insert(0, text);
    return true;
}

Report RunCompare(const CommandLine& line, const CommandContext&) {
    Report report;
    Pair pair;
    for (size_t i = 0; i < 2; ++i) {
        pair.names[i] = ShownInput(line.sources[i].files.front());
        if (!ReadSource(line, i, &pair.animations[i], &report)) return report;
    }
    if (!line.output.empty() && !CheckOutput(line, {line.output}, &report)) return report;
    CompareOptions options;
    options.timeTolerance = line.look.roundsTimes ? kHundredth : 0;
    const Comparison comparison = CompareAnimations(pair.animations[0], pair.animations[1], options);
    const bool isEqual = IsEqual(comparison, ThresholdsOf(line.look));
    report.exitCode = isEqual ? kExitDone : kExitDifferent;
    report.text = Describe(pair, comparison, isEqual);
    if (line.look.listsFrames) report.text += MomentTable(comparison);
    report.result = DescribeForScripts(line.inputs, pair, comparison, isEqual);
    WriteDifferences(line, pair, comparison, &report);
    return report;
}

void AddCompare(CLI::App* app, const OptionTarget& target) {
    CommandLine* const line = target.line;
    CLI::App* const compare =
        AddCommand(app, "compare", "Tell whether two animations look equal when they are played");
    RequireOption(AddInput(compare, line, "first", "An animation or picture"));
    RequireOption(AddInput(compare, line, "second", "Another one"));
    AddText(compare,
            {.name = "--min-psnr",
             .typeName = "DB",
             .description = "Equal enough is a PSNR of so many decibels, in each frame"},
            &line->look.leastPsnr);
    AddText(compare,
            {.name = "--min-ssim",
             .typeName = "N",
             .description = "Equal enough is such an SSIM, 0 to 1, in each frame"},
            &line->look.leastSsim);
    AddFlag(compare, "--round-times", &line->look.roundsTimes,
            "A frame may come or go 10 ms earlier or later: GIF files hold no shorter times");
    AddFlag(compare, "--frames", &line->look.listsFrames, "List what was compared, frame by frame");
    AddOptionalOutput(compare, line, "-o,--output", "PNG file that shows where pixels differ");
    AddJoinOptions(compare, line);
    AddReadLimit(compare, line);
    AddReportOptions(compare, line);
    SetFooter(compare, "Exit codes: 0 they look equal, 1 they differ, others as for each command.");
}

bool FinishCompare(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    double ignored = 0;
    const LookOptions& look = line->look;
    if (!look.leastPsnr.empty() && !ReadDecimal(look.leastPsnr, kMostDecibels, &ignored)) {
        *error =
            "--min-psnr takes decibels from 0 to 200, such as 35 or 38.5, not \"" + look.leastPsnr + "\".";
        return false;
    }
    if (!look.leastSsim.empty() && !ReadDecimal(look.leastSsim, 1, &ignored)) {
        *error = "--min-ssim takes a number from 0 to 1, such as 0.95, not \"" + look.leastSsim + "\".";
        return false;
    }
    return line->output.empty() || CheckEnding(*line, {".png"}, error);
}

}  // namespace

const CommandRow kCompareCommand = {
    .name = "compare",
    .inputs = InputUse::Each,
    .add = AddCompare,
    .finish = FinishCompare,
    .run = RunCompare,
    .examples =
        "kestrel compare A.gif B.gif\nkestrel compare A.webp B.gif --round-times -o DIFF.png\n"
        "kestrel compare A.gif B.gif --min-psnr 35 --json"};

}  // namespace kfx::commands
