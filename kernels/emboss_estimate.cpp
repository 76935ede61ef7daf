// SPDX-License-Identifier: MIT
// Emboss's matrix is nearly separable. Let g(k) = exp(-k^2 / sigma^2) be the bell. In a row with the samples
// p, let R be the sum of g(kx) * p over kx >= 0, and L the sum over kx < 0. A row above the pixel or level
// with it contributes 8 g(ky) (R - L), a row below it -8 g(ky) (R + L). What this adds on the anti-diagonal,
// including the centre, is subtracted again. So a sample takes about 3 n products instead of n^2. They are
// added in another order than the matrix has, so the sum is only an estimate: it differs from the exact sum
// by no more than a bound, which is computed from the weights. Where no rounding boundary lies within the
// bound, the byte is certain. The other samples are summed again in the order of the matrix; see
// emboss_settle.h.
#include "kernels/emboss_estimate.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/cpu.h"
#include "framework/math/elementary.h"
#include "framework/memory_guards.h"
#include "kernels/convolution.h"
#include "kernels/emboss_settle.h"

namespace kfx {
namespace {

constexpr double kGreatestBound = 0.05;    // beyond it too many samples would be summed twice
constexpr double kGreatestLoss = 2e-4;     // of levels, by leaving out the matrix's outer weights
constexpr double kUnitRoundoff = 1.2e-16;  // of double precision, a little more than 2^-53

struct Separation {
    int32_t reach;       // weights farther out are left out
    const double* bell;  // g(0), which is 1, to g(reach)
    double scale;        // 1 / the sum that divides
    double bound;        // of |estimate - exact value|, in levels
};

// The weight that the estimate gives matrix entry (ky, kx).
double EstimateWeight(const Separation& plan, int32_t ky, int32_t kx) {
    if (std::max(std::abs(ky), std::abs(kx)) > plan.reach || kx == -ky) return 0;
    const double weight = 8 * plan.bell[std::abs(ky)] * plan.bell[std::abs(kx)];
    return kx >= 0 && ky >= 0 ? weight : -weight;
}

// How far the estimate's weights are from the matrix, and the sum of the matrix's magnitudes.
void CompareWeights(const Separation& plan, int32_t n, const double* matrix, double* difference,
                    double* magnitude) {
    *difference = *magnitude = 0;
    for (int32_t i = 0; i < n; ++i)
        for (int32_t j = 0; j < n; ++j, ++matrix) {
            *difference += std::fabs(*matrix - EstimateWeight(plan, i - n / 2, j - n / 2));
            *magnitude += std::fabs(*matrix);
        }
}

// Chooses the least reach at which leaving out the outer weights loses little, and computes the bound. A sum
// of m terms is off by at most m roundoffs of the sum of their magnitudes, whatever the order; each of the
// estimate's products goes through no more than 3 * reach + 16 roundings.
bool PlanSeparation(int32_t n, const double* matrix, double sigma, double* bell, Separation* plan) {
    const double divisor = MatrixDivisor(n, matrix);
    plan->bell = bell;
    plan->scale = 1 / divisor;
    for (int32_t k = 0; k <= n / 2; ++k) bell[k] = Exp(-(k * k) / (sigma * sigma));
    double difference = 0, magnitude = 0;
    int32_t most = n / 2;
    for (int32_t least = std::min(1, most); least < most;) {
        plan->reach = (least + most) / 2;
        CompareWeights(*plan, n, matrix, &difference, &magnitude);
        if (difference * 255 / std::fabs(divisor) <= kGreatestLoss)
            most = plan->reach;
        else
            least = plan->reach + 1;
    }
    plan->reach = most;
    CompareWeights(*plan, n, matrix, &difference, &magnitude);
    double takenBack = 0;  // magnitude of what is added along the rows and taken back on the anti-diagonal
    for (int32_t k = 1; k <= plan->reach; ++k) takenBack += 32 * bell[k] * bell[k];
    const double rounding = kUnitRoundoff * ((static_cast<double>(n) * n + 2) * magnitude +
                                             (3 * plan->reach + 16) * (magnitude + takenBack));
    plan->bound = (difference + rounding) * 255 / std::fabs(divisor) + 1e-10;
    return plan->reach >= 1 && plan->bound < kGreatestBound;  // not for a NaN
}

// The rows that a result row is made of. Each ring holds rows -reach .. reach around it.
struct RowSet {
    const double* const* level;    // 8 (R - L) without the pixel itself: the centre counts nothing
    const double* const* above;    // 8 (R - L)
    const double* const* below;    // -8 (R + L)
    const double* const* samples;  // the bytes, with `reach` pixels from the row's other end on either side
};

struct RowSums {
    double* level;
    double* above;
    double* below;
};

// The three sums of one row for each sample.
KFX_INLINE void SumAlongRow(const Separation& plan, const double* padded, size_t count, const RowSums& out) {
    constexpr size_t kBlock = 24;  // two sums of each in registers
    const double* centre = padded + 3 * static_cast<ptrdiff_t>(plan.reach);
    for (size_t first = 0; first < count; first += kBlock) {
        double right[kBlock] = {}, left[kBlock] = {};
        for (int32_t k = 1; k <= plan.reach; ++k) {
            const double weight = plan.bell[k];
            const double* ahead = centre + first + 3 * static_cast<ptrdiff_t>(k);
            const double* behind = centre + first - 3 * static_cast<ptrdiff_t>(k);
            for (size_t s = 0; s < kBlock; ++s) right[s] += weight * ahead[s];
            for (size_t s = 0; s < kBlock; ++s) left[s] += weight * behind[s];
        }
        const double* samples = centre + first;
        for (size_t s = 0; s < kBlock; ++s) out.level[first + s] = 8 * (right[s] - left[s]);
        for (size_t s = 0; s < kBlock; ++s) right[s] += samples[s];
        for (size_t s = 0; s < kBlock; ++s) out.above[first + s] = 8 * (right[s] - left[s]);
        for (size_t s = 0; s < kBlock; ++s) out.below[first + s] = -8 * (right[s] + left[s]);
    }
}

// Writes the estimated bytes of one row, and for each byte whether it is in doubt. Returns whether any is.
KFX_INLINE bool RoundRow(const Separation& plan, const RowSet& rows, size_t count, uint8_t* __restrict bytes,
                         uint8_t* __restrict doubts) {
    constexpr size_t kBlock = 32;
    const int32_t reach = plan.reach;
    int32_t anyDoubt = 0;
    for (size_t first = 0; first < count; first += kBlock) {
        double sums[kBlock];
        const double* level = rows.level[reach] + first;
        for (size_t s = 0; s < kBlock; ++s) sums[s] = level[s];
        for (int32_t k = 1; k <= reach; ++k) {
            const double weight = plan.bell[k];
            const double* up = rows.above[reach + k] + first;
            const double* down = rows.below[reach - k] + first;
            for (size_t s = 0; s < kBlock; ++s) sums[s] += weight * (up[s] + down[s]);
            // The anti-diagonal: above to the left, below to the right.
            const double square = 8 * weight * weight;
            const double* upLeft = rows.samples[reach + k] + first + 3 * static_cast<ptrdiff_t>(reach - k);
            const double* downRight = rows.samples[reach - k] + first + 3 * static_cast<ptrdiff_t>(reach + k);
            for (size_t s = 0; s < kBlock; ++s) sums[s] += square * (upLeft[s] + downRight[s]);
        }
        // Rounding up from a half is truncation of the value plus a half; boundaries then lie at 1 .. 255.
        int32_t nearest[kBlock], whole[kBlock], doubt[kBlock];
        for (size_t s = 0; s < kBlock; ++s) {
            sums[s] = std::min(std::max(sums[s] * plan.scale + 0.5, 0.0), 256.0);
            nearest[s] = static_cast<int32_t>(sums[s] + 0.5);
            whole[s] = static_cast<int32_t>(sums[s]);
        }
        for (size_t s = 0; s < kBlock; ++s) doubt[s] = std::fabs(sums[s] - nearest[s]) < plan.bound;
        for (size_t s = 0; s < kBlock; ++s) {
            doubt[s] &= (nearest[s] > 0) & (nearest[s] < 256);
            anyDoubt |= doubt[s];
            bytes[first + s] = static_cast<uint8_t>(std::min(whole[s], 255));
            doubts[first + s] = static_cast<uint8_t>(doubt[s]);
        }
    }
    return anyDoubt != 0;
}

// `count` pixels of a row from column x on as doubles; columns outside are taken from the row's other end.
void WidenRow(const uint8_t* row, int32_t width, int32_t x, int32_t count, double* out) {
    while (count > 0) {
        const int32_t inside = WrapCoordinate(x, width);
        const int32_t run = std::min(count, width - inside);
        const uint8_t* samples = row + 3 * static_cast<size_t>(inside);
        for (ptrdiff_t s = 0; s < 3 * static_cast<ptrdiff_t>(run); ++s) out[s] = samples[s];
        out += 3 * static_cast<ptrdiff_t>(run);
        x += run;
        count -= run;
    }
}

constexpr int32_t kStripColumns = 256;  // a strip's rings stay in the cache, however wide the picture is
constexpr size_t kLongestBlock = 32;
// Smooth slopes leave nearly every sum on a boundary. Where the blocks of a row are mostly in doubt, the next
// rows are settled without an estimate.
constexpr int32_t kRowsWithoutEstimate = 15;

// Rows of a strip around the current one, by turns in `count` slots.
struct Ring {
    double* slots;
    size_t slotSize;
    int32_t reach;  // rows above and below, and pixels on either side
    int32_t ready;  // rows from -reach on that are in the ring
};

struct Workspace {
    Ring sums;     // for the estimate: a row's samples and its three sums
    Ring samples;  // for what is settled
    const double** pointers;
    uint8_t* bytes;
    uint8_t* doubts;
};

struct Strip {
    const WorkingImage* from;
    WorkingImage* to;
    int32_t left;
    int32_t columns;
    size_t samples;
};

int32_t RingRows(const Ring& ring) { return 2 * ring.reach + 1; }

double* SlotOf(const Ring& ring, int32_t row) {
    return ring.slots + static_cast<size_t>(row % RingRows(ring)) * ring.slotSize;
}

// Brings the rows around row `r` into the ring; `onRow` is called with each that is new.
template <typename OnRow>
void FillRing(const Strip& strip, int32_t r, Ring* ring, OnRow onRow) {
    const WorkingImage* from = strip.from;
    for (ring->ready = std::max(ring->ready, r); ring->ready < r + RingRows(*ring); ++ring->ready) {
        const uint8_t* row = StoredRow(from, WrapCoordinate(ring->ready - ring->reach, from->height));
        double* slot = SlotOf(*ring, ring->ready);
        WidenRow(row, from->width, strip.left - ring->reach, strip.columns + 2 * ring->reach, slot);
        onRow(slot);
    }
}

// Writes the estimated bytes of row `r` and which are in doubt. Returns whether any is.
bool EstimateRow(const Strip& strip, const Separation& plan, int32_t r, Workspace* space) {
    Ring* ring = &space->sums;
    const size_t part = ring->slotSize / 4;
    FillRing(strip, r, ring, [&](double* slot) {
        Fastest<SumAlongRow>()(plan, slot, strip.samples, {slot + part, slot + 2 * part, slot + 3 * part});
    });
    const int32_t rowCount = RingRows(*ring);
    for (int32_t k = 0; k < rowCount; ++k)
        for (int32_t which = 0; which < 4; ++which)
            space->pointers[which * rowCount + k] = SlotOf(*ring, r + k) + static_cast<size_t>(which) * part;
    const double* const* set = space->pointers;
    const RowSet rows = {set + rowCount, set + 2 * rowCount, set + 3 * rowCount, set};
    return Fastest<RoundRow>()(plan, rows, strip.samples, space->bytes, space->doubts);
}

// Computes the blocks of row `r` that hold a sample in doubt. Returns how many there are.
size_t SettleRow(const Strip& strip, const SettlePlan& plan, int32_t r, Workspace* space) {
    FillRing(strip, r, &space->samples, [](double*) {});
    for (int32_t k = 0; k < RingRows(space->samples); ++k)
        space->pointers[k] = SlotOf(space->samples, r + k) + 3 * static_cast<size_t>(space->samples.reach);
    size_t settled = 0;
    for (size_t first = 0; first < strip.samples; first += kSettledSamples) {
        uint8_t* doubts = space->doubts + first;
        if (std::none_of(doubts, doubts + kSettledSamples, [](uint8_t doubt) { return doubt != 0; }))
            continue;
        ++settled;
        if (SettleSamples(plan, space->pointers, first, space->bytes + first)) continue;
        for (size_t s = first; s < std::min(first + kSettledSamples, strip.samples); ++s) {
            uint8_t pixel[3];
            ConvolvePixel(strip.from, plan.matrix.n, plan.matrix.weights, plan.matrix.divisor,
                          strip.left + static_cast<int32_t>(s / 3), r, pixel);
            space->bytes[s] = pixel[s % 3];
        }
    }
    return settled;
}

void EmbossStrip(const Strip& strip, const Separation& plan, const SettlePlan& settling, Workspace* space) {
    const size_t blocks = (strip.samples + kSettledSamples - 1) / kSettledSamples;
    int32_t estimateFrom = 0;  // the first row that is estimated again
    for (int32_t r = 0; r < strip.from->height; ++r) {
        const bool estimated = r >= estimateFrom;
        if (!estimated) std::memset(space->doubts, 1, strip.samples);
        if (!estimated || EstimateRow(strip, plan, r, space)) {
            const size_t settled = SettleRow(strip, settling, r, space);
            if (estimated && settled > blocks / 2) estimateFrom = r + 1 + kRowsWithoutEstimate;
        }
        std::memcpy(StoredRow(strip.to, r) + 3 * static_cast<size_t>(strip.left), space->bytes,
                    strip.samples);
    }
}

// False: memory ran out.
bool EmbossStrips(const WorkingImage* from, WorkingImage* to, const Separation& plan,
                  const SettlePlan& settling) {
    const size_t samples = 3 * static_cast<size_t>(std::min(kStripColumns, from->width));
    const auto slotSize = [samples](int32_t reach) {
        return samples + 6 * static_cast<size_t>(reach) + kLongestBlock;
    };
    Ring sums = {.slots = nullptr, .slotSize = 4 * slotSize(plan.reach), .reach = plan.reach, .ready = 0};
    Ring around = {
        .slots = nullptr, .slotSize = slotSize(settling.reach), .reach = settling.reach, .ready = 0};
    const auto sumRows = static_cast<size_t>(RingRows(sums)),
               aroundRows = static_cast<size_t>(RingRows(around));
    const Scratch<double> slots(sumRows * sums.slotSize + aroundRows * around.slotSize);
    const Scratch<const double*> pointers(std::max(4 * sumRows, aroundRows));
    const Scratch<uint8_t> bytes(2 * (samples + kLongestBlock));
    if (!slots || !pointers || !bytes) return false;
    sums.slots = slots.address;
    around.slots = slots.address + sumRows * sums.slotSize;
    for (int32_t left = 0; left < from->width; left += kStripColumns) {
        const int32_t columns = std::min(kStripColumns, from->width - left);
        const Strip strip = {from, to, left, columns, 3 * static_cast<size_t>(columns)};
        Workspace space = {sums, around, pointers.address, bytes.address,
                           bytes.address + samples + kLongestBlock};
        EmbossStrip(strip, plan, settling, &space);
    }
    return true;
}

}  // namespace

ImageHandle EmbossWithinBound(ImageHandle source, int32_t n, const double* matrix, double sigma) {
    const ImageLock from(source);
    const Scratch<double> bell(static_cast<size_t>(n / 2) + 1);
    Separation plan;
    if (!from || from->bitCount != 24 || from->width < n || from->height < n) return nullptr;
    if (!bell || !PlanSeparation(n, matrix, sigma, bell.address, &plan)) return nullptr;
    NewImage to(CreateLike(from.image));
    const SettlePlan settling = PlanSettling({n, matrix, MatrixDivisor(n, matrix)});
    if (!to || !EmbossStrips(from.image, to.image, plan, settling)) return nullptr;
    return to.Release();
}

}  // namespace kfx
