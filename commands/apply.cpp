// SPDX-License-Identifier: MIT
// kestrel apply: one animation through one effect.
#include "commands/commands.h"

#include <utility>

#include "commands/result_files.h"
#include "commands/text.h"

namespace kfx::commands {
namespace {

// Into session->built. Everything of the engine is gone when this returns: its memory is needed for writing.
bool Build(const CommandLine& line, const CommandContext& context, HostSession* session, Failure* failure) {
    EngineStart start;
    start.session = session;
    // A GIF's frames stand on palettes.
    if (EndingOf(line.output) == ".gif") start.capabilities = kHostTakesSupercompressed;
    start.fastRemap = line.fastRemap;
    start.ditherBrightness = line.ditherBrightness;
    start.ditherContrast = line.ditherContrast;
    start.onProgress = context.onProgress;
    const OpenEngine engine(context.engine, start, failure);
    Job job;
    return engine &&
           ResolveJob(line, HasOwnPalette(*session->source), context.engine, engine.opened, &job, failure) &&
           context.engine.build(engine.opened, job, false, failure);
}

std::string Plural(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

Report RunApply(const CommandLine& line, const CommandContext& context) {
    Report report;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = SystemPath(line.inputs[0]);
    if (!ReadSource(line.inputs[0], &source, &report) || !CheckOutput(line.output, &report)) return report;
    Failure failure;
    if (!Build(line, context, &session, &failure)) return FailedReport(failure);
    if (line.supercompress && session.record.transparent) {
        report.notes.push_back(
            line.inputs[0] +
            ": has transparent pixels, so whole pictures are stored; supercompression needs an "
            "opaque source.");
    }
    const size_t frames = session.built.frames.size();
    const int width = session.built.width, height = session.built.height;
    std::vector<std::string> files;
    std::string error;
    if (!WriteResult(SystemPath(line.output), std::move(session.built), session.record, &files, &error)) {
        return FailedReport(kExitBadOutput, error);
    }
    report.text = line.output + ": " + Plural(frames, "frame") + ", " + std::to_string(width) + " x " +
                  std::to_string(height) + ".\n";
    report.result = {
        {"output", line.output}, {"frames", frames}, {"width", width}, {"height", height}, {"files", files}};
    return report;
}

}  // namespace kfx::commands
