// SPDX-License-Identifier: MIT
// The names of the fixed palettes in the palette list's order, for the resource compiler, the window and the
// command line alike.
#pragma once

#define PALETTE_NAME_0 "Black and white"
#define PALETTE_NAME_1 "Sixteen-color Windows"
#define PALETTE_NAME_2 "32-color orthogonal"
#define PALETTE_NAME_3 "64-color orthogonal"
#define PALETTE_NAME_4 "128-color orthogonal"
#define PALETTE_NAME_5 "216-color safe"
#define PALETTE_NAME_6 "256-color orthogonal"
#define PALETTE_NAME_7 "256-color with gray"
#define PALETTE_NAME_8 "256 gray levels"

// All of them, separated by ";".
#define FIXED_PALETTE_NAMES                                                                    \
    PALETTE_NAME_0 ";" PALETTE_NAME_1 ";" PALETTE_NAME_2 ";" PALETTE_NAME_3 ";" PALETTE_NAME_4 \
                   ";" PALETTE_NAME_5 ";" PALETTE_NAME_6 ";" PALETTE_NAME_7 ";" PALETTE_NAME_8

// The name of the source's own palette, which stands last where the source has one.
#define PALETTE_NAME_SOURCE "Match original"
