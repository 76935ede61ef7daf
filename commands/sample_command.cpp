// SPDX-License-Identifier: MIT
// kestrel sample: the sample animation as a file.
#include <CLI/CLI.hpp>

#include "commands/common_options.h"
#include "commands/text.h"
#include "media/animation_writer.h"
#include "media/sample_animation.h"

namespace kfx::commands {
namespace {

// A GIF with a palette a frame; the other formats hold all colours, and a PNG file the first frame.
bool Write(const std::string& path, const std::string& ending, const GifAnimation& sample,
           std::string* error) {
    if (ending == ".gif") return WriteGif(path, sample, error);
    if (ending == ".png") return WritePng(path, DrawSampleFrame(0), error);
    Animation animation;
    animation.width = sample.width;
    animation.height = sample.height;
    animation.loopCount = sample.loopCount;
    animation.comment = sample.comment;
    for (int i = 0; i < kSampleFrameCount; ++i) {
        animation.frames.emplace_back().pixels = DrawSampleFrame(i).pixels;
        animation.frames.back().delay = kSampleDelay;
    }
    return ending == ".webp" ? WriteWebp(path, animation, error) : WriteApng(path, animation, error);
}

Report RunSample(const CommandLine& line, const CommandContext&) {
    Report report;
    if (!CheckOutput(line, {line.output}, &report)) return report;
    std::string error;
    const GifAnimation sample = DrawSampleAnimation();
    if (!Write(SystemPath(line.output), EndingOf(line.output), sample, &error))
        return FailedReport(kExitBadOutput, WithFolderAsGiven(error, line.output));
    const size_t frames = EndingOf(line.output) == ".png" ? 1 : sample.frames.size();
    report.text = line.output + ": " + std::to_string(frames) + (frames == 1 ? " frame, " : " frames, ") +
                  std::to_string(sample.width) + " x " + std::to_string(sample.height) + ".\n";
    report.result = {
        {"output", line.output}, {"frames", frames}, {"width", sample.width}, {"height", sample.height}};
    return report;
}

void AddSample(CLI::App* app, const OptionTarget& target) {
    CLI::App* const sample = app->add_subcommand("sample", "Write the sample animation");
    AddOutput(sample, target.line, "-o,--output,output",
              "GIF, WebP or APNG file, or a PNG file for the first frame");
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
