// SPDX-License-Identifier: MIT
// A sum in double precision depends on the order of adding, so each sum adds its products in the order of the
// matrix. The sums of several neighbouring samples are computed at the same time.
#include "kernels/convolution.h"

#include <algorithm>

#include "framework/cpu.h"
#include "framework/memory_guards.h"

namespace kfx {
namespace {

constexpr size_t kBlock = 32;  // samples summed side by side: as many as registers hold

uint8_t ToByte(double value) {
    if (value < 0) return 0;
    if (value > 255) return 255;
    return static_cast<uint8_t>(value + 0.5);
}

// The sums of kBlock samples; matrix entry (i, j) is the weight of rows[i][3 * j] in the first of them.
KFX_INLINE void SumBlock(const double* const* rows, size_t first, int32_t n, const double* matrix,
                         double* out) {
    double sums[kBlock] = {};
    for (int32_t i = 0; i < n; ++i) {
        const double* samples = rows[i] + first;
        for (int32_t j = 0; j < n; ++j, samples += 3) {
            const double weight = *matrix++;
            for (size_t s = 0; s < kBlock; ++s) sums[s] += weight * samples[s];
        }
    }
    for (size_t s = 0; s < kBlock; ++s) out[s] = sums[s];
}

// A row of bytes as doubles, with `half` pixels from its other end on either side.
void WidenRow(const uint8_t* row, int32_t width, int32_t half, double* out) {
    for (int32_t x = -half; x < width + half; ++x, out += 3) {
        const uint8_t* pixel = row + 3 * static_cast<size_t>(WrapCoordinate(x, width));
        for (int c = 0; c < 3; ++c) out[c] = pixel[c];
    }
}

}  // namespace

double MatrixDivisor(int32_t n, const double* matrix) {
    double sum = 0;
    for (int32_t i = 0; i < n * n; ++i) sum += matrix[i];
    // Dividing by 1 changes no value, so sums of 0 and 1 need no case of their own.
    return sum == 0 ? 1 : sum;
}

void ConvolvePixel(const WorkingImage* source, int32_t n, const double* matrix, double divisor, int32_t x,
                   int32_t r, uint8_t out[3]) {
    double blue = 0, green = 0, red = 0;
    for (int32_t i = 0; i < n; ++i) {
        const uint8_t* row = StoredRow(source, WrapCoordinate(r - n / 2 + i, source->height));
        for (int32_t j = 0; j < n; ++j, ++matrix) {
            const uint8_t* pixel =
                row + 3 * static_cast<size_t>(WrapCoordinate(x - n / 2 + j, source->width));
            blue += *matrix * pixel[0];
            green += *matrix * pixel[1];
            red += *matrix * pixel[2];
        }
    }
    out[0] = ToByte(blue / divisor);
    out[1] = ToByte(green / divisor);
    out[2] = ToByte(red / divisor);
}

ImageHandle ConvolveImage(ImageHandle source, int32_t n, const double* matrix) {
    const ImageLock from(source);
    if (!from || from->bitCount != 24) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    if (n < 1 || n % 2 == 0 || width < n || height < n) return nullptr;
    const size_t samples = 3 * static_cast<size_t>(width);
    // Room for a last block that begins before the row's end.
    const size_t rowSamples = samples + 3 * static_cast<size_t>(n) + kBlock;
    NewImage to(CreateLike(from.image));
    const Scratch<double> ring(rowSamples * static_cast<size_t>(n));
    const Scratch<const double*> rows(static_cast<size_t>(n));
    if (!to || !ring || !rows) return nullptr;

    const double divisor = MatrixDivisor(n, matrix);
    const auto sumBlock = Fastest<SumBlock>();
    const int32_t half = n / 2;
    // The n rows under the matrix, widened; row -half + k stands at place k % n.
    int32_t widened = 0;
    for (int32_t r = 0; r < height; ++r) {
        for (; widened < r + n; ++widened)
            WidenRow(StoredRow(from.image, WrapCoordinate(widened - half, height)), width, half,
                     ring.address + static_cast<size_t>(widened % n) * rowSamples);
        for (int32_t i = 0; i < n; ++i)
            rows.address[i] = ring.address + static_cast<size_t>((r + i) % n) * rowSamples;
        uint8_t* out = StoredRow(to.image, r);
        for (size_t first = 0; first < samples; first += kBlock) {
            double sums[kBlock];
            sumBlock(rows.address, first, n, matrix, sums);
            for (size_t s = 0; s < std::min(kBlock, samples - first); ++s)
                out[first + s] = ToByte(sums[s] / divisor);
        }
    }
    return to.Release();
}

}  // namespace kfx
