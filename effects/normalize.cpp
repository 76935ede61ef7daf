// SPDX-License-Identifier: MIT
// Normalize: the range of luminance between the darkest and the brightest percent of the pixels is stretched
// over all levels, each channel through the same table. The stretched range ends at 254, and only what lies
// above it becomes 255. "Distributed" takes one histogram of all frames, so that an animation does not
// flicker.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/level_stretch.h"
#include "kernels/luminance_histogram.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// The second word of a gathering record once memory was refused. The first word is the handle of a histogram.
constexpr uint64_t kRefused = 1;

MemoryHandle HandleOf(const uint64_t record[2]) { return reinterpret_cast<MemoryHandle>(record[0]); }

// False: all pixels have the same level, and there is nothing to stretch.
bool FindRange(const LuminanceHistogram& histogram, int32_t* low, int32_t* high) {
    FindLuminanceRange(histogram, histogram.pixels / 100, low, high);
    if (*low == *high) FindLuminanceRange(histogram, 0, low, high);
    return *low != *high;
}

ImageHandle Stretch(ImageHandle source, const LuminanceHistogram& histogram) {
    const ImageLock from(source);
    int32_t low, high;
    if (!from || from->bitCount != 24 || !FindRange(histogram, &low, &high)) return nullptr;
    NewImage to(CreateLike(from.image));
    if (!to) return nullptr;
    const LevelStretch stretch = MakeLevelStretch(low, high);
    const size_t rowBytes = 3 * static_cast<size_t>(from->width);
    for (int32_t r = 0; r < from->height; ++r)
        StretchBytes(StoredRow(from.image, r), rowBytes, stretch, StoredRow(to.image, r));
    return to.Release();
}

// Without memory for the record every frame stays as it is.
void GatherLuminance(ImageHandle source, uint64_t record[2]) {
    if (record[1] == kRefused) return;
    const ImageLock from(source);
    if (!from) {
        // Without this frame the others would be stretched differently.
        record[1] = kRefused;
        return;
    }
    if (from->bitCount != 24) return;
    if (!HandleOf(record)) record[0] = reinterpret_cast<uint64_t>(AllocateMemory(sizeof(LuminanceHistogram)));
    const MemoryLock lock(HandleOf(record));
    if (lock)
        CountLuminance(from.image, static_cast<LuminanceHistogram*>(lock.address));
    else
        record[1] = kRefused;
}

ImageHandle ApplyGatheredLuminance(ImageHandle source, const uint64_t record[2]) {
    const MemoryLock lock(HandleOf(record));
    if (!lock || record[1] == kRefused) return nullptr;
    return Stretch(source, *static_cast<const LuminanceHistogram*>(lock.address));
}

void ReleaseLuminance(uint64_t record[2]) {
    FreeMemory(HandleOf(record));
    record[0] = 0;
    record[1] = 0;
}

// One frame by itself.
ImageHandle ApplyNormalize(ImageHandle source, const KernelInput&) {
    uint64_t record[2] = {0, 0};
    GatherLuminance(source, record);
    const ImageHandle result = ApplyGatheredLuminance(source, record);
    ReleaseLuminance(record);
    return result;
}

bool IsDistributed(const KernelInput& input) { return input.values[0] != 0; }

constexpr GatheringPasses kPasses = {.wanted = IsDistributed,
                                     .gather = GatherLuminance,
                                     .apply = ApplyGatheredLuminance,
                                     .release = ReleaseLuminance};
constexpr auto kControls = MakeControls({
    CheckBox(IDC_NORMALIZE_DISTRIBUTED, &settings.style019Distributed, NORMALIZE_DISTRIBUTED_TEXT),
});

}  // namespace

const Effect kNormalize = {.name = "Normalize",
                           .panel = IDD_PANEL_NORMALIZE,
                           .controls = kControls,
                           .apply = ApplyNormalize,
                           .gathering = &kPasses};

}  // namespace kfx
