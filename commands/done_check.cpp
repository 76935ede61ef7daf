// SPDX-License-Identifier: MIT
#include "commands/done_check.h"

#include <algorithm>
#include <filesystem>

#include "commands/output_format.h"
#include "commands/text.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

namespace fs = std::filesystem;

bool Say(const std::string& clause, std::string* reason) {
    *reason = clause;
    return false;
}

bool IsOlder(const std::string& file, const std::vector<std::string>& inputs) {
    std::error_code unknown;
    const auto made = fs::last_write_time(PathOf(SystemPath(file)), unknown);
    return std::any_of(inputs.begin(), inputs.end(), [&](const std::string& input) {
        std::error_code noTime;
        const auto changed = fs::last_write_time(PathOf(SystemPath(input)), noTime);
        return !noTime && changed > made;
    });
}

// Frames without headers cannot be read; their bytes must be a number of whole frames.
bool AreWholeFrames(const std::string& file, const std::string& format, const Animation& source) {
    std::error_code unknown;
    const auto bytes = fs::file_size(PathOf(SystemPath(file)), unknown);
    const auto pixels = static_cast<uint64_t>(source.width) * static_cast<uint64_t>(source.height);
    return !unknown && bytes > 0 && bytes % (pixels * (format == "rgb" ? 3 : 4)) == 0;
}

// A frame that equals the one before may have become a longer time.
bool IsWhole(const CommandLine& line, const Animation& source, const std::string& file, size_t mostFrames,
             std::string* reason) {
    Animation result;
    std::string error;
    // How large they are is only known when they are made.
    const bool mayShrink = HasResultEdits(line.resultEdits) || line.fit.mostBytes > 0;
    if (line.format == "rgb" || line.format == "rgba")
        return mayShrink || AreWholeFrames(file, line.format, source) ||
               Say("it does not hold whole frames", reason);
    ReadLimits limits;
    limits.maxPixels = UINT64_MAX;
    if (!ReadAnimation(SystemPath(file), &result, &error, limits) || !result.warning.empty())
        return Say("it is damaged", reason);
    if (mayShrink) return result.frames.size() <= mostFrames;
    if (result.width != source.width || result.height != source.height)
        return Say("it has another size", reason);
    // A video repeats frames.
    return result.frames.size() <= mostFrames || line.format == "y4m" ||
           Say("it has another number of frames", reason);
}

}  // namespace

bool IsDone(const CommandLine& line, const Animation& source, const std::vector<std::string>& files,
            std::string* reason) {
    reason->clear();
    std::error_code unknown;
    const auto missing = std::count_if(files.begin(), files.end(), [&](const std::string& file) {
        return IsStream(file) || !fs::is_regular_file(PathOf(SystemPath(file)), unknown);
    });
    if (static_cast<size_t>(missing) == files.size()) return false;
    if (missing > 0) return Say("some of its files are missing", reason);
    const size_t mostFrames = files.size() == 1 ? source.frames.size() : 1;
    for (const std::string& file : files) {
        if (IsOlder(file, line.inputs)) return Say("it is older than its source", reason);
        if (!IsWhole(line, source, file, mostFrames, reason)) return false;
    }
    return true;
}

}  // namespace kfx::commands
