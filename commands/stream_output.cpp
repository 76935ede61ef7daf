// SPDX-License-Identifier: MIT
#include "commands/stream_output.h"

#include <utility>

#include "commands/console.h"
#include "commands/fingerprint.h"
#include "commands/result_fingerprint.h"
#include "media/file_io.h"
#include "media/raw_video.h"

namespace kfx::commands {
namespace {

constexpr size_t kLargestFile = size_t{1} << 30;
constexpr RgbColor kBehind = {255, 255, 255};  // as effects have it

RawFormat RawFormatOf(const std::string& format) {
    if (format == "y4m") return RawFormat::Y4m;
    return format == "rgb" ? RawFormat::Rgb : RawFormat::Rgba;
}

std::string RateText(const ConstantRate& plan) {
    return std::to_string(plan.rate.numerator) +
           (plan.rate.denominator == 1 ? "" : "/" + std::to_string(plan.rate.denominator));
}

// What a stream does not say, or not as the frames had it.
std::string RawNote(const Animation& animation, const ConstantRate& plan, RawFormat format,
                    bool transparent) {
    uint64_t written = 0;
    for (const uint32_t repeat : plan.repeats) written += repeat;
    std::string note;
    if (format != RawFormat::Y4m) {
        note = std::string(format == RawFormat::Rgb ? "rgb24" : "rgba") + " frames of " +
               std::to_string(animation.width) + "x" + std::to_string(animation.height) + ", " +
               RateText(plan) + " a second";
    }
    if (written != animation.frames.size()) {
        note += (note.empty() ? "" : "; ") + std::string("repeated to ") + std::to_string(written) +
                " frames, because video has one rate, " + RateText(plan) + " a second";
    }
    if (transparent && format != RawFormat::Rgba)
        note += (note.empty() ? "" : "; ") + std::string("transparent pixels are shown over white");
    return note;
}

bool WriteRaw(BuiltAnimation built, const SourceRecord& source, const ResultOptions& options,
              WrittenResult* written, const TakeBytes& take) {
    const Animation animation = PlayBuilt(built, source);
    built = {};
    const RawFormat format = RawFormatOf(options.format);
    const ConstantRate plan = PlanConstantRate(animation);
    written->note = RawNote(animation, plan, format, source.transparent);
    if (options.fingerprint) written->fingerprint = FingerprintOfStream(animation, plan, format, kBehind);
    return WriteRawVideo(animation, plan, format, kBehind, take);
}

}  // namespace

bool EncodeResult(BuiltAnimation built, const SourceRecord& source, const ResultOptions& options,
                  WrittenResult* written, std::vector<uint8_t>* file, std::string* error) {
    if (options.format == "gif") {
        GifAnimation gif = MakeGif(std::move(built), source, options.gif.jobs);
        NoteResult(options, &gif, written);
        return EncodeGif(gif, file, error, options.gif);
    }
    Animation animation = PlayBuilt(built, source);
    built = {};
    NoteResult(options, options.format, &animation, written);
    if (options.format == "png")
        return EncodePng(animation.width, animation.height, animation.frames[0].pixels.data(), file, error,
                         animation, options.png);
    if (options.format == "apng") return EncodeApng(animation, file, error, options.png);
    return EncodeWebp(animation, file, error, options.webp);
}

bool WriteToStandardOutput(BuiltAnimation built, const SourceRecord& source, const ResultOptions& options,
                           WrittenResult* written, std::string* error) {
    std::string reason;
    const auto take = [&](const uint8_t* data, size_t size) {
        written->bytes += size;
        return WriteStandardOutput(data, size, &reason);
    };
    if (IsRawFormat(options.format)) {
        WriteRaw(std::move(built), source, options, written, take);
    } else {
        std::vector<uint8_t> file;
        if (!EncodeResult(std::move(built), source, options, written, &file, &reason)) {
            *error = "standard output: " + reason + ".";
            return false;
        }
        if (options.fingerprint && HasLoss(options, options.format))
            written->fingerprint = FingerprintOfFile(file);
        take(file.data(), file.size());
    }
    if (reason.empty()) return true;
    *error = "standard output: " + reason + ".";
    return false;
}

bool WriteRawFile(const std::string& path, BuiltAnimation built, const SourceRecord& source,
                  const ResultOptions& options, WrittenResult* written, std::string* error) {
    std::vector<uint8_t> file;
    const auto take = [&](const uint8_t* data, size_t size) {
        if (size > kLargestFile - file.size()) return false;
        file.insert(file.end(), data, data + size);
        return true;
    };
    if (WriteRaw(std::move(built), source, options, written, take)) return WriteWholeFile(path, file, error);
    *error = path + ": the video has more than 1 GiB; write it to a pipe, with -o -.";
    return false;
}

}  // namespace kfx::commands
