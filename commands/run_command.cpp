// SPDX-License-Identifier: MIT
// What the commands share.
#include <new>

#include "commands/commands.h"
#include "commands/console.h"
#include "commands/output_format.h"
#include "commands/result_files.h"
#include "commands/text.h"

namespace kfx::commands {
namespace {

Report Run(const CommandLine& line, const CommandContext& context) {
    switch (line.command) {
        case Command::Apply:
            return RunApply(line, context);
        case Command::Effects:
            return RunEffects(line, context);
        case Command::Gallery:
            return RunGallery(line, context);
        case Command::Sample:
            return RunSample(line);
        case Command::Sheet:
            return RunSheet(line);
    }
    return {};
}

bool ReadStreamedSource(const ReadLimits& limits, Animation* animation, Report* report) {
    constexpr char kName[] = "standard input: ";
    std::vector<uint8_t> content;
    std::string reason;
    if (!ReadStandardInput(&content, &reason) ||
        !ReadAnimationFromMemory(content.data(), content.size(), animation, &reason, limits)) {
        *report = FailedReport(kExitBadInput, kName + reason + ".");
        return false;
    }
    if (!animation->warning.empty()) report->notes.push_back(kName + animation->warning + ".");
    return true;
}

}  // namespace

Report RunCommand(const CommandLine& line, const CommandContext& context) {
    try {
        return Run(line, context);
    } catch (const std::bad_alloc&) {
        return FailedReport(kExitEngine, "there is not enough memory for this command.");
    }
}

bool ReadSource(const CommandLine& line, const std::string& path, Animation* animation, Report* report) {
    constexpr uint64_t kMillion = 1000000;
    ReadLimits limits;
    if (line.maxPixels >= 0) limits.maxPixels = kMillion * static_cast<uint64_t>(line.maxPixels);
    limits.raisedBy = kMaxPixelsOption;
    std::string error;
    if (IsStream(path)) return ReadStreamedSource(limits, animation, report);
    if (!ReadAnimation(SystemPath(path), animation, &error, limits)) {
        *report = FailedReport(kExitBadInput, WithFolderAsGiven(error, path));
        return false;
    }
    if (animation->frames.empty()) {
        *report = FailedReport(kExitBadInput, path + ": holds no picture.");
        return false;
    }
    if (!animation->warning.empty()) report->notes.push_back(path + ": " + animation->warning + ".");
    return true;
}

bool CheckOutput(const CommandLine& line, const std::vector<std::string>& files, Report* report) {
    std::string error;
    if (MayWriteResult(files, line.inputs, line.force, &error)) return true;
    *report = FailedReport(kExitBadOutput, error);
    return false;
}

}  // namespace kfx::commands
