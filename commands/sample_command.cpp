// SPDX-License-Identifier: MIT
// kestrel sample: the sample animation as a file.
#include <CLI/CLI.hpp>

#include "commands/common_options.h"
#include "commands/text.h"
#include "media/animation_writer.h"
#include "media/sample_animation.h"

namespace kfx::commands {
namespace {

Report RunSample(const CommandLine& line, const CommandContext&) {
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

void AddSample(CLI::App* app, const OptionTarget& target) {
    CLI::App* const sample = app->add_subcommand("sample", "Write the sample animation");
    AddOutput(sample, target.line, "-o,--output,output", "GIF file");
}

bool FinishSample(const CLI::App&, const ApplyWords&, CommandLine* line, std::string* error) {
    return CheckEnding(*line, ".gif", error);
}

}  // namespace

const CommandRow kSampleCommand = {.name = "sample",
                                   .inputs = InputUse::Each,
                                   .add = AddSample,
                                   .finish = FinishSample,
                                   .run = RunSample,
                                   .examples = "kestrel sample OUT.gif"};

}  // namespace kfx::commands
