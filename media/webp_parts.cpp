// SPDX-License-Identifier: MIT
#include "media/webp_parts.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

#include "media/gif_pictures.h"
#include "media/webp_picture.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr int kTimeEnd = 1 << 24;  // a part's time is below it, in milliseconds
constexpr Rectangle kOnePixel = {.left = 0, .top = 0, .width = 1, .height = 1};
// One transparent pixel, compressed as the library's encoder of animations has it.
constexpr uint8_t kHoldData[] = {'R', 'I', 'F', 'F', 20, 0, 0,    0, 'W', 'E', 'B',  'P',  'V',  'P',
                                 '8', 'L', 8,   0,   0,  0, 0x2F, 0, 0,   0,   0x10, 0x88, 0x88, 0x08};

struct DataWriter {
    WebPMemoryWriter writer;
    DataWriter() { WebPMemoryWriterInit(&writer); }
    ~DataWriter() { WebPMemoryWriterClear(&writer); }
    DataWriter(const DataWriter&) = delete;
    DataWriter& operator=(const DataWriter&) = delete;
};

bool IsSame(const uint8_t* a, const uint8_t* b, size_t pixel) {
    return std::memcmp(a + 4 * pixel, b + 4 * pixel, 4) == 0;
}

// Where the pictures differ; without width where they do not.
Rectangle ChangeOf(const Animation& animation, const uint8_t* before, const uint8_t* shown) {
    return BoundsOf(animation.width, animation.height,
                    [=](size_t pixel) { return !IsSame(before, shown, pixel); });
}

// The part to store, which is never empty and begins at an even place, as the format asks.
Rectangle PartAround(Rectangle change) {
    if (change.width == 0) return kOnePixel;
    const int left = change.left & 1, top = change.top & 1;
    return {.left = change.left - left,
            .top = change.top - top,
            .width = change.width + left,
            .height = change.height + top};
}

Rectangle FirstPart(const Animation& animation) {
    const Bytes& shown = animation.frames[0].pixels;
    return PartAround(ChangeOf(animation, Bytes(shown.size()).data(), shown.data()));
}

void AddFrame(const Animation& animation, size_t frame, std::vector<WebpPart>* parts) {
    WebpPart& last = parts->back();
    const Bytes& shown = animation.frames[frame].pixels;
    const Bytes& before = animation.frames[last.frame].pixels;
    const Rectangle change = ChangeOf(animation, before.data(), shown.data());
    if (change.width == 0) return;
    WebpPart part = {.frame = frame, .place = PartAround(change), .before = last.frame};
    Bytes cleared = before;
    ClearPart(animation.width, last.place, &cleared);
    const Rectangle other = PartAround(ChangeOf(animation, cleared.data(), shown.data()));
    if (AreaOf(other) < AreaOf(part.place)) {
        last.clears = true;
        part.place = other;
        part.cleared = last.place;
    }
    parts->push_back(std::move(part));
}

// The last picture stays for so many milliseconds more.
bool Hold(int milliseconds, std::vector<WebpPart>* parts) {
    if (milliseconds >= kTimeEnd) return false;
    WebpPart& last = parts->back();
    if (milliseconds < kTimeEnd - last.milliseconds) {
        last.milliseconds += milliseconds;
        return true;
    }
    WebpPart hold = {.frame = last.frame, .place = kOnePixel, .milliseconds = milliseconds, .isHold = true};
    hold.blends = true;
    hold.data.assign(std::begin(kHoldData), std::end(kHoldData));
    parts->push_back(std::move(hold));
    return true;
}

// What the part is drawn on. `*made` receives it where it is no frame's picture.
const uint8_t* CanvasOf(const Animation& animation, const WebpPart& part, Bytes* made) {
    const Bytes& before = animation.frames[part.before].pixels;
    if (part.cleared.width == 0) return before.data();
    *made = before;
    ClearPart(animation.width, part.cleared, made);
    return made->data();
}

// Whether a part with transparent pixels gives the picture: what it changes is opaque.
bool CanBlend(const Animation& animation, const WebpPart& part, const uint8_t* canvas) {
    const uint8_t* shown = animation.frames[part.frame].pixels.data();
    bool can = true;
    ForEachPixel(animation.width, part.place, [&](size_t pixel) {
        can = can && (shown[4 * pixel + 3] == 255 || IsSame(canvas, shown, pixel));
    });
    return can;
}

bool ImportPart(const Animation& animation, const WebpPart& part, WebPPicture* picture) {
    picture->use_argb = 1;
    picture->width = part.place.width;
    picture->height = part.place.height;
    const int stride = 4 * animation.width;
    const uint8_t* rows = animation.frames[part.frame].pixels.data() +
                          static_cast<size_t>(part.place.top) * static_cast<size_t>(stride) +
                          4 * static_cast<size_t>(part.place.left);
    return WebPPictureImportRGBA(picture, rows, stride) != 0;
}

// Makes the pixels transparent that the canvas shows already.
void MakeHoles(const Animation& animation, const WebpPart& part, const uint8_t* canvas,
               WebPPicture* picture) {
    const uint8_t* shown = animation.frames[part.frame].pixels.data();
    const size_t gap = static_cast<size_t>(picture->argb_stride - part.place.width);
    uint32_t* hole = picture->argb;
    int x = 0;
    ForEachPixel(animation.width, part.place, [&](size_t pixel) {
        if (IsSame(canvas, shown, pixel)) *hole = 0;
        ++hole;
        if (++x < part.place.width) return;
        x = 0;
        hole += gap;
    });
}

bool Compress(const WebPConfig& config, WebPPicture* picture, Bytes* data) {
    DataWriter holder;
    picture->writer = WebPMemoryWrite;
    picture->custom_ptr = &holder.writer;
    const bool made = WebPEncode(&config, picture) != 0;
    picture->custom_ptr = nullptr;
    if (!made) return false;
    data->assign(holder.writer.mem, holder.writer.mem + holder.writer.size);
    return true;
}

bool EncodePart(const Animation& animation, const WebPConfig& config, WebpPart* part) {
    if (part->isHold) return true;
    WebpPicture holder;
    if (!holder.usable || !ImportPart(animation, *part, &holder.picture)) return false;
    if (part->frame != part->before) {
        Bytes made;
        const uint8_t* canvas = CanvasOf(animation, *part, &made);
        part->blends = CanBlend(animation, *part, canvas);
        if (part->blends) MakeHoles(animation, *part, canvas, &holder.picture);
    }
    return Compress(config, &holder.picture, &part->data);
}

// The library chooses its functions for the processor when it is first used, and not everywhere does it keep
// other threads from using them meanwhile.
bool PrepareLibrary(const WebPConfig& config) {
    constexpr uint8_t kPixel[4] = {};
    WebpPicture holder;
    Bytes data;
    holder.picture.use_argb = 1;
    holder.picture.width = holder.picture.height = 1;
    return holder.usable && WebPPictureImportRGBA(&holder.picture, kPixel, 4) &&
           Compress(config, &holder.picture, &data);
}

}  // namespace

bool PlanWebpParts(const Animation& animation, std::vector<WebpPart>* parts) {
    parts->assign(1, {.place = FirstPart(animation)});
    int64_t time = 0;
    for (size_t i = 0; i < animation.frames.size(); ++i) {
        if (i > 0) AddFrame(animation, i, parts);
        const int64_t start = std::min<int64_t>(time, INT_MAX);
        time += std::max(MillisecondsOf(animation.frames[i]), 0);
        if (!Hold(static_cast<int>(std::min<int64_t>(time, INT_MAX) - start), parts)) return false;
    }
    return true;
}

void EncodeWebpParts(const Animation& animation, const WebPConfig& config, const JobRunner& jobs,
                     std::vector<WebpPart>* parts) {
    if (!PrepareLibrary(config)) throw std::bad_alloc();
    RunJobs(jobs, parts->size(), [&](size_t number, size_t) {
        if (!EncodePart(animation, config, &(*parts)[number])) throw std::bad_alloc();
    });
}

}  // namespace kfx
