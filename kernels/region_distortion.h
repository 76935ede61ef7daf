// SPDX-License-Identifier: MIT
// What Swirl, Implode and Explode share: inside an ellipse round a centre each pixel is sampled elsewhere,
// outside it the picture stays.
#pragma once

#include "framework/working_image.h"
#include "kernels/radial_estimate.h"
#include "kernels/radial_field.h"

namespace kfx {

// Where pixels of one row are sampled. Offsets are from the centre, and scaled so that the region is a
// circle.
struct SampleRun {
    int32_t count;
    const double* columnOffsets;  // of each pixel
    const int32_t* distances;     // of each pixel: where its values stand
    double rowOffset;
    const double* values;  // exact or estimated, plane after plane
    int32_t valueCount;    // in each plane
    double* x;             // out: `count` offsets each
    double* y;
};

struct RegionDistortion {
    double centerX;  // pixels
    double centerY;
    double radius;          // of the region, along the longer side
    RadialRow compute;      // the field's values, needed inside the region only
    size_t valuesPerPixel;  // up to kMostValuesPerPixel
    const void* settings;
    void (*locate)(const SampleRun& run);
    EstimatePlan plan;  // its estimates put no pixel farther off than kPlaceError
    const void* key;    // for the cache: picture size and settings
    size_t keyBytes;
};

// Scales that turn the picture's ellipse into a circle: 1 along the longer side.
struct AspectScales {
    double x;
    double y;
};
AspectScales MakeAspectScales(int32_t width, int32_t height);

// A new image, or null when the picture is not 24 bits deep or memory ran out. `background` (0x00BBGGRR) is
// what lies outside the picture.
ImageHandle DistortRegion(const WorkingImage* source, const RegionDistortion& distortion, uint32_t background,
                          KernelCache* cache);

}  // namespace kfx
