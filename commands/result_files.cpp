// SPDX-License-Identifier: MIT
#include "commands/result_files.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <new>
#include <utility>

#include "commands/command_line.h"
#include "commands/fingerprint.h"
#include "commands/output_check.h"
#include "commands/result_fingerprint.h"
#include "commands/stream_output.h"
#include "commands/text.h"
#include "media/animation_writer.h"
#include "media/file_io.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

std::string FormatOf(const std::string& path, const std::string& format) {
    const std::string ending = EndingOf(path);
    return format.empty() && !ending.empty() ? ending.substr(1) : format;
}

using Encode = std::function<bool(std::vector<uint8_t>* file, std::string* clause)>;

// What such a file shows is known when it is decoded.
bool WriteLossy(const std::string& system, const Encode& encode, WrittenResult* written, std::string* error) {
    const auto makeContent = [&](size_t, std::vector<uint8_t>* file, std::string* clause) {
        if (!encode(file, clause)) return false;
        written->fingerprint = FingerprintOfFile(*file);
        return true;
    };
    return WriteWholeFiles({system}, makeContent, error);
}

bool Write(const std::string& path, BuiltAnimation built, const SourceRecord& source,
           const ResultOptions& options, WrittenResult* written, std::string* error) {
    const std::string system = SystemPath(path);
    const std::string format = FormatOf(path, options.format);
    if (IsStream(path)) return WriteToStandardOutput(std::move(built), source, options, written, error);
    if (IsRawFormat(format)) return WriteRawFile(system, std::move(built), source, options, written, error);
    if (format == "gif") {
        GifAnimation gif = MakeGif(std::move(built), source, options.gif.jobs);
        NoteResult(options, &gif, written);
        if (options.fingerprint && HasLoss(options, format)) {
            const auto encode = [&](std::vector<uint8_t>* file, std::string* clause) {
                return EncodeGif(gif, file, clause, options.gif);
            };
            return WriteLossy(system, encode, written, error);
        }
        return WriteGif(system, gif, error, options.gif);
    }
    Animation animation = PlayBuilt(built, source);
    built = {};  // the played frames take its place in memory
    if (format == "png") {
        const auto recipeOf = [&](size_t frame) {
            const size_t count = animation.frames.size();
            return options.recipe.head.empty()
                       ? std::string()
                       : FinishRecipe(options.recipe, FingerprintOfStill(animation, frame),
                                      {.number = frame + 1, .count = count});
        };
        if (options.fingerprint) written->fingerprint = FingerprintOfPictures(animation);
        return WritePngFrames(system, animation, error, recipeOf, options.png);
    }
    NoteResult(options, format, &animation, written);
    if (options.fingerprint && HasLoss(options, format)) {
        const auto encode = [&](std::vector<uint8_t>* file, std::string* clause) {
            return EncodeWebp(animation, file, clause, options.webp);
        };
        return WriteLossy(system, encode, written, error);
    }
    if (format == "apng") return WriteApng(system, animation, error, options.png);
    return WriteWebp(system, animation, error, options.webp);
}

// Whether the library for WebP stores only one frame, because no pixel ever changes.
bool BecomesStill(const Animation& animation) {
    const std::vector<Frame>& frames = animation.frames;
    return frames.size() > 1 && std::all_of(frames.begin() + 1, frames.end(), [&](const Frame& frame) {
               return frame.pixels == frames[0].pixels;
           });
}

uint64_t BytesOf(const std::vector<std::string>& files) {
    uint64_t bytes = 0;
    for (const std::string& file : files) {
        std::error_code noFile;
        const std::uintmax_t size = std::filesystem::file_size(PathOf(SystemPath(file)), noFile);
        if (!noFile) bytes += size;
    }
    return bytes;
}

}  // namespace

void NoteResult(const ResultOptions& options, GifAnimation* gif, WrittenResult* written) {
    written->note = ShortDelaysOf(*gif);
    if (!options.fingerprint && options.recipe.head.empty()) return;
    written->fingerprint = FingerprintOfGif(*gif);
    if (!options.recipe.head.empty()) gif->recipe = FinishRecipe(options.recipe, written->fingerprint);
}

void NoteResult(const ResultOptions& options, const std::string& format, Animation* animation,
                WrittenResult* written) {
    const bool isStill = format == "png";
    if (!isStill) written->note = ShortDelayNote(*animation);
    if (format == "webp" && BecomesStill(*animation))
        written->note =
            "all frames are equal, and WebP stores them as a still picture without times and loop "
            "count; .gif and .apng keep both";
    if (!options.fingerprint && options.recipe.head.empty()) return;
    written->fingerprint = isStill ? FingerprintOfStill(*animation, 0) : FingerprintIn(format, *animation);
    if (!options.recipe.head.empty()) animation->recipe = FinishRecipe(options.recipe, written->fingerprint);
}

bool HasLoss(const ResultOptions& options, const std::string& format) {
    return (format == "gif" && options.gif.lossy > 0) ||
           (format == "webp" && options.webp.kind != WebpKind::Lossless);
}

std::string ShortDelaysOf(const GifAnimation& gif) {
    Animation times;
    for (const GifFrame& frame : gif.frames) times.frames.emplace_back().delay = frame.delay;
    return ShortDelayNote(times);
}

std::vector<std::string> ResultPaths(const std::string& path, size_t frameCount, const std::string& format) {
    const bool isSeries = FormatOf(path, format) == "png" && !IsStream(path);
    return isSeries ? PngFramePaths(path, frameCount) : std::vector<std::string>{path};
}

bool MayWriteResult(const std::vector<std::string>& files, const std::vector<std::string>& inputs,
                    bool replace, std::string* error) {
    std::vector<std::string> systemInputs;
    systemInputs.reserve(inputs.size());
    for (const std::string& input : inputs) systemInputs.push_back(SystemPath(input));
    for (const std::string& file : files) {
        if (IsStream(file)) continue;
        if (!CheckWritable(file, error)) return false;
        if (MayWriteFile(SystemPath(file), systemInputs, replace, error)) continue;
        *error = WithFolderAsGiven(*error, file);
        return false;
    }
    return true;
}

bool WriteResult(const std::string& path, BuiltAnimation built, const SourceRecord& source,
                 const ResultOptions& options, WrittenResult* written, std::string* error) {
    *written = {};
    written->files = ResultPaths(path, built.frames.size(), options.format);
    try {
        if (!Write(path, std::move(built), source, options, written, error)) {
            *error = WithFolderAsGiven(*error, path);
            return false;
        }
        if (!IsStream(path)) written->bytes = BytesOf(written->files);
        return true;
    } catch (const std::bad_alloc&) {
        *error = ShownPath(path) + ": there is not enough memory to write it.";
        return false;
    }
}

}  // namespace kfx::commands
