// SPDX-License-Identifier: MIT
#include "media/raw_video.h"

#include "media/yuv.h"

namespace kfx {
namespace {

constexpr char kFrameLine[] = "FRAME\n";

bool TakeText(const std::string& text, const TakeBytes& take) {
    return take(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

uint8_t Mixed(int front, int alpha, int behind) {
    return static_cast<uint8_t>((front * alpha + behind * (255 - alpha) + 127) / 255);
}

RgbColor Shown(const uint8_t* pixel, RgbColor behind) {
    if (pixel[3] == 255) return {pixel[0], pixel[1], pixel[2]};
    return {Mixed(pixel[0], pixel[3], behind.red), Mixed(pixel[1], pixel[3], behind.green),
            Mixed(pixel[2], pixel[3], behind.blue)};
}

void MakePlanes(const std::vector<uint8_t>& rgba, RgbColor behind, std::vector<uint8_t>* bytes) {
    const size_t count = rgba.size() / 4;
    bytes->resize(3 * count);
    for (size_t i = 0; i < count; ++i) {
        const YuvColor color = YuvOf(Shown(rgba.data() + 4 * i, behind));
        (*bytes)[i] = color.y;
        (*bytes)[count + i] = color.cb;
        (*bytes)[2 * count + i] = color.cr;
    }
}

void MakeRgb(const std::vector<uint8_t>& rgba, RgbColor behind, std::vector<uint8_t>* bytes) {
    const size_t count = rgba.size() / 4;
    bytes->resize(3 * count);
    for (size_t i = 0; i < count; ++i) {
        const RgbColor color = Shown(rgba.data() + 4 * i, behind);
        (*bytes)[3 * i] = color.red;
        (*bytes)[3 * i + 1] = color.green;
        (*bytes)[3 * i + 2] = color.blue;
    }
}

std::string StreamLine(const Animation& animation, FrameRate rate) {
    return "YUV4MPEG2 W" + std::to_string(animation.width) + " H" + std::to_string(animation.height) + " F" +
           std::to_string(rate.numerator) + ":" + std::to_string(rate.denominator) +
           " Ip A1:1 C444 XCOLORRANGE=LIMITED\n";
}

}  // namespace

bool WriteRawVideo(const Animation& animation, const ConstantRate& plan, RawFormat format, RgbColor behind,
                   const TakeBytes& take) {
    const bool isY4m = format == RawFormat::Y4m;
    if (isY4m && !TakeText(StreamLine(animation, plan.rate), take)) return false;
    std::vector<uint8_t> made;
    for (size_t i = 0; i < animation.frames.size(); ++i) {
        const std::vector<uint8_t>& pixels = animation.frames[i].pixels;
        if (isY4m) MakePlanes(pixels, behind, &made);
        if (format == RawFormat::Rgb) MakeRgb(pixels, behind, &made);
        const std::vector<uint8_t>& bytes = format == RawFormat::Rgba ? pixels : made;
        for (uint32_t repeat = 0; repeat < plan.repeats[i]; ++repeat) {
            if (isY4m && !TakeText(kFrameLine, take)) return false;
            if (!take(bytes.data(), bytes.size())) return false;
        }
    }
    return true;
}

}  // namespace kfx
