// SPDX-License-Identifier: MIT
#include "commands/fit_trial.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "commands/fingerprint.h"
#include "commands/fit_look.h"
#include "commands/plain_build.h"
#include "commands/stream_output.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

constexpr size_t kRun = 6;  // frames; so that every second and every third can be left out
constexpr size_t kMostRuns = 2;
constexpr size_t kFingerprintBytes = 80;  // a recipe's line with it, about
// For a fifth of a second or less; the other formats take longer than GIF without loss.
constexpr size_t kMostGifPixels = 500000;
constexpr size_t kMostOtherPixels = 250000;

// Into session->built and session->record.
TrialEnd Build(const FitWork& work, const CommandLine& line, const Animation& wanted, PipelineNotes* notes,
               Failure* failure) {
    const PipelineOptions options = work.pipelineOptions(line);
    Animation frames = wanted;
    if (line.keepsColors && line.format == "gif") {
        if (!EditResult(options.edits, &frames)) {
            *failure = {kExitEngine, "there is not enough memory to shrink the frames."};
            return TrialEnd::Failed;
        }
        SettleHalfTransparency(options, &frames, notes);
        if (!FitsGifPalettes(frames)) return TrialEnd::Impossible;
        work.session->record = MakeSourceRecord(frames);
        work.session->built = PlainBuild(&frames);
        return TrialEnd::Done;
    }
    CommandLine palette = line;
    if (palette.effects.empty()) palette.effects = {UnchangingEffect()};
    palette.effects = {palette.effects.back()};
    std::vector<Job> jobs;
    const bool built =
        ResolveJobs(palette, HasOwnPalette(frames), work.engine.engine, work.engine.opened, &jobs, failure) &&
        FinishFrames(work.engine, work.session, jobs.back(), options, std::move(frames), notes, failure);
    return built ? TrialEnd::Done : TrialEnd::Failed;
}

// Which frame of the file is on the screen while each wanted one should be.
std::vector<size_t> ShownFrames(const Animation& wanted, const Animation& shown, int every) {
    Animation times;
    for (const Frame& frame : wanted.frames) {
        Frame time;
        time.delay = frame.delay;
        time.milliseconds = frame.milliseconds;
        times.frames.push_back(std::move(time));
    }
    EditResult({.shrink = 100, .every = every}, &times);
    const std::vector<size_t> match = MatchFrames(times, shown);
    std::vector<size_t> numbers;
    for (size_t i = 0; i < wanted.frames.size(); ++i)
        numbers.push_back(match[i / static_cast<size_t>(every)]);
    return numbers;
}

bool Judge(const CommandLine& line, const Animation& wanted, const Animation& shown, FitTrial* trial,
           Failure* failure) {
    trial->look = CompareLooks(wanted, shown, ShownFrames(wanted, shown, line.resultEdits.every));
    if (trial->look >= 0) return true;
    *failure = {kExitEngine, "there is not enough memory to compare the frames."};
    return false;
}

// Encodes what has been built into the trial's file.
bool Encode(const FitWork& work, const CommandLine& line, const ResultOptions& options, FitTrial* trial,
            Failure* failure) {
    WrittenResult written;
    std::string error;
    if (!EncodeResult(std::move(work.session->built), work.session->record, options, &written, &trial->file,
                      &error)) {
        *failure = {kExitBadOutput, ShownPath(line.output) + ": " + error + "."};
        return false;
    }
    trial->note = written.note;
    trial->fingerprint = written.fingerprint;
    trial->bytes = trial->file.size();
    return true;
}

// Encodes what has been built, and judges it as a viewer plays it. A file with loss is read again for that;
// other frames are judged before they are encoded, so that there is memory for it.
bool EncodeAndJudge(const FitWork& work, const CommandLine& line, const Animation& wanted,
                    ResultOptions options, FitTrial* trial, Failure* failure) {
    if (!HasLoss(options, options.format)) {
        const bool isJudged =
            Judge(line, wanted, PlayBuilt(work.session->built, work.session->record), trial, failure);
        return isJudged && Encode(work, line, options, trial, failure);
    }
    const bool wantsFingerprint = std::exchange(options.fingerprint, false);
    if (!Encode(work, line, options, trial, failure)) return false;
    Animation shown;
    std::string error;
    ReadLimits limits;
    limits.maxPixels = std::numeric_limits<uint64_t>::max();
    if (!ReadAnimationFromMemory(trial->file.data(), trial->file.size(), &shown, &error, limits)) {
        *failure = {kExitEngine, "a trial could not be read again: " + error + "."};
        return false;
    }
    if (wantsFingerprint) trial->fingerprint = FingerprintOf(shown);
    return Judge(line, wanted, shown, trial, failure);
}

TrialEnd MakeAny(const FitWork& work, const Animation& wanted, const FitSettings& settings, bool isSample,
                 FitTrial* trial, Failure* failure) {
    *trial = {};
    if (work.stop && *work.stop) {
        *failure = {kExitEngine, "the search was stopped."};
        return TrialEnd::Failed;
    }
    trial->settings = settings;
    const CommandLine line = LineWith(work.line, settings);
    const TrialEnd end = Build(work, line, wanted, &trial->notes, failure);
    if (end != TrialEnd::Done) return end;
    const BuiltAnimation& built = work.session->built;
    trial->frames = built.frames.size();
    trial->width = built.width;
    trial->height = built.height;
    trial->colors = CountColors(built, work.session->record);
    ResultOptions options = work.resultOptions(line);
    if (isSample) {
        const RecipeDraft recipe = std::exchange(options.recipe, {});
        if (!recipe.head.empty())
            trial->recipeBytes = recipe.head.size() + kFingerprintBytes + recipe.tail.size();
        options.fingerprint = false;
    }
    return EncodeAndJudge(work, line, wanted, std::move(options), trial, failure) ? TrialEnd::Done
                                                                                  : TrialEnd::Failed;
}

// The middle of the pictures, so that they have so many pixels at most.
void CropMiddle(size_t mostPixels, Animation* animation) {
    int width = animation->width, height = animation->height;
    while (static_cast<size_t>(width) * static_cast<size_t>(height) > mostPixels) {
        if (width > height)
            width -= (width + 7) / 8;
        else
            height -= (height + 7) / 8;
    }
    FrameEdits edits;
    edits.crop.width = width;
    edits.crop.height = height;
    Failure failure;
    EditFrames(edits, ReadLimits(), animation, &failure);
}

}  // namespace

TrialEnd MakeTrial(const FitWork& work, const Animation& wanted, const FitSettings& settings, FitTrial* trial,
                   Failure* failure) {
    return MakeAny(work, wanted, settings, false, trial, failure);
}

TrialEnd MakeSampleTrial(const FitWork& work, const Animation& wanted, const FitSettings& settings,
                         FitTrial* trial, Failure* failure) {
    return MakeAny(work, wanted, settings, true, trial, failure);
}

FitSample TakeSample(const CommandLine& line, const Animation& wanted) {
    FitSample sample;
    Animation& frames = sample.frames;
    frames.width = wanted.width;
    frames.height = wanted.height;
    frames.loopCount = wanted.loopCount;
    frames.hasGlobalPalette = wanted.hasGlobalPalette;
    frames.globalPalette = wanted.globalPalette;
    const size_t count = wanted.frames.size();
    const size_t runs = std::min(kMostRuns, std::max<size_t>(1, count / kRun));
    const size_t length = runs == kMostRuns && count > kMostRuns * kRun ? kRun : (count + runs - 1) / runs;
    for (size_t run = 0; run < runs; ++run) {
        // Evenly spread; a whole number of runs before each, so that frames left out are the same ones.
        const size_t start = run * std::max(length, count / runs / kRun * kRun);
        for (size_t i = start; i < std::min(count, start + length); ++i)
            frames.frames.push_back(wanted.frames[i]);
    }
    const double all = static_cast<double>(count) * wanted.width * wanted.height;
    const size_t mostPixels = line.format == "gif" && !line.fit.lossy ? kMostGifPixels : kMostOtherPixels;
    CropMiddle(std::max<size_t>(1, mostPixels / frames.frames.size()), &frames);
    sample.parts = all / (static_cast<double>(frames.frames.size()) * frames.width * frames.height);
    sample.still = frames;
    sample.still.frames.resize(1);
    const Metadata& metadata = wanted.metadata;
    sample.beside =
        wanted.comment.size() + metadata.colorProfile.size() + metadata.exif.size() + metadata.xmp.size();
    return sample;
}

}  // namespace kfx::commands
