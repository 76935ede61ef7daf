// SPDX-License-Identifier: MIT
#include "builder/build_driver.h"

#include <algorithm>
#include <cstring>

#include "builder/fixed_palettes.h"
#include "builder/palette_order.h"
#include "builder/quantizer.h"
#include "builder/remap.h"
#include "builder/reserved_index.h"
#include "builder/supercompression.h"
#include "framework/memory_guards.h"
#include "framework/panel.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "host/host_requests.h"
#include "resources/resource_ids.h"

namespace kfx {
namespace {

constexpr int32_t kMostColors = 256;
constexpr int32_t kMostColorsToExtend = 253;  // a larger palette gives up an entry for the background colour
constexpr uint32_t kNoBackground = 0xFFFFFFFF;  // as a colour it is white, and is used so

constexpr char kComment[] =
    "CREATED BY...\r\n\r\n"
    "This graphic was created by Quorvane Labs' Marrowgate Studio or Marrowgate Motion and the Kestrel FX #1 "
    "plugin.\r\n\r\n"
    "See\r\n\r\n"
    "    " KFX_WEB_PAGE
    "\r\n\r\n"
    "for more information.";

// A build's state. Its destructor frees the frames, however the build ends.
struct Build {
    explicit Build(const BuildEnvironment& given, const BuildOptions& chosen)
        : environment(given), options(chosen) {}
    ~Build() { FreeFrames(&frames); }
    Build(const Build&) = delete;
    Build& operator=(const Build&) = delete;

    const BuildEnvironment& environment;
    BuildOptions options;  // as they hold at this point of the build
    FrameList frames = {};
    uint32_t background = kNoBackground;  // 0x00BBGGRR
    uint8_t palette[kPaletteBytes] = {};
    int32_t bitsPerPixel = 8;
    int32_t colorCount = kMostColors;
    int32_t reservedIndex = -1;  // the palette entry for transparent or background pixels; -1: none
    int32_t width = 0;           // of the largest frames
    int32_t height = 0;
    FileObjectRecord task = {};
};

const HostContext* HostOf(const Build& build) { return build.environment.host; }

// The window has gone inside a request: the build is given up, and no message is shown.
bool IsAbandoned(const Build& build) { return !IsPanelOpen(build.environment.window); }

// What all frames say where the build has only some of them; null where it has all.
const WholeAnimation* HeldWhole(const Build& build) {
    const WholeAnimation* const whole = build.environment.whole;
    return whole && whole->use == WholeUse::Hold ? whole : nullptr;
}

// Frames of the source that are only compared with.
int32_t FramesBefore(const Build& build) {
    const WholeAnimation* const whole = HeldWhole(build);
    return whole ? whole->framesBefore : 0;
}

bool HasOneFrame(const Build& build) {
    const WholeAnimation* const whole = HeldWhole(build);
    return whole ? !whole->hasSeveralFrames : build.frames.count == 1;
}

// False: the build is abandoned.
bool TellProgress(const Build& build, int32_t current, int32_t total) {
    RequestProgress(HostOf(build), current, total);
    return !IsAbandoned(build);
}

// False: the build is abandoned.
bool TellStatus(const Build& build, const char* text) {
    RequestSetStatusText(HostOf(build), text);
    return !IsAbandoned(build);
}

bool ReservesEntry(const Build& build) {
    return build.options.supercompress || build.options.localBackground;
}

void PutBackground(Build* build, int32_t index) {
    uint8_t* entry = build->palette + 3 * index;
    entry[0] = static_cast<uint8_t>(RedOf(build->background));
    entry[1] = static_cast<uint8_t>(GreenOf(build->background));
    entry[2] = static_cast<uint8_t>(BlueOf(build->background));
}

int32_t NearestToBackground(const Build& build, int32_t colors) {
    return NearestEntry(build.palette, colors, static_cast<int32_t>(RedOf(build.background)),
                        static_cast<int32_t>(GreenOf(build.background)),
                        static_cast<int32_t>(BlueOf(build.background)));
}

// Switches off the options that others make meaningless.
void SettleOptions(Build* build) {
    BuildOptions& options = build->options;
    if (options.trueColor) options.supercompress = false;
    if (options.supercompress) options.localBackground = false;
}

void AskBackgroundColor(Build* build) {
    const EffectDescriptor* effect = build->environment.effect;
    if (effect && effect->query)
        build->background = static_cast<uint32_t>(effect->query(build->environment.window, 0));
    if (build->background == kNoBackground) build->options.localBackground = false;
}

// Takes the source animation's own palette; where it has none, one is computed. False: the source could not
// be read.
bool ChooseSourcePalette(Build* build) {
    const MemoryLock lock(build->environment.source);
    AnimationHeader header;
    const SourceState source = ReadSourceHeader(lock, &header);
    if (source == SourceState::Refused) return false;
    if (source == SourceState::None || header.globalColors == 0) {
        build->options.customPalette = true;
        return true;
    }
    std::memcpy(build->palette, header.globalPalette, size_t{3} * header.globalColors);
    build->bitsPerPixel = BitsForColors(static_cast<int32_t>(header.globalColors));
    return true;
}

// False: the source's palette is wanted and the source could not be read.
bool ChoosePalette(Build* build) {
    // All 256 entries are searched later, whatever the palette's size: the unused ones count as black.
    if (build->options.paletteChoice == kSourcePalette) return ChooseSourcePalette(build);
    BuildFixedPalette(build->palette, build->options.paletteChoice, &build->bitsPerPixel);
    return true;
}

// Fills the frame list. False: the effect failed, or there are no frames.
bool RunEffect(Build* build) {
    if (!TellProgress(*build, 0, 0) || !TellStatus(*build, "Building")) return false;
    const EffectDescriptor* effect = build->environment.effect;
    if (effect && effect->build) {
        if (!TellStatus(*build, "Building")) return false;
        EffectBuildContext context = {.window = build->environment.window,
                                      .frames = &build->frames,
                                      .source = build->environment.source,
                                      .host = HostOf(*build),
                                      .runner = build->environment.runner};
        if (build->environment.whole) context.gathered = &build->environment.whole->gathered;
        if (!effect->build(&context) || IsAbandoned(*build)) return false;
    } else if (DecodeAllFrames(build->environment.source, &build->frames) == DecodeResult::Incomplete) {
        // No effect to decode the frames: they are built unchanged, all or none.
        return false;
    }
    if (!TellProgress(*build, 0, 0)) return false;
    if (HasOneFrame(*build)) build->options.supercompress = false;
    return build->frames.count > FramesBefore(*build);
}

// The palette that all frames have given. False: there is none.
bool HoldPalette(const ComputedPalette& palette, Build* build) {
    std::memcpy(build->palette, palette.colors, kPaletteBytes);
    build->bitsPerPixel = palette.bitsPerPixel;
    build->colorCount = palette.colorCount;
    build->reservedIndex = palette.reservedIndex;
    return palette.isKnown;
}

void NotePalette(const Build& build, ComputedPalette* palette) {
    std::memcpy(palette->colors, build.palette, kPaletteBytes);
    palette->bitsPerPixel = build.bitsPerPixel;
    palette->colorCount = build.colorCount;
    palette->reservedIndex = build.reservedIndex;
    palette->isKnown = true;
}

// Replaces the palette by one computed from the frames where that is wanted.
bool QuantizePalette(Build* build) {
    if (build->options.trueColor || !build->options.customPalette) return true;
    if (const WholeAnimation* const whole = HeldWhole(*build)) return HoldPalette(whole->palette, build);
    if (!TellStatus(*build, "Quantizing")) return false;
    const bool isLimited = build->options.mostColors > 0;
    const int32_t entries =
        (isLimited ? build->options.mostColors : kMostColors) - (ReservesEntry(*build) ? 1 : 0);
    auto found = static_cast<uint32_t>(entries);
    if (!Quantize(&found, build->palette, build->frames)) return false;

    auto n = static_cast<int32_t>(found);
    if (!build->options.localBackground) {
        // A palette that has been limited gives up none of its few colours for a background that is not
        // there.
        if (n < entries && n <= kMostColorsToExtend)
            PutBackground(build, n++);
        else if (!isLimited || build->background != kNoBackground)
            PutBackground(build, NearestToBackground(*build, n));
    }
    SortByLuminance(build->palette, n);
    build->bitsPerPixel = BitsForColors(ReservesEntry(*build) ? n + 1 : n);
    build->reservedIndex = n;
    build->colorCount = n;
    if (ReservesEntry(*build)) PutBackground(build, n);
    if (build->environment.whole) NotePalette(*build, &build->environment.whole->palette);
    return true;
}

// A copy of the first frame: what a viewer shows after it.
ImageHandle CopyFirstFrame(const Build& build) {
    FrameEntry entry;
    if (!GetFrame(build.frames, 0, &entry)) return nullptr;
    const ImageLock lock(entry.image);
    return lock.image ? DuplicateImage(lock.image) : nullptr;
}

// Gives every frame but the first its change mask.
bool SupercompressFrames(Build* build) {
    if (!build->options.supercompress) return true;
    if (!TellStatus(*build, "Supercompressing")) return false;
    MemoryOwner composite;
    for (int32_t i = 0; i < build->frames.count; ++i) {
        if (!TellProgress(*build, i, build->frames.count)) return false;
        if (i == 0) {
            composite.memory = CopyFirstFrame(*build);
            if (!composite.memory) return false;
            continue;
        }
        FrameEntry entry;
        if (!GetFrame(build->frames, i, &entry)) return false;
        MemoryOwner mask(UpdateComposite(composite.memory, entry.image));
        entry.changeMask = mask.memory;
        if (!mask.memory || !PutFrame(build->frames, i, entry)) return false;
        mask.Release();
    }
    return true;
}

// Gives the transparent and background pixels the reserved index. Its colour needs no change: the palette has
// the background colour there.
bool MarkReserved(const Build& build, int32_t index, ImageHandle converted, FrameEntry* entry) {
    const int32_t reserved = build.reservedIndex;
    if (reserved < 0) return true;
    const bool firstOfMany = build.options.supercompress && index == 0;
    if (firstOfMany && !MarkBackground(entry->image, build.background, converted, reserved)) return false;
    if (build.options.supercompress && entry->changeMask) {
        if (!MarkUnchanged(entry->changeMask, converted, reserved)) return false;
        entry->transparentIndex = reserved;
    }
    if (build.options.localBackground) {
        if (!MarkBackground(entry->image, build.background, converted, reserved)) return false;
        entry->transparentIndex = reserved;
    }
    return true;
}

// The stage in which frames are converted to the palette.
struct Remapping {
    Build* build;
    RemapTarget target = {};
};

bool TellRemapping(void* user, int32_t index) {
    const Build& build = *static_cast<const Remapping*>(user)->build;
    return TellProgress(build, index, build.frames.count);
}

// Replaces a frame's full-colour image by its converted one.
bool RemapFrame(void* user, int32_t index, int32_t) {
    auto* remapping = static_cast<Remapping*>(user);
    const Build& build = *remapping->build;
    if (build.options.trueColor || index < FramesBefore(build)) return true;
    FrameEntry entry;
    if (!GetFrame(build.frames, index, &entry)) return false;
    MemoryOwner converted(build.options.dither ? DitherRemap(entry.image, &remapping->target)
                                               : PlainRemap(entry.image, &remapping->target));
    if (!converted.memory || !MarkReserved(build, index, converted.memory, &entry)) return false;
    return ReplaceImage(build.frames, index, entry, converted.Release());
}

bool NoteSize(void* user, int32_t index) {
    Build* build = static_cast<Remapping*>(user)->build;
    FrameEntry entry;
    if (!GetFrame(build->frames, index, &entry)) return false;
    const ImageLock lock(entry.image);
    if (!lock) return false;
    build->width = std::max(build->width, lock->width);
    build->height = std::max(build->height, lock->height);
    return true;
}

bool RemapFrames(Build* build) {
    if (!TellStatus(*build, "Remapping")) return false;
    Remapping remapping = {.build = build};
    RemapTarget& target = remapping.target;
    std::memcpy(target.palette, build->palette, kPaletteBytes);
    target.bitsPerPixel = build->bitsPerPixel;
    target.colorCount = build->colorCount;
    target.fastRemap = build->options.fastRemap;
    target.ditherBrightness = build->options.ditherBrightness;
    target.ditherContrast = build->options.ditherContrast;
    const FrameRunner* runner = build->environment.runner;
    if (runner && !build->options.trueColor && !PrepareTarget(&target)) return false;
    return RunFrames(
        runner, build->frames.count,
        {.user = &remapping, .before = TellRemapping, .transform = RemapFrame, .after = NoteSize});
}

// False: the host refused, or the build is abandoned.
bool OpenTask(Build* build) {
    if (!TellProgress(*build, 0, 0)) return false;
    FileObjectRecord& task = build->task;
    task.size = sizeof task;
    task.version = kPluginInterfaceVersion;
    task.window = reinterpret_cast<uintptr_t>(build->environment.window);
    task.bitsPerPixel = static_cast<uint32_t>(build->bitsPerPixel);
    task.width = static_cast<uint32_t>(build->width);
    task.height = static_cast<uint32_t>(build->height);
    std::memcpy(task.palette, build->palette, kPaletteBytes);
    task.frameCount = static_cast<uint32_t>(build->frames.count);
    if (build->options.localBackground) task.reservedIndex = static_cast<uint32_t>(build->reservedIndex);
    return RequestNewTask(HostOf(*build), build->options.test, task) != 0;
}

// Hands every frame to the host, in order. False: `*failure` says why.
bool AddFrames(const Build& build, BuildMessage* failure) {
    for (int32_t i = FramesBefore(build); i < build.frames.count; ++i) {
        FrameEntry entry;
        *failure = BuildMessage::MemoryError;
        if (IsAbandoned(build) || !GetFrame(build.frames, i, &entry)) return false;
        AddImageRecord record = {};
        record.size = sizeof record;
        record.version = kPluginInterfaceVersion;
        record.image = reinterpret_cast<uintptr_t>(entry.image);
        record.localBackground = build.options.localBackground;
        record.frameValue = entry.field3;
        record.index = static_cast<uint32_t>(i);
        record.transparentIndex = entry.transparentIndex;
        *failure = BuildMessage::ImageRefused;
        if (!RequestAddImage(HostOf(build), build.task, record)) return false;
    }
    return !IsAbandoned(build);
}

int32_t Fail(const Build& build, BuildMessage message) {
    if (!IsAbandoned(build)) build.environment.showMessage(build.environment.window, message);
    return 0;
}

}  // namespace

BuildOptions OptionsFromSettings() {
    BuildOptions options = {};
    options.paletteChoice = static_cast<int32_t>(settings.mainPalette);
    options.addComment = settings.addDescriptiveCommentBlock != 0;
    options.fastRemap = settings.fastRemap != 0;
    options.ditherBrightness = static_cast<int32_t>(settings.ditherBrightness);
    options.ditherContrast = static_cast<int32_t>(settings.ditherContrast);
    return options;
}

BuildOptions OptionsForMode(BuildOptions asSet, BuildMode mode) {
    asSet.test = mode == BuildMode::Test;
    if (mode == BuildMode::Plain) asSet.dither = asSet.trueColor = asSet.supercompress = false;
    return asSet;
}

int32_t RunBuild(const BuildEnvironment& environment, const BuildOptions& options) {
    Build build(environment, options);
    SettleOptions(&build);
    AskBackgroundColor(&build);
    if (!ChoosePalette(&build) || !RunEffect(&build) || !QuantizePalette(&build))
        return Fail(build, BuildMessage::MemoryError);
    if (environment.whole && environment.whole->use == WholeUse::Find) return 1;
    if (!SupercompressFrames(&build) || !RemapFrames(&build)) return Fail(build, BuildMessage::MemoryError);
    if (!OpenTask(&build)) return Fail(build, BuildMessage::NewTaskRefused);
    BuildMessage failure = BuildMessage::MemoryError;
    if (!AddFrames(build, &failure)) {
        Fail(build, failure);
        FreeFrames(&build.frames);
        RequestCloseTask(environment.host, build.task, false);
        return 0;
    }
    if (build.options.addComment) RequestAddComment(environment.host, build.task, kComment);
    RequestCloseTask(environment.host, build.task, true);
    return 1;
}

}  // namespace kfx
