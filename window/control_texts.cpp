// SPDX-License-Identifier: MIT
#include "window/control_texts.h"

#include <cstdio>
#include <cstring>

#include "framework/number_text.h"
#include "resources/resource_ids.h"

namespace kfx {
namespace {

#define TEXT_OF(number) TEXT_OF_EXPANDED(number)
#define TEXT_OF_EXPANDED(number) #number

constexpr Unit kTenths = {.one = "tenth of a pixel", .many = "tenths of a pixel"};
constexpr Unit kHundredths = {.one = "hundredth of a pixel", .many = "hundredths of a pixel"};
constexpr Unit kPixels = {.one = "pixel", .many = "pixels"};
constexpr Unit kPercent = {.one = "percent", .many = "percent"};
constexpr Unit kPercentParts = {.one = "hundredth of a percent", .many = "hundredths of a percent"};
constexpr Unit kDegrees = {.one = "degree", .many = "degrees"};
constexpr Unit kRadianParts = {.one = "hundredth of a radian", .many = "hundredths of a radian"};
constexpr Unit kSteps = {.one = "step", .many = "steps"};

constexpr char kRight[] = "How far to the right the point lies, in percent of the width, @.";
constexpr char kDown[] = "How far down the point lies, in percent of the height, @.";
constexpr char kStrength[] = "Strength, in percent, @.";

// The panels' texts are those of the help document, in the spelling of the window.
constexpr ControlText kTexts[] = {
    {.id = IDC_PREVIEW, .tip = "The first frame with the current effect.", .name = "Preview"},
    {.id = IDC_SOURCE_PATH,
     .tip = "The animation that the effect is applied to.",
     .name = "Current animation"},
    {.id = IDC_SOURCE_SIZE,
     .tip = "Width and height of the animation, in pixels.",
     .name = "Size of the animation"},
    {.id = IDC_SELECT, .tip = "Chooses the animation that the effect is applied to."},
    {.id = IDC_TRUE_COLOR,
     .tip = "Frames keep all their colors. Your editor must accept it; otherwise the box is grayed."},
    {.id = IDC_DITHER, .tip = "Imitates missing colors by patterns."},
    {.id = IDC_SUPERCOMPRESS,
     .tip = "Makes pixels transparent that do not change from frame to frame, so that files become smaller. "
            "Not with true color."},
    {.id = IDC_ADD_COMMENT, .tip = "Adds a note on how the animation was made."},
    {.id = IDC_CUSTOM_PALETTE,
     .tip = "Computes the best palette for the whole animation, up to 256 colors. It also opens the list of "
            "palettes."},
    {.id = IDC_PALETTE,
     .tip = "The palette used when none is computed. Match original is offered when the source has a palette "
            "of its own.",
     .name = "Palette"},
    {.id = IDC_LOCAL_BACKGROUND,
     .tip = "The color that effects show where they reach beyond the picture. Click the swatch to change it. "
            "Without it, the source's own background is used, or gray."},
    {.id = IDC_BACKGROUND_COLOR,
     .tip = "Chooses the color of the local background.",
     .name = "Background color"},
    {.id = IDC_LOGO,
     .tip = "Kestrel FX #1, version " TEXT_OF(KFX_VERSION_MAJOR) "." TEXT_OF(KFX_VERSION_MINOR)
         KFX_VERSION_LETTER ".",
     .name = "Logo"},
    {.id = IDC_OPEN_SAVE,
     .tip = "Opens a settings document (Ctrl+O), or saves the settings of this window as one (Ctrl+S)."},
    {.id = IDC_HELP_BUTTON, .tip = "Shows the help document (F1)."},
    {.id = IDC_ABOUT, .tip = "Tells the version and where to find the plug-in's web page."},
    {.id = IDC_BUILD,
     .tip = "Builds a new animation with the current effect, gives it to your editor and closes the window."},
    {.id = IDC_TEST, .tip = "Builds a new animation for a look at it. The window stays open."},
    {.id = IDC_CANCEL, .tip = "Closes the window without building. The settings are kept for the next time."},
    {.id = IDC_EFFECT, .tip = "Chooses the effect. Its settings stand below.", .name = "Effect"},

    {.id = IDC_EMBOSS_RADIUS, .tip = "Width of the edges, in tenths of a pixel, @.", .unit = &kTenths},
    {.id = IDC_EMBOSS_DEPTH,
     .tip = "Side of the square looked at around each pixel, in pixels, @. Larger is slower.",
     .unit = &kPixels},
    {.id = IDC_EXPLODE_RADIUS, .tip = kStrength, .unit = &kPercent},
    {.id = IDC_EXPLODE_CENTER_X, .tip = kRight, .unit = &kPercent},
    {.id = IDC_EXPLODE_CENTER_Y, .tip = kDown, .unit = &kPercent},
    {.id = IDC_GAUSSIAN_BLUR_RADIUS, .tip = "Strength, in tenths of a pixel, @.", .unit = &kTenths},
    {.id = IDC_GAUSSIAN_BLUR_DEPTH,
     .tip = "How far the blur reaches, in tenths of a pixel to each side, @.",
     .unit = &kTenths},
    {.id = IDC_GLASS_BLOCK_SIZE, .tip = "Half the side of a brick, in pixels, @.", .unit = &kPixels},
    {.id = IDC_HSB_HUE, .tip = "Turns the colors, in degrees, @; 180 changes nothing.", .unit = &kDegrees},
    {.id = IDC_HSB_SATURATION,
     .tip = "Strength of the colors, in percent, @; 0 is gray, 100 changes nothing.",
     .unit = &kPercent},
    {.id = IDC_HSB_BRIGHTNESS,
     .tip = "Light in the picture, in percent, @; 0 is black, 100 changes nothing.",
     .unit = &kPercent},
    {.id = IDC_HSB_ENABLE, .tip = "Applies the three sliders."},
    {.id = IDC_HSB_INVERT, .tip = "Every color becomes its opposite."},
    {.id = IDC_HSB_CHANNELS,
     .tip = "Which color channels are exchanged with each other, or turned round among all three."},
    {.id = IDC_HSB_CHANNELS_ENABLE, .tip = "Exchanges the color channels as chosen in Channels."},
    {.id = IDC_IMPLODE_RADIUS, .tip = kStrength, .unit = &kPercent},
    {.id = IDC_IMPLODE_CENTER_X, .tip = kRight, .unit = &kPercent},
    {.id = IDC_IMPLODE_CENTER_Y, .tip = kDown, .unit = &kPercent},
    {.id = IDC_LENS_FLARE_CENTER_X,
     .tip = "How far to the right the light lies, in percent of the width, @.",
     .unit = &kPercent},
    {.id = IDC_LENS_FLARE_CENTER_Y,
     .tip = "How far down the light lies, in percent of the height, @.",
     .unit = &kPercent},
    {.id = IDC_LENS_FLARE_INTENSITY, .tip = "Size of the flare, @."},
    {.id = IDC_MOTION_BLUR_DEPTH, .tip = "How slowly the smear fades, @."},
    {.id = IDC_MOTION_BLUR_RADIUS,
     .tip = "Length of the smear, in pixels, @. Larger is slower.",
     .unit = &kPixels},
    {.id = IDC_MOTION_BLUR_ANGLE, .tip = "Direction of the smear, in degrees, @.", .unit = &kDegrees},
    {.id = IDC_NORMALIZE_DISTRIBUTED,
     .tip = "Stretches all frames alike, so that the animation does not flicker. Without it, each frame is "
            "stretched by itself. The preview shows the first frame by itself."},
    {.id = IDC_OBSCURE_LEVEL, .tip = "Side of a tile, in pixels, @.", .unit = &kPixels},
    {.id = IDC_OIL_PAINTING_RADIUS,
     .tip = "Size of the strokes, in hundredths of a pixel, @.",
     .unit = &kHundredths},
    {.id = IDC_RADIAL_BLUR_ANGLE, .tip = "How far it turns, in degrees, @.", .unit = &kDegrees},
    {.id = IDC_RASTER_DENSITY, .tip = "How strongly the lines cover, @."},
    {.id = IDC_RASTER_SIZE, .tip = "Height of lines and gaps, in pixels, @.", .unit = &kPixels},
    {.id = IDC_RIPPLE_CENTER_X,
     .tip = "How far to the right the point lies, in percent of the width, @; 100 is the middle, 50 and 150 "
            "are the edges.",
     .unit = &kPercent},
    {.id = IDC_RIPPLE_CENTER_Y,
     .tip = "How far down the point lies, in percent of the height, @; 100 is the middle, 50 and 150 are the "
            "edges.",
     .unit = &kPercent},
    {.id = IDC_RIPPLE_AMPLITUDE,
     .tip = "Height of the waves, in hundredths of a pixel, @.",
     .unit = &kHundredths},
    {.id = IDC_RIPPLE_WAVELENGTH,
     .tip = "From crest to crest, in hundredths of a pixel, @.",
     .unit = &kHundredths},
    {.id = IDC_RIPPLE_PHASE,
     .tip = "Shifts the waves outwards, in hundredths of a radian, @.",
     .unit = &kRadianParts},
    {.id = IDC_RIPPLE_ENERGY,
     .tip = "Strength of fading waves, in percent, @; used with Dissipate.",
     .unit = &kPercent},
    {.id = IDC_RIPPLE_DISSIPATE, .tip = "Lets the waves fade with distance."},
    {.id = IDC_SOLARIZE_THRESHOLD, .tip = "Values below it are inverted, @."},
    {.id = IDC_SWIRL_ANGLE,
     .tip = "How far the middle turns, in degrees, @; 0 changes nothing.",
     .unit = &kDegrees},
    {.id = IDC_WATER_DROPS_APERTURE, .tip = "How far they scatter, in pixels, @.", .unit = &kPixels},
    {.id = IDC_ZOOM_BLUR_DISPLACEMENT,
     .tip = "Length of a step, in hundredths of a percent of the way to the middle, @.",
     .unit = &kPercentParts},
    {.id = IDC_ZOOM_BLUR_CYCLES, .tip = "Number of steps, @; more are smoother and slower.", .unit = &kSteps},
};

}  // namespace

const ControlText* FindControlText(int id) {
    for (const ControlText& text : kTexts)
        if (text.id == id) return &text;
    return nullptr;
}

void WriteTip(const ControlText& text, const char* range, char* tip, size_t bytes) {
    const char* mark = std::strchr(text.tip, '@');
    if (!mark) {
        std::snprintf(tip, bytes, "%s", text.tip);
        return;
    }
    ControlRange numbers;
    ParseControlRange(range, &numbers);
    const int label = text.id + 1;
    std::snprintf(tip, bytes, "%.*s%d to %d%s", static_cast<int>(mark - text.tip), text.tip,
                  static_cast<int>(ShownPosition(label, numbers.least)),
                  static_cast<int>(ShownPosition(label, numbers.most)), mark + 1);
}

void WriteNumber(const ControlText& text, int number, char* value, size_t bytes) {
    if (!text.unit) {
        std::snprintf(value, bytes, "%d", number);
        return;
    }
    const bool isOne = number == 1 || number == -1;
    std::snprintf(value, bytes, "%d %s", number, isOne ? text.unit->one : text.unit->many);
}

}  // namespace kfx
