// SPDX-License-Identifier: MIT
#include "commands/gallery_wall.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "commands/parameter_help.h"
#include "commands/resize_frame.h"
#include "commands/stages.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

SheetPicture PictureOf(const Animation& animation, size_t frame, const std::string& label) {
    return {animation.width, animation.height, animation.frames[frame].pixels.data(), label, 1, ""};
}

// The frames at the size at which the wall shows them.
bool ScaleDown(const WallOptions& options, Animation* source, Failure* failure) {
    const PictureSize size =
        FitPicture(source->width, source->height, options.pictureWidth, options.pictureHeight);
    if (size.width == source->width && size.height == source->height) return true;
    for (Frame& frame : source->frames) {
        if (ResizeFrame(source->width, source->height, size.width, size.height, &frame)) continue;
        *failure = {kExitEngine, "there is not enough memory to scale the frames."};
        return false;
    }
    source->width = size.width;
    source->height = size.height;
    source->hasGlobalPalette = false;
    source->globalPalette.clear();
    return true;
}

// The wall with the source's first frame in every place, and where these places are.
Picture DrawGround(const WallOptions& options, const Animation& source, const std::vector<std::string>& names,
                   std::vector<SheetPlace>* places) {
    std::vector<SheetPicture> pictures = {PictureOf(source, 0, "Source")};
    for (const std::string& name : names) pictures.push_back(PictureOf(source, 0, name));
    const int times = TimesAsLarge(source.width, source.height, options.pictureWidth, options.pictureHeight);
    for (SheetPicture& picture : pictures) picture.timesAsLarge = times;
    return DrawGallery(options.title, pictures, options.columns, options.pictureWidth, options.pictureHeight,
                       places);
}

bool CanHold(const Picture& ground, size_t frames, const ReadLimits& limits, Failure* failure) {
    PixelBudget budget = {.limits = limits};
    std::string clause;
    if (SpendFrames(&budget, static_cast<uint64_t>(ground.width), static_cast<uint64_t>(ground.height),
                    frames, &clause))
        return true;
    *failure = {kExitBadInput, "the wall is too large: " + clause + ". A smaller --size helps, too."};
    return false;
}

// Puts the frames into one place of the wall.
void DrawFrames(const Animation& result, const SheetPlace& place, Animation* wall) {
    Picture sheet;
    sheet.width = wall->width;
    sheet.height = wall->height;
    for (size_t i = 0; i < wall->frames.size(); ++i) {
        sheet.pixels.swap(wall->frames[i].pixels);
        DrawSheetPicture(PictureOf(result, i, ""), place, &sheet);
        sheet.pixels.swap(wall->frames[i].pixels);
    }
}

void StartWall(const Picture& ground, const Animation& source, Animation* wall) {
    *wall = {};
    wall->width = ground.width;
    wall->height = ground.height;
    wall->loopCount = source.loopCount;
    for (const Frame& from : source.frames) {
        Frame frame;
        frame.pixels = ground.pixels;
        frame.delay = from.delay;
        frame.milliseconds = from.milliseconds;
        wall->frames.push_back(std::move(frame));
    }
}

uint8_t NearestEntry(const std::vector<RgbColor>& palette, const std::array<uint8_t, 3>& color) {
    const auto distance = [&](RgbColor entry) {
        const int red = entry.red - color[0], green = entry.green - color[1], blue = entry.blue - color[2];
        return red * red + green * green + blue * blue;
    };
    const auto nearest = std::min_element(palette.begin(), palette.end(),
                                          [&](RgbColor a, RgbColor b) { return distance(a) < distance(b); });
    return static_cast<uint8_t>(nearest - palette.begin());
}

}  // namespace

void ChoosePictureValues(const std::string& name, Job* job) {
    for (const Setting& setting : FindPictureSettings(kHelpDocument, name)) {
        for (const Parameter& parameter : job->parameters) {
            ChosenValue chosen = {parameter, 0};
            std::string ignored;
            if (parameter.name == setting.name &&
                ParseValue(parameter, name, setting.value, &chosen.value, &ignored))
                job->values.push_back(chosen);
        }
    }
}

bool DrawWall(const OpenEngine& engine, HostSession* session, const std::vector<std::string>& names,
              const WallOptions& options, Animation source, Wall* wall, Failure* failure) {
    if (!ScaleDown(options, &source, failure)) return false;
    wall->ground = DrawGround(options, source, names, &wall->places);
    if (!CanHold(wall->ground, source.frames.size(), options.limits, failure)) return false;
    StartWall(wall->ground, source, &wall->animation);
    DrawFrames(source, wall->places[0], &wall->animation);
    for (size_t i = 0; i < names.size(); ++i) {
        Job job;
        Animation result = source;
        if (!ResolveEffectJob({names[i], {}}, engine.engine, engine.opened, &job, failure)) return false;
        ChoosePictureValues(names[i], &job);
        CompleteValues(&job);
        if (!RunStage(engine, session, job, &result, failure)) return false;
        DrawFrames(result, wall->places[i + 1], &wall->animation);
    }
    return true;
}

void CleanGround(const Picture& ground, const std::vector<SheetPlace>& places, BuiltAnimation* built) {
    std::vector<bool> isPicture(ground.pixels.size() / 4);
    for (const SheetPlace& place : places) {
        for (int y = place.top; y < place.top + place.height; ++y) {
            const auto row = isPicture.begin() + static_cast<ptrdiff_t>(y) * ground.width + place.left;
            std::fill(row, row + place.width, true);
        }
    }
    for (BuiltFrame& frame : built->frames) {
        if (!frame.indexed) continue;
        std::map<std::array<uint8_t, 3>, uint8_t> nearest;  // a ground has few colours
        for (size_t i = 0; i < isPicture.size(); ++i) {
            if (isPicture[i]) continue;
            const uint8_t* const pixel = &ground.pixels[4 * i];
            const auto [entry, isNew] = nearest.try_emplace({pixel[0], pixel[1], pixel[2]}, uint8_t{0});
            if (isNew) entry->second = NearestEntry(frame.palette, entry->first);
            frame.pixels[i] = entry->second;
        }
    }
}

}  // namespace kfx::commands
