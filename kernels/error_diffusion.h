// SPDX-License-Identifier: MIT
// Rows of full colour turned into palette indices with the error spread over neighbours, by Floyd and
// Steinberg's weights.
#pragma once

#include "kernels/color_index.h"

namespace kfx {

constexpr int kErrorLanes = 4;        // values of a pixel in the error rows
constexpr int32_t kDiffusedRows = 4;  // rows that are converted together

// What colour rows are converted with and to.
struct ErrorDiffusion {
    ColorIndex* index;
    int16_t palette[256][kErrorLanes];
    int32_t width;
};

// A row that is being converted: its pixels, the errors for it and those for the next row (kErrorLanes values
// a pixel, blue, green, red and one unused; one pixel of room on the left), and its indices.
struct DiffusedRow {
    const uint8_t* from;
    const int16_t* errors;
    int16_t* next;
    uint8_t* out;
};

// Converts `count` rows, at most kDiffusedRows, the topmost first. Each row starts with the errors that the
// row before it has gathered.
using DiffuseRows = void (*)(const ErrorDiffusion& dither, const DiffusedRow* rows, int32_t count);

// The fastest such function for results of 4 or 8 bits.
DiffuseRows ChooseDiffuseRows(int32_t bitCount);

}  // namespace kfx
