// SPDX-License-Identifier: MIT
#include "tests/builder/refusal_inputs.h"

#include "framework/settings.h"
#include "framework/working_image.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {

std::vector<Output> Outputs() {
    BuildOptions plain = {};
    plain.paletteChoice = 6;
    plain.addComment = true;
    plain.ditherBrightness = plain.ditherContrast = 20;
    std::vector<Output> outputs;
    const auto add = [&](const char* name, bool effectHasBackground, auto change) {
        BuildOptions options = plain;
        change(options);
        outputs.push_back({name, options, effectHasBackground});
    };
    add("TrueColour", false, [](BuildOptions& o) { o.trueColor = true; });
    add("Fixed", false, [](BuildOptions&) {});
    add("FixedFast", false, [](BuildOptions& o) { o.fastRemap = true; });
    add("FixedDither", false, [](BuildOptions& o) { o.dither = true; });
    add("FixedSupercompress", false, [](BuildOptions& o) { o.supercompress = true; });
    add("Custom", false, [](BuildOptions& o) { o.customPalette = true; });
    add("CustomDither", false, [](BuildOptions& o) { o.customPalette = o.dither = true; });
    add("CustomSupercompress", false, [](BuildOptions& o) { o.customPalette = o.supercompress = true; });
    add("CustomLocalBackground", true, [](BuildOptions& o) { o.customPalette = o.localBackground = true; });
    add("Source", false, [](BuildOptions& o) { o.paletteChoice = kSourcePalette; });
    add("TwoColours", false, [](BuildOptions& o) { o.paletteChoice = 0; });
    add("TwoColoursDither", false, [](BuildOptions& o) { o.paletteChoice = 0, o.dither = true; });
    add("SixteenColours", false, [](BuildOptions& o) { o.paletteChoice = 1; });
    add("SixteenColoursDither", false, [](BuildOptions& o) { o.paletteChoice = 1, o.dither = true; });
    return outputs;
}

std::vector<uint8_t> SmallAnimation() {
    constexpr int32_t kDark = 64;
    uint8_t palette[kPaletteBytes] = {};
    for (int32_t i = 0; i < kDark; ++i) {
        palette[3 * i] = static_cast<uint8_t>(96 + i % 4);
        palette[3 * i + 1] = static_cast<uint8_t>(120 + i / 4 % 4);
        palette[3 * i + 2] = static_cast<uint8_t>(80 + i / 16);
    }
    const Picture first(CreateDib(kSide, kSide, palette, 8));
    {
        const ImageLock lock(first.handle);
        for (int32_t y = 0; y < kSide; ++y)
            for (int32_t x = 0; x < kSide; ++x)
                SetDibPixel(lock.image, x, y,
                            static_cast<uint32_t>(x < 3 && y < 3 ? kDark : (x * x + 5 * y) % kDark));
    }
    const Picture second(ConvertTo24Bits(first.handle));
    const ImageLock lock(second.handle);
    for (int32_t i = 0; i < 9; ++i) SetDibPixel(lock.image, 7 + i % 3, 7 + i / 3, kBackground);
    BlockOptions options;
    options.hasBackground = true;
    options.background = kBackground;
    for (int i = 0; i < 3 * 24; ++i) options.globalPalette.push_back(static_cast<uint8_t>(i * 37));
    return MakeAnimationBlock({{BytesOf(first.handle), {0, 0, 5, 0}}, {BytesOf(second.handle), {1, 2, 6, 3}}},
                              options);
}

void BuiltInSettings() {
    settings = Settings();
    settings.localBackgroundUse = 0;  // the source's own is asked for
}

void OtherSettings() {
    BuiltInSettings();
    settings.style000Radius = 3;
    settings.style003Angle = 40;
    settings.style004Radius = 2;
    settings.style006Radius = 400;
    settings.style007Cycles = 3;
    settings.style008Aperture = 3;
    settings.style009Dissipate = 0;
    settings.style009Wavelength = 500;
    settings.style010ChannelsEnable = 1;
    settings.style010HSBEnable = 0;
    settings.style011Size = 3;
    settings.style014Angle = 200;
    settings.style014Radius = 9;
    settings.style015Angle = 1440 - 500;
    settings.style017Radius = 30;
    settings.style017CenterX = 20;
    settings.style018Radius = 30;
    settings.style018CenterX = 20;
    settings.style019Distributed = 0;
}

}  // namespace kfx::test
