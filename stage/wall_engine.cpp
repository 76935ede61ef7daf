// SPDX-License-Identifier: MIT
#include "stage/wall_engine.h"

#include <cstring>
#include <utility>

#include "commands/stages.h"
#include "effects/effect_table.h"
#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "host/floating_point_state.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr char kNoMemory[] = "there is not enough memory for this picture.";

// What the opened engine works with. It is the engine's `options` as well.
struct Work {
    const std::atomic<bool>& stop;
    std::atomic<uint64_t>* framesDone;
    HostSession* session;
};

// The frame's colours as the effects take them. Null: memory ran out.
ImageHandle MakeImage(const Frame& frame, int width, int height) {
    constexpr int32_t kBitsPerPixel = 24;
    NewImage image(CreateDib(width, height, nullptr, kBitsPerPixel));
    if (!image) return nullptr;
    const uint8_t* from = frame.pixels.data();
    for (int y = 0; y < height; ++y) {
        uint8_t* to = PictureRow(image.image, y);
        for (int x = 0; x < width; ++x, from += 4, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
    }
    return image.Release();
}

// False: the image could not be locked.
bool TakeImage(ImageHandle image, BuiltFrame* frame) {
    const ImageLock lock(image);
    if (!lock) return false;
    const auto width = static_cast<size_t>(lock->width), height = static_cast<size_t>(lock->height);
    frame->pixels.resize(3 * width * height);
    uint8_t* to = frame->pixels.data();
    for (size_t y = 0; y < height; ++y) {
        const uint8_t* from = PictureRow(lock.image, static_cast<int32_t>(y));
        for (size_t x = 0; x < width; ++x, from += 3, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
    }
    return true;
}

// What the kernel gets, as an engine without a window would read it from the settings.
KernelInput InputOf(const Job& job, KernelCache* cache) {
    KernelInput input = {};
    for (size_t i = 0; i < job.values.size(); ++i)
        input.values[i] = job.values[i].value - job.values[i].parameter.shownOffset;
    input.background =
        job.background == Background::Color ? job.backgroundColor : Settings().localBackgroundColor;
    input.cache = cache;
    return input;
}

// What an effect gathers from all frames before it changes any; released at the end of the scope.
struct Gathered {
    explicit Gathered(const GatheringPasses* used) : passes(used) {}
    ~Gathered() {
        if (passes) passes->release(record);
    }
    Gathered(const Gathered&) = delete;
    Gathered& operator=(const Gathered&) = delete;

    const GatheringPasses* const passes;  // null: each frame by itself
    uint64_t record[2] = {0, 0};
};

bool GatherFrames(const Work& work, Gathered* gathered, Failure* failure) {
    const Animation& source = *work.session->source;
    for (const Frame& frame : source.frames) {
        if (work.stop) return false;
        const MemoryOwner image(MakeImage(frame, source.width, source.height));
        if (!image.memory) {
            *failure = {kExitEngine, kNoMemory};
            return false;
        }
        gathered->passes->gather(image.memory, gathered->record);
    }
    return true;
}

// The kernel's picture of a frame, or the frame itself where the kernel leaves it as it is.
ImageHandle Transform(const Effect& effect, const Gathered& gathered, const KernelInput& input,
                      ImageHandle image) {
    if (!gathered.passes) return ApplyKernel(effect, image, input);
    const ImageHandle result = gathered.passes->apply(image, gathered.record);
    if (!result) return image;
    FreeMemory(image);
    return result;
}

bool TransformFrame(const Work& work, const Effect& effect, const Gathered& gathered,
                    const KernelInput& input, size_t number) {
    const Animation& source = *work.session->source;
    BuiltFrame built;
    built.sourceIndex = number;
    MemoryOwner image(MakeImage(source.frames[number], source.width, source.height));
    if (!image.memory) return false;
    image.memory = Transform(effect, gathered, input, image.memory);
    if (!TakeImage(image.memory, &built)) return false;
    work.session->built.frames.push_back(std::move(built));
    return true;
}

void* Open(const void* options, const EngineStart&, Failure*) { return const_cast<void*>(options); }

void Close(void*) {}

// Each build reads the session's source anew.
void DropSource(void*) {}

bool Build(void* opened, const Job& job, bool, Failure* failure) {
    const Work& work = *static_cast<const Work*>(opened);
    Animation& source = *work.session->source;
    work.session->record = MakeSourceRecord(source);
    work.session->built = {};
    work.session->built.width = source.width;
    work.session->built.height = source.height;
    const Effect& effect = *EffectAt(static_cast<size_t>(job.effect));
    KernelCache cache;
    const KernelInput input = InputOf(job, &cache);
    const FreedMemoryKept kept;
    Gathered gathered(effect.gathering && effect.gathering->wanted(input) ? effect.gathering : nullptr);
    if (gathered.passes && !GatherFrames(work, &gathered, failure)) return false;
    for (size_t i = 0; i < source.frames.size(); ++i) {
        if (work.stop) return false;
        if (!TransformFrame(work, effect, gathered, input, i)) {
            *failure = {kExitEngine, kNoMemory};
            return false;
        }
        std::vector<uint8_t>().swap(source.frames[i].pixels);
        work.framesDone->fetch_add(1, std::memory_order_relaxed);
    }
    work.session->built.complete = true;
    return true;
}

// As much of an engine as a job on full frames needs (commands/stages.h); names have been looked up already.
Engine EngineOf(const Work* work) {
    Engine engine = {};
    engine.options = work;
    engine.open = Open;
    engine.close = Close;
    engine.dropSource = DropSource;
    engine.build = Build;
    return engine;
}

Job JobOf(const EffectDescription& effect, const EffectSettings& settings) {
    Job job;
    job.effect = static_cast<int>(settings.effect);
    job.effectName = effect.name;
    job.parameters = effect.parameters;
    for (size_t i = 0; i < effect.parameters.size(); ++i)
        job.values.push_back({effect.parameters[i], settings.values[i]});
    return job;
}

}  // namespace

bool ApplyEffect(const EffectDescription& effect, const EffectSettings& settings,
                 const std::atomic<bool>& stop, std::atomic<uint64_t>* framesDone, Animation* animation,
                 Failure* failure) {
    const OwnFloatingPoint core;
    Animation source;
    HostSession session;
    session.source = &source;
    const Work work = {.stop = stop, .framesDone = framesDone, .session = &session};
    const Engine engine = EngineOf(&work);
    EngineStart start;
    start.session = &session;
    const OpenEngine opened(engine, start, failure);
    return RunStage(opened, &session, JobOf(effect, settings), animation, failure);
}

}  // namespace kfx::stage
