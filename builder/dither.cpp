// SPDX-License-Identifier: MIT
// Error diffusion. The irregular left edges (column 1 of both kinds, column 0 of the colour kind keep their
// error from going down and left; gray's column 0 sends it to the byte before the next row) are intended:
// they are what the pictures have always looked like.
#include <algorithm>
#include <cstring>

#include "builder/palette_order.h"
#include "builder/remap.h"
#include "framework/cpu.h"
#include "framework/memory_guards.h"

#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

constexpr int kLanes = 4;         // values of a pixel in the colour kind's error rows
constexpr int32_t kWaveRows = 4;  // rows that are converted together

// A new 8-bit picture of each pixel's luminance. Sources of other depths stay black.
ImageHandle MakeLuminance(const WorkingImage* from) {
    NewImage to(CreateDib(from->width, from->height, nullptr, 8));
    if (!to) return nullptr;
    uint8_t colors[kPaletteBytes];
    ReadColorTable(from, colors);
    for (int32_t r = 0; r < from->height; ++r) {
        const uint8_t* row = StoredRow(from, r);
        uint8_t* out = StoredRow(to.image, r);
        if (from->bitCount == 24) {
            for (int32_t x = 0; x < from->width; ++x, row += 3)
                out[x] = static_cast<uint8_t>(LuminanceOf(row[2], row[1], row[0]));
        } else if (from->bitCount <= 8) {
            for (int32_t x = 0; x < from->width; ++x) {
                const uint8_t* color = colors + 3 * GetIndex(row, from->bitCount, x);
                out[x] = static_cast<uint8_t>(LuminanceOf(color[0], color[1], color[2]));
            }
        }
    }
    return to.Release();
}

// Brightness shifts the curve, contrast steepens it. A contrast of 128 makes the step infinite, more makes it
// fall.
void MakeToneCurve(int32_t brightness, int32_t contrast, uint8_t curve[256]) {
    const double divisor = 256.0 - 2.0 * contrast;
    double v = static_cast<double>(brightness) - contrast;
    for (int i = 0; i < 256; ++i) {
        curve[i] = static_cast<uint8_t>(v > 254 ? 254 : v < 1.0 ? 1 : static_cast<int>(v));
        v = divisor == 0 ? 255 : v + 256 / divisor;
    }
}

void AddClamped(uint8_t* pixel, int32_t error) {
    *pixel = static_cast<uint8_t>(std::clamp(*pixel + error, 0, 255));
}

// One row of the gray kind; `below` is null in the last row.
void DitherGrayRow(uint8_t* row, uint8_t* below, int32_t width, const uint8_t curve[256], int32_t smallest,
                   int32_t largest, uint8_t* out) {
    const int32_t threshold = (smallest + largest) / 2;
    for (int32_t x = 0; x < width; ++x) {
        const int32_t tone = curve[row[x]];
        const bool bright = tone > threshold;
        if (bright) PutIndex<1>(out, x, 1);
        const int32_t share = (tone - (bright ? largest : smallest)) >> 4;
        if (x + 1 < width) AddClamped(row + x + 1, 7 * share);
        if (!below) continue;
        if (x + 1 < width) AddClamped(below + x + 1, share);
        if (x != 1)
            AddClamped(below + x - 1, 3 * share);  // for x = 0 the byte before the row: still in the picture
        AddClamped(below + x, 5 * share);
    }
}

ImageHandle DitherGray(const WorkingImage* from, const RemapTarget& target) {
    NewImage to(CreateDib(from->width, from->height, target.palette, target.bitsPerPixel));
    const MemoryOwner luminance(MakeLuminance(from));
    const ImageLock working(luminance.memory);
    if (!to || !working) return nullptr;

    uint8_t smallest = 255;
    uint8_t largest = 0;
    for (int32_t r = 0; r < from->height; ++r) {
        const uint8_t* row = StoredRow(working.image, r);
        const auto [least, greatest] = std::minmax_element(row, row + from->width);
        smallest = std::min(smallest, *least);
        largest = std::max(largest, *greatest);
    }
    uint8_t curve[256];
    MakeToneCurve(target.ditherBrightness, target.ditherContrast, curve);
    for (int32_t r = 0; r < from->height; ++r) {
        uint8_t* below = r + 1 < from->height ? StoredRow(working.image, r + 1) : nullptr;
        DitherGrayRow(StoredRow(working.image, r), below, from->width, curve, smallest, largest,
                      StoredRow(to.image, r));
    }
    return to.Release();
}

// A row of the source as blue-green-red bytes, made in `spread` (zeroed) where the source has them not;
// depths above 24 bits count as black.
const uint8_t* ColorRow(const WorkingImage* from, int32_t r, const uint8_t colors[kPaletteBytes],
                        uint8_t* spread) {
    const uint8_t* row = StoredRow(from, r);
    if (from->bitCount == 24) return row;
    if (from->bitCount > 8) return spread;
    for (int32_t x = 0; x < from->width; ++x) {
        const uint8_t* color = colors + 3 * GetIndex(row, from->bitCount, x);
        spread[3 * x] = color[2];
        spread[3 * x + 1] = color[1];
        spread[3 * x + 2] = color[0];
    }
    return spread;
}

// What colour rows are converted with and to.
struct ColorDither {
    ColorIndex* index;
    int16_t palette[256][kLanes];
    int32_t width;
};

// A row on its way: its pixels, the errors for it and those for the next row (kLanes values a pixel, blue,
// green, red and one unused; one pixel of room on the left), and its indices.
struct DitherRow {
    const uint8_t* from;
    const int16_t* errors;
    int16_t* next;
    uint8_t* out;
};

// A row's errors that its last pixels hand on.
struct Carry {
    int32_t right[3];      // to the next pixel
    int32_t below[3];      // gathered below the next pixel, and
    int32_t belowLeft[3];  // below this one
};

// Converts the pixel in column x and passes its error on.
template <int kBits>
void DitherPixel(const ColorDither& dither, const DitherRow& row, int32_t x, Carry* carry) {
    const auto column = static_cast<ptrdiff_t>(x);
    const uint8_t* from = row.from + 3 * column;
    const int16_t* errors = row.errors + kLanes * column;
    int16_t* next = row.next + kLanes * column;
    int32_t level[3];
    for (int c = 0; c < 3; ++c) level[c] = std::min(std::max(from[c] + errors[c] + carry->right[c], 0), 255);
    const uint8_t entry = LookUpColor(dither.index, static_cast<uint32_t>(level[2]),
                                      static_cast<uint32_t>(level[1]), static_cast<uint32_t>(level[0]));
    PutIndex<kBits>(row.out, x, entry);
    for (int c = 0; c < 3; ++c) {
        const int32_t e = level[c] - dither.palette[entry][c];
        carry->right[c] = 7 * e >> 4;
        if (x >= 2) next[c - kLanes] = static_cast<int16_t>(carry->belowLeft[c] + (3 * e >> 4));
        carry->belowLeft[c] = carry->below[c] + (5 * e >> 4);
        carry->below[c] = e >> 4;
        next[c] = static_cast<int16_t>(carry->belowLeft[c]);  // final unless another pixel follows
    }
}

template <int kBits>
void DitherRowsPlain(const ColorDither& dither, const DitherRow* rows, int32_t count) {
    for (int32_t k = 0; k < count; ++k) {
        Carry carry = {};
        for (int32_t x = 0; x < dither.width; ++x) DitherPixel<kBits>(dither, rows[k], x, &carry);
    }
}

#if KFX_HAS_AVX2

struct VectorCarry {
    __m128i right;
    __m128i below;
    __m128i belowLeft;
};

template <int kBits>
KFX_AVX2 KFX_INLINE void DitherPixelAvx2(const ColorDither& dither, const DitherRow& row, int32_t x,
                                         VectorCarry* carry) {
    const auto column = static_cast<ptrdiff_t>(x);
    const uint8_t* from = row.from + 3 * column;
    const auto* errors = reinterpret_cast<const __m128i*>(row.errors + kLanes * column);
    int16_t* next = row.next + kLanes * column;
    const uint32_t pixel =
        from[0] | static_cast<uint32_t>(from[1]) << 8 | static_cast<uint32_t>(from[2]) << 16;
    const __m128i color = _mm_cvtepu8_epi16(_mm_cvtsi32_si128(static_cast<int>(pixel)));
    const __m128i sum = _mm_add_epi16(_mm_add_epi16(color, _mm_loadl_epi64(errors)), carry->right);
    const __m128i clamped = _mm_packus_epi16(sum, sum);
    const auto level = static_cast<uint32_t>(_mm_cvtsi128_si32(clamped));
    const uint8_t entry = LookUpColor(dither.index, level >> 16 & 255, level >> 8 & 255, level & 255);
    PutIndex<kBits>(row.out, x, entry);
    const __m128i nearest = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(dither.palette[entry]));
    const __m128i e = _mm_sub_epi16(_mm_cvtepu8_epi16(clamped), nearest);
    carry->right = _mm_srai_epi16(_mm_sub_epi16(_mm_slli_epi16(e, 3), e), 4);
    const __m128i three = _mm_srai_epi16(_mm_add_epi16(_mm_slli_epi16(e, 1), e), 4);
    const __m128i five = _mm_srai_epi16(_mm_add_epi16(_mm_slli_epi16(e, 2), e), 4);
    if (x != 1)
        _mm_storel_epi64(reinterpret_cast<__m128i*>(next - kLanes), _mm_add_epi16(carry->belowLeft, three));
    carry->belowLeft = _mm_add_epi16(carry->below, five);
    carry->below = _mm_srai_epi16(e, 4);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(next), carry->belowLeft);
}

// Several rows at once, each two pixels behind the one before, whose errors it needs: a row by itself would
// wait for one look-up after the other.
template <int kBits, int kRows>
KFX_AVX2 void DitherWaveAvx2(const ColorDither& dither, const DitherRow* rows) {
    constexpr int32_t kLag = 2;
    constexpr int32_t kDelay = kLag * (kRows - 1);  // of the last row
    VectorCarry carries[kRows] = {};
    const auto step = [&](int32_t x, int k)
                          KFX_AVX2 { DitherPixelAvx2<kBits>(dither, rows[k], x, &carries[k]); };
    int32_t x = 0;
    const auto edge = [&](int32_t end) KFX_AVX2 {
        for (; x < end; ++x)
            for (int k = 0; k < kRows; ++k)
                if (x >= kLag * k && x - kLag * k < dither.width) step(x - kLag * k, k);
    };
    edge(kDelay);
    for (; x < dither.width; ++x)
        for (int k = 0; k < kRows; ++k) step(x - kLag * k, k);
    edge(dither.width + kDelay);
}

template <int kBits>
void DitherRowsAvx2(const ColorDither& dither, const DitherRow* rows, int32_t count) {
    if (count == kWaveRows) return DitherWaveAvx2<kBits, kWaveRows>(dither, rows);
    for (int32_t k = 0; k < count; ++k) DitherWaveAvx2<kBits, 1>(dither, rows + k);
}

#endif

using DitherRows = void (*)(const ColorDither& dither, const DitherRow* rows, int32_t count);

DitherRows ChooseDitherRows(int32_t bitCount) {
#if KFX_HAS_AVX2
    if (UseAvx2()) return bitCount == 8 ? DitherRowsAvx2<8> : DitherRowsAvx2<4>;
#endif
    return bitCount == 8 ? DitherRowsPlain<8> : DitherRowsPlain<4>;
}

void FillPalette(const RemapTarget& target, ColorDither* dither) {
    for (int i = 0; i < 256; ++i) {
        for (int c = 0; c < 3; ++c) dither->palette[i][c] = target.palette[3 * i + 2 - c];
        dither->palette[i][3] = 0;
    }
}

ImageHandle DitherColors(const WorkingImage* from, RemapTarget* target) {
    NewImage to(CreateDib(from->width, from->height, target->palette, target->bitsPerPixel));
    const auto width = static_cast<size_t>(from->width);
    const size_t rowErrors = kLanes * (width + 1);
    const size_t errorCount = (kWaveRows + 1) * rowErrors;
    // Behind the errors, rows that have to be spread into bytes first; full-colour rows are read where they
    // stand.
    const size_t spreadBytes = from->bitCount == 24 ? 0 : 3 * width;
    const Scratch<int16_t> errors(errorCount + kWaveRows * spreadBytes / sizeof(int16_t));
    if (!to || !errors) return nullptr;
    ColorDither dither;
    dither.index = IndexFor(target, to->bitCount);
    dither.width = from->width;
    if (!dither.index) return nullptr;
    FillPalette(*target, &dither);
    uint8_t colors[kPaletteBytes];
    ReadColorTable(from, colors);

    auto* spreadRows = reinterpret_cast<uint8_t*>(errors.address + errorCount);
    const DitherRows ditherRows = ChooseDitherRows(to->bitCount);
    for (int32_t r = 0; r < from->height; r += kWaveRows) {
        DitherRow rows[kWaveRows];
        const int32_t count = std::min(kWaveRows, from->height - r);
        for (int32_t k = 0; k < count; ++k) {
            int16_t* rowStart = errors.address + static_cast<size_t>(k) * rowErrors + kLanes;
            uint8_t* rowColors = spreadRows + static_cast<size_t>(k) * spreadBytes;
            rows[k] = {ColorRow(from, r + k, colors, rowColors), rowStart, rowStart + rowErrors,
                       StoredRow(to.image, r + k)};
        }
        ditherRows(dither, rows, count);
        std::memcpy(errors.address, errors.address + static_cast<size_t>(count) * rowErrors,
                    rowErrors * sizeof(int16_t));
    }
    return to.Release();
}

}  // namespace

ImageHandle DitherRemap(ImageHandle source, RemapTarget* target) {
    const ImageLock from(source);
    if (!from || from->bitCount == 1) return nullptr;
    return target->bitsPerPixel == 1 ? DitherGray(from.image, *target) : DitherColors(from.image, target);
}

}  // namespace kfx
