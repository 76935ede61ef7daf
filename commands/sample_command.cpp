// SPDX-License-Identifier: MIT
// kestrel sample: the sample animation as a file.
#include "commands/common_options.h"
#include "commands/parser_words.h"
#include "commands/report.h"
#include "commands/text.h"
#include "media/animation_writer.h"
#include "media/file_io.h"
#include "media/sample_animation.h"

namespace kfx::commands {
namespace {

// A GIF with a palette a frame; the other formats hold all colours, and a PNG file the first frame.
bool Encode(const std::string& ending, const GifAnimation& sample, std::vector<uint8_t>* file,
            std::string* error) {
    if (ending == ".gif") return EncodeGif(sample, file, error);
    if (ending == ".png") {
        const Picture first = DrawSampleFrame(0);
        return EncodePng(first.width, first.height, first.pixels.data(), file, error);
    }
    Animation animation;
    animation.width = sample.width;
    animation.height = sample.height;
    animation.loopCount = sample.loopCount;
    animation.comment = sample.comment;
    for (int i = 0; i < kSampleFrameCount; ++i) {
        animation.frames.emplace_back().pixels = DrawSampleFrame(i).pixels;
        animation.frames.back().delay = kSampleDelay;
    }
    return ending == ".webp" ? EncodeWebp(animation, file, error) : EncodeApng(animation, file, error);
}

Report RunSample(const CommandLine& line, const CommandContext&) {
    Report report;
    if (!CheckOutput(line, {line.output}, &report)) return report;
    std::string error;
    const GifAnimation sample = DrawSampleAnimation();
    size_t bytes = 0;
    const auto encode = [&](size_t, std::vector<uint8_t>* file, std::string* clause) {
        if (!Encode(EndingOf(line.output), sample, file, clause)) return false;
        bytes = file->size();
        return true;
    };
    if (!WriteWholeFiles({SystemPath(line.output)}, encode, &error))
        return FailedReport(kExitBadOutput, WithFolderAsGiven(error, line.output));
    const size_t frames = EndingOf(line.output) == ".png" ? 1 : sample.frames.size();
    report.text = line.output + ": " + std::to_string(frames) + (frames == 1 ? " frame, " : " frames, ") +
                  std::to_string(sample.width) + " x " + std::to_string(sample.height) + ", " +
                  std::to_string(bytes) + " bytes.\n";
    report.result = {{"output", line.output},
                     {"frames", frames},
                     {"width", sample.width},
                     {"height", sample.height},
                     {"bytes", bytes}};
    return report;
}

void AddSample(CLI::App* app, const OptionTarget& target) {
    CLI::App* const sample = AddCommand(app, "sample", "Write the sample animation");
    AddOutput(sample, target.line, "-o,--output,output",
              "GIF, WebP or APNG file, or a PNG file for the first frame");
    AddReportOptions(sample, target.line);
}

bool FinishSample(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    return CheckEnding(*line, {".gif", ".webp", ".apng", ".png"}, error);
}

}  // namespace

const CommandRow kSampleCommand = {.name = "sample",
                                   .inputs = InputUse::Each,
                                   .add = AddSample,
                                   .finish = FinishSample,
                                   .run = RunSample,
                                   .examples = "kestrel sample OUT.gif"};

}  // namespace kfx::commands
