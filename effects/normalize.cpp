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

// The second word of a gathering record says what the first one is.
constexpr uint64_t kHistogram = 0;  // the handle of a histogram
constexpr uint64_t kRefused = 1;    // the same, but memory was refused
constexpr uint64_t kSummary = 2;    // a summary: the range that is stretched

// A summary: both ends of the range, and a bit that says that there is one.
constexpr uint32_t kHighShift = 8;
constexpr uint64_t kHasRange = 1u << 16;

MemoryHandle HandleOf(const uint64_t record[2]) { return reinterpret_cast<MemoryHandle>(record[0]); }

// False: all pixels have the same level, and there is nothing to stretch.
bool FindRange(const LuminanceHistogram& histogram, int32_t* low, int32_t* high) {
    FindLuminanceRange(histogram, histogram.pixels / 100, low, high);
    if (*low == *high) FindLuminanceRange(histogram, 0, low, high);
    return *low != *high;
}

ImageHandle Stretch(ImageHandle source, int32_t low, int32_t high) {
    const ImageLock from(source);
    if (!from || from->bitCount != 24) return nullptr;
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

// False: nothing is stretched.
bool FindGatheredRange(const uint64_t record[2], int32_t* low, int32_t* high) {
    if (record[1] == kSummary) {
        *low = static_cast<int32_t>(record[0] & 255);
        *high = static_cast<int32_t>(record[0] >> kHighShift & 255);
        return (record[0] & kHasRange) != 0 && *low < *high;
    }
    const MemoryLock lock(HandleOf(record));
    return lock && record[1] == kHistogram &&
           FindRange(*static_cast<const LuminanceHistogram*>(lock.address), low, high);
}

ImageHandle ApplyGatheredLuminance(ImageHandle source, const uint64_t record[2]) {
    int32_t low, high;
    return FindGatheredRange(record, &low, &high) ? Stretch(source, low, high) : nullptr;
}

bool SummarizeLuminance(const uint64_t record[2], uint64_t* summary) {
    int32_t low, high;
    *summary = 0;
    if (FindGatheredRange(record, &low, &high))
        *summary = kHasRange | static_cast<uint64_t>(high) << kHighShift | static_cast<uint64_t>(low);
    return record[1] != kRefused;
}

void RestoreLuminance(uint64_t summary, uint64_t record[2]) {
    record[0] = summary;
    record[1] = kSummary;
}

void ReleaseLuminance(uint64_t record[2]) {
    if (record[1] != kSummary) FreeMemory(HandleOf(record));
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
                                     .release = ReleaseLuminance,
                                     .summarize = SummarizeLuminance,
                                     .restore = RestoreLuminance};
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
