// SPDX-License-Identifier: MIT
#include "commands/difference_sheet.h"

#include <algorithm>

#include "commands/times.h"
#include "media/contact_sheet.h"

namespace kfx::commands {
namespace {

constexpr int kLargestWidth = 480;
constexpr int kLargestHeight = 360;

// Every pixel that differs is equally red: a small difference in a single pixel is to be found, too.
std::vector<uint8_t> MarkDifferences(const Frame& a, const Frame& b) {
    std::vector<uint8_t> marked(a.pixels.size(), 255);
    for (size_t i = 0; i < marked.size(); i += 4) {
        const uint8_t* const pixel = &a.pixels[i];
        uint8_t* const out = &marked[i];
        if (IsSamePixel(pixel, &b.pixels[i])) {
            const int luma = (299 * pixel[0] + 587 * pixel[1] + 114 * pixel[2]) / 1000;
            const int shown = 255 - (255 - luma) * pixel[3] / 255 / 3;
            out[0] = out[1] = out[2] = static_cast<uint8_t>(shown);
        } else {
            out[0] = 220;
            out[1] = out[2] = 0;
        }
    }
    return marked;
}

SheetPicture PictureOf(const Animation& animation, const std::vector<uint8_t>& pixels,
                       const std::string& label) {
    return {animation.width, animation.height, pixels.data(), label, 1, ""};
}

std::string MomentTitle(const Moment& moment, const std::string& what) {
    return what + ", at " + SecondsText(moment.milliseconds);
}

}  // namespace

const Moment* FirstDifference(const Comparison& comparison) {
    const auto found = std::find_if(comparison.moments.begin(), comparison.moments.end(),
                                    [](const Moment& moment) { return moment.differentPixels > 0; });
    return found == comparison.moments.end() ? nullptr : &*found;
}

const Moment* WorstMoment(const Comparison& comparison) {
    if (!FirstDifference(comparison)) return nullptr;
    return &*std::min_element(
        comparison.moments.begin(), comparison.moments.end(),
        [](const Moment& a, const Moment& b) { return a.quality.psnr < b.quality.psnr; });
}

Picture DrawDifferences(const std::string& title, const Animation& a, const Animation& b,
                        const Comparison& comparison) {
    const Moment* const first = FirstDifference(comparison);
    const Moment* const worst = WorstMoment(comparison);
    if (!first) return {};
    std::vector<const Moment*> shown = {first};
    if (worst != first) shown.push_back(worst);
    std::vector<std::vector<uint8_t>> marked;
    std::vector<SheetRow> rows;
    for (const Moment* moment : shown) {
        const Frame& frameA = a.frames[moment->frameA];
        const Frame& frameB = b.frames[moment->frameB];
        marked.push_back(MarkDifferences(frameA, frameB));
        rows.push_back({MomentTitle(*moment, moment == first ? "First difference" : "Largest difference"),
                        {PictureOf(a, frameA.pixels, "A, frame " + std::to_string(moment->frameA)),
                         PictureOf(b, frameB.pixels, "B, frame " + std::to_string(moment->frameB)),
                         PictureOf(a, marked.back(), std::to_string(moment->differentPixels) + " pixels")}});
    }
    return DrawContactSheet(title, rows, kLargestWidth, kLargestHeight);
}

}  // namespace kfx::commands
