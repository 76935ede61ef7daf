// SPDX-License-Identifier: MIT
// Everything that outlives a window: the user's choices and every effect's parameters. They are set by the
// configuration file when the window opens, and by the window's controls and settings documents while it is
// open. Without a window a command line sets them. Kernels never read them: they get numbers.
//
// One thread reads and writes them: the window's, or that of a command line. A program that runs kernels on
// several threads reads the values before it starts them, and passes them on.
#pragma once

#include <cstdint>

namespace kfx {

constexpr int kTextBytes = 261;  // at most 260 characters

struct Settings {
    uint32_t addDescriptiveCommentBlock = 1;
    char currentFileName[kTextBytes] = "untitled.kx1";
    uint32_t ditherBrightness = 20;
    uint32_t ditherContrast = 20;
    uint32_t fastRemap = 0;
    char fileNamePath[kTextBytes] = "";
    uint32_t firstRun = 1;
    char imageFile[kTextBytes] = "";
    uint32_t localBackgroundColor = 0x7F7F7F;
    uint32_t localBackgroundUse = 1;
    uint32_t mainDither = 0;
    uint32_t mainEffect = 14;
    uint32_t mainMaskBackground = 1;
    uint32_t mainPalette = 6;
    uint32_t mainRolling = 1;
    uint32_t mainSupercompress = 0;
    char openPath[kTextBytes] = "";
    uint32_t patchLevel = 1;
    uint32_t reloadPreviousSession = 1;
    uint32_t sampleWindowKeyLine = 0;
    uint32_t showFileOpenPreview = 1;
    uint32_t truecolour = 1;
    uint32_t updateDelay = 1000;
    uint32_t versionNumber = 512;

    // Not in the configuration file: lives with the library, so a reopened window remembers it.
    uint32_t customPalette = 0;

    // Parameters of the effects, by effect. A variable has the name of its key in the configuration file,
    // whose number is that of the effect's panel.

    // Emboss
    int32_t style000Depth = 15;  // not the panel's default of 25
    int32_t style000Radius = 5;

    // Explode
    int32_t style018Radius = 50;
    int32_t style018CenterX = 50;
    int32_t style018CenterY = 50;

    // Gaussian Blur
    int32_t style004Depth = 15;  // as Emboss's
    int32_t style004Radius = 5;

    // Glass Block
    int32_t style002Size = 20;

    // HSB and Channels
    int32_t style010Bri = 100;
    int32_t style010ChannelsEnable = 0;
    int32_t style010ChannelsOption = 0;
    int32_t style010HSBEnable = 1;
    int32_t style010Hue = 180;
    int32_t style010InvertColors = 0;
    int32_t style010Sat = 100;

    // Implode
    int32_t style017Radius = 50;
    int32_t style017CenterX = 50;
    int32_t style017CenterY = 50;

    // Lens Flare
    int32_t style001CenterX = 50;
    int32_t style001CenterY = 50;
    int32_t style001Intensity = 175;

    // Motion Blur
    int32_t style014Angle = 45;
    int32_t style014Depth = 25;
    int32_t style014Radius = 5;

    // Normalize
    int32_t style019Distributed = 1;

    // Obscure
    int32_t style005Level = 8;

    // Oil Painting
    int32_t style006Radius = 250;

    // Radial Blur
    int32_t style003Angle = 5;

    // Raster
    int32_t style011Density = 160;
    int32_t style011Size = 1;

    // Ripple
    int32_t style009Amplitude = 2500;
    int32_t style009CenterX = 100;
    int32_t style009CenterY = 100;
    int32_t style009Dissipate = 1;
    int32_t style009Energy = 15;
    int32_t style009Phase = 180;
    int32_t style009Wavelength = 1200;

    // Solarize
    int32_t style012Threshold = 128;

    // Swirl
    int32_t style015Angle = 1485;  // the slider's position: 1440 is no turn

    // Water Drops
    int32_t style008Aperture = 5;

    // Zoom Blur
    int32_t style007Cycles = 8;
    int32_t style007Displacement = 240;
};

extern Settings settings;

}  // namespace kfx
