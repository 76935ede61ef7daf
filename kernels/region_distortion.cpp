// SPDX-License-Identifier: MIT
#include "kernels/region_distortion.h"

#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "kernels/bilinear_sampler.h"

namespace kfx {
namespace {

// The columns of a row inside the region, from *first up to *end. Squared distances never fall on the way out
// from the centre, so the region is one run.
void FindRun(const RadialAxis& columns, double rowSquare, double radiusSquare, int32_t* first, int32_t* end) {
    const double* square = columns.square.address;
    const int32_t* distance = columns.distance.address;
    *first = 0;
    *end = columns.size;
    while (*first < *end && square[distance[*first]] + rowSquare >= radiusSquare) ++*first;
    while (*end > *first && square[distance[*end - 1]] + rowSquare >= radiusSquare) --*end;
}

// Turns scaled offsets into places. At least one of the two scales is 1; dividing by it would change nothing.
KFX_INLINE void Unscale(double* values, int32_t count, double scale, double center) {
    if (scale == 1)
        for (int32_t i = 0; i < count; ++i) values[i] += center;
    else
        for (int32_t i = 0; i < count; ++i) values[i] = values[i] / scale + center;
}

// Nearly the same for both coordinates.
KFX_INLINE void UnscaleEstimates(const SampleRun& run, const AspectScales& scales, double centerX,
                                 double centerY) {
    const double inverseX = 1 / scales.x, inverseY = 1 / scales.y;
    for (int32_t i = 0; i < run.count; ++i) {
        run.x[i] = run.x[i] * inverseX + centerX;
        run.y[i] = run.y[i] * inverseY + centerY;
    }
}

void CopyRun(const uint8_t* from, int32_t first, int32_t end, uint8_t* to) {
    std::memcpy(to + 3 * static_cast<size_t>(first), from + 3 * static_cast<size_t>(first),
                3 * static_cast<size_t>(end - first));
}

// The sum of the numbers of two rows at the same distance; -1: all distances differ.
int32_t FindMirrorSum(const RadialAxis& rows) {
    const int32_t* distance = rows.distance.address;
    for (int32_t y = 0; y + 1 < rows.size; ++y) {
        if (distance[y] == distance[y + 1]) return 2 * y + 1;
        if (y + 2 < rows.size && distance[y] == distance[y + 2]) return 2 * y + 2;
    }
    return -1;
}

// What all rows share.
struct Distorted {
    const RegionDistortion* distortion;
    AspectScales scales;
    const RadialAxis* columns;
    const RadialAxis* rows;
    const RadialEstimate* estimate;
    const RadialField* field;  // used without polynomials
    const KeptPoints* kept;
    double* x;  // room for a row each
    double* y;
    double* estimates;  // of a row's values
};

// How the points of one row are found. Without `values`, which are the field's, the exact ones are computed
// where they are asked for.
struct RowPoints {
    const Distorted* shared;
    int32_t first;  // column
    double rowSquare;
    double rowOffset;
    const double* values;
};

// Some points of a row, as a RadialRow and then the distortion want them.
struct SomePoints {
    double offsets[kMostLocated];
    int32_t distances[kMostLocated];
    double squares[kMostLocated];
    double values[kMostValuesPerPixel * kMostLocated];
    int32_t count;
    int32_t computed;  // and some more, a multiple of four: fewer take longer
};

void Gather(const RowPoints& row, const int32_t* points, int32_t count, SomePoints* some) {
    const RadialAxis& columns = *row.shared->columns;
    for (int32_t i = 0; i < count; ++i) {
        const int32_t column = row.first + points[i];
        const int32_t distance = columns.distance.address[column];
        some->offsets[i] = columns.offset.address[column];
        some->distances[i] = row.values ? distance : i;
        some->squares[i] = columns.square.address[distance];
    }
    some->count = some->computed = count;
    for (; some->computed % 4 != 0; ++some->computed)
        some->squares[some->computed] = some->squares[count - 1];
}

SampleRun RunOf(const RowPoints& row, const SomePoints& some, double* x, double* y) {
    return {.count = some.count,
            .columnOffsets = some.offsets,
            .distances = some.distances,
            .rowOffset = row.rowOffset,
            .values = row.values ? row.values : some.values,
            .valueCount = row.values ? row.shared->columns->distinct : some.computed,
            .x = x,
            .y = y};
}

void LocateSome(const void* context, const int32_t* points, int32_t count, double* x, double* y) {
    const RowPoints& row = *static_cast<const RowPoints*>(context);
    const RegionDistortion& distortion = *row.shared->distortion;
    SomePoints some;
    Gather(row, points, count, &some);
    if (!row.values)
        distortion.compute(distortion.settings, some.squares, some.computed, row.rowSquare, some.values,
                           static_cast<size_t>(some.computed));
    distortion.locate(RunOf(row, some, x, y));
    const auto unscale = Fastest<Unscale>();
    unscale(x, count, row.shared->scales.x, distortion.centerX);
    unscale(y, count, row.shared->scales.y, distortion.centerY);
}

void EstimateRun(const RowPoints& row, const SampleRun& run) {
    const RegionDistortion& distortion = *row.shared->distortion;
    distortion.locate(run);
    Fastest<UnscaleEstimates>()(run, row.shared->scales, distortion.centerX, distortion.centerY);
}

void EstimateSome(const void* context, const int32_t* points, int32_t count, double* x, double* y) {
    const RowPoints& row = *static_cast<const RowPoints*>(context);
    SomePoints some;
    Gather(row, points, count, &some);
    if (!row.values)
        EstimateRow(*row.shared->estimate, row.shared->distortion->valuesPerPixel, some.squares,
                    some.computed, row.rowSquare, some.values, static_cast<size_t>(some.computed));
    EstimateRun(row, RunOf(row, some, x, y));
}

void EstimateValues(const Distorted& shared, double rowSquare) {
    const double* squares = shared.columns->square.address;
    const int32_t distinct = shared.columns->distinct;
    const DistanceRun run = DistancesWithin(shared.distortion->radius, squares, distinct, rowSquare);
    EstimateRow(*shared.estimate, shared.distortion->valuesPerPixel, squares + run.first, run.end - run.first,
                rowSquare, shared.estimates + run.first, static_cast<size_t>(distinct));
}

void EstimateAll(const RowPoints& row, int32_t count) {
    const Distorted& shared = *row.shared;
    EstimateRun(row, {.count = count,
                      .columnOffsets = shared.columns->offset.address + row.first,
                      .distances = shared.columns->distance.address + row.first,
                      .rowOffset = row.rowOffset,
                      .values = row.values ? row.values : shared.estimates,
                      .valueCount = shared.columns->distinct,
                      .x = shared.x,
                      .y = shared.y});
}

// Row y, and the row at the same distance from the centre where there is another one.
void DistortRows(const Distorted& shared, const WorkingImage* source, int32_t y, int32_t mirror,
                 uint32_t background, WorkingImage* to) {
    const int32_t width = source->width;
    const double radius = shared.distortion->radius;
    RowPoints row = {.shared = &shared,
                     .first = 0,
                     .rowSquare = shared.rows->square.address[shared.rows->distance.address[y]],
                     .rowOffset = 0,
                     .values = shared.estimate->polynomials ? nullptr : RadialRowAt(*shared.field, y)};
    int32_t end;
    FindRun(*shared.columns, row.rowSquare, radius * radius, &row.first, &end);
    const PointRow points = {.count = end - row.first,
                             .x = shared.x,
                             .y = shared.y,
                             .estimate = EstimateSome,
                             .locate = LocateSome,
                             .context = &row};
    bool estimated = row.values != nullptr;
    const int32_t both[] = {y, mirror};
    for (const int32_t each : both) {
        if (each < 0) break;
        const uint8_t* in = PictureRow(source, each);
        uint8_t* out = PictureRow(to, each);
        CopyRun(in, 0, row.first, out);
        CopyRun(in, end, width, out);
        if (points.count == 0) continue;
        out += 3 * static_cast<size_t>(row.first);
        row.rowOffset = shared.rows->offset.address[each];
        const KeptRow kept = KeptRowAt(*shared.kept, each);
        if (IsFilled(kept)) {
            SampleKeptRow(source, points, background, kept, out);
            continue;
        }
        if (!estimated) EstimateValues(shared, row.rowSquare);
        estimated = true;
        if (UseAvx2()) EstimateAll(row, points.count);
        SampleRow(source, points, background, kept, out);
    }
}

}  // namespace

AspectScales MakeAspectScales(int32_t width, int32_t height) {
    AspectScales scales = {1, 1};
    if (width > height) scales.y = static_cast<double>(width) / height;
    if (width < height) scales.x = static_cast<double>(height) / width;
    return scales;
}

ImageHandle DistortRegion(const WorkingImage* source, const RegionDistortion& distortion, uint32_t background,
                          KernelCache* cache) {
    if (source->bitCount != 24) return nullptr;
    const int32_t width = source->width;
    const AspectScales scales = MakeAspectScales(width, source->height);
    NewImage to(CreateLike(source));
    const RadialAxis columns(width, distortion.centerX, scales.x);
    const RadialAxis rows(source->height, distortion.centerY, scales.y);
    const Scratch<double> places(2 * static_cast<size_t>(width));
    const Scratch<double> fieldRow(distortion.valuesPerPixel * static_cast<size_t>(width));
    if (!to || !columns.Ready() || !rows.Ready() || !places || !fieldRow) return nullptr;

    const int64_t pixels = int64_t{width} * source->height;
    const RadialEstimate estimate = KeepRadialEstimate(
        distortion.plan, distortion.compute, distortion.settings, distortion.valuesPerPixel,
        distortion.radius, pixels, &cache->polynomials, distortion.key, distortion.keyBytes);
    RadialField field = {.columns = &columns,
                         .rows = &rows,
                         .compute = distortion.compute,
                         .settings = distortion.settings,
                         .radius = distortion.radius,
                         .valuesPerPixel = distortion.valuesPerPixel,
                         .table = nullptr,
                         .row = fieldRow.address,
                         .found = false};
    if (!estimate.polynomials) KeepRadialField(&field, &cache->values, distortion.key, distortion.keyBytes);
    KeptPoints kept = {};
    // Kept points must belong to the same estimates in every frame. So they are not kept of a frame whose
    // polynomials had no memory.
    if (estimate.found || (field.found && !IsEstimated(distortion.plan, pixels)))
        kept = KeepPoints(&cache->points, distortion.key, distortion.keyBytes, width, source->height);
    const Distorted shared = {.distortion = &distortion,
                              .scales = scales,
                              .columns = &columns,
                              .rows = &rows,
                              .estimate = &estimate,
                              .field = &field,
                              .kept = &kept,
                              .x = places.address,
                              .y = places.address + width,
                              .estimates = fieldRow.address};
    const int32_t mirrorSum = FindMirrorSum(rows);
    for (int32_t y = 0; y < source->height; ++y) {
        const int32_t mirror = mirrorSum - y;
        const bool paired = mirror >= 0 && mirror < source->height && mirror != y;
        if (!paired || y < mirror) DistortRows(shared, source, y, paired ? mirror : -1, background, to.image);
    }
    return to.Release();
}

}  // namespace kfx
