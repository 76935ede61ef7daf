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

void CopyRun(const uint8_t* from, int32_t first, int32_t end, uint8_t* to) {
    std::memcpy(to + 3 * static_cast<size_t>(first), from + 3 * static_cast<size_t>(first),
                3 * static_cast<size_t>(end - first));
}

// How the points of one row are found.
struct RowPoints {
    const RegionDistortion* distortion;
    AspectScales scales;
    SampleRun run;  // of all its points
};

void Locate(const RowPoints& row, const SampleRun& run) {
    const auto unscale = Fastest<Unscale>();
    row.distortion->locate(run);
    unscale(run.x, run.count, row.scales.x, row.distortion->centerX);
    unscale(run.y, run.count, row.scales.y, row.distortion->centerY);
}

void LocateSome(const void* context, const int32_t* points, int32_t count, double* x, double* y) {
    const RowPoints& row = *static_cast<const RowPoints*>(context);
    double offsets[kMostLocated];
    int32_t distances[kMostLocated];
    for (int32_t i = 0; i < count; ++i) {
        offsets[i] = row.run.columnOffsets[points[i]];
        distances[i] = row.run.distances[points[i]];
    }
    SampleRun run = row.run;
    run.count = count;
    run.columnOffsets = offsets;
    run.distances = distances;
    run.x = x;
    run.y = y;
    Locate(row, run);
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
    const Scratch<double> points(2 * static_cast<size_t>(width));
    const Scratch<double> fieldRow(distortion.valuesPerPixel * static_cast<size_t>(width));
    if (!to || !columns.Ready() || !rows.Ready() || !points || !fieldRow) return nullptr;

    RadialField field = {.columns = &columns,
                         .rows = &rows,
                         .compute = distortion.compute,
                         .settings = distortion.settings,
                         .valuesPerPixel = distortion.valuesPerPixel,
                         .table = nullptr,
                         .row = fieldRow.address,
                         .found = false};
    KeepRadialField(&field, &cache->values, distortion.key, distortion.keyBytes);
    const KeptPoints kept =
        field.found ? KeepPoints(&cache->points, distortion.key, distortion.keyBytes, width, source->height)
                    : KeptPoints{};
    RowPoints row = {.distortion = &distortion, .scales = scales, .run = {}};
    row.run.valueCount = columns.distinct;
    row.run.x = points.address;
    row.run.y = points.address + width;
    for (int32_t y = 0; y < source->height; ++y) {
        const uint8_t* in = PictureRow(source, y);
        uint8_t* out = PictureRow(to.image, y);
        int32_t first, end;
        FindRun(columns, rows.square.address[rows.distance.address[y]], distortion.radius * distortion.radius,
                &first, &end);
        CopyRun(in, 0, first, out);
        CopyRun(in, end, width, out);
        if (first == end) continue;
        row.run.count = end - first;
        row.run.columnOffsets = columns.offset.address + first;
        row.run.distances = columns.distance.address + first;
        row.run.rowOffset = rows.offset.address[y];
        row.run.values = RadialRowAt(field, y);
        const KeptRow keptRow = KeptRowAt(kept, y);
        out += 3 * static_cast<size_t>(first);
        if (IsFilled(keptRow)) {
            SampleKeptRow(source, keptRow, LocateSome, &row, row.run.count, background, out);
            continue;
        }
        Locate(row, row.run);
        SampleRow(source, row.run.x, row.run.y, row.run.count, background, keptRow, out);
    }
    return to.Release();
}

}  // namespace kfx
