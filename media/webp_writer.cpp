// SPDX-License-Identifier: MIT
#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <new>

#include <webp/encode.h>
#include <webp/mux.h>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "media/loop_count.h"
#include "media/recipe_note.h"
#include "media/webp_parts.h"
#include "media/webp_picture.h"

namespace kfx {
namespace {

constexpr uint32_t kMaxTimesShown = 65535;
struct EncoderDeleter {
    void operator()(WebPAnimEncoder* encoder) const { WebPAnimEncoderDelete(encoder); }
};
using Encoder = std::unique_ptr<WebPAnimEncoder, EncoderDeleter>;

struct MuxDeleter {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};
using Mux = std::unique_ptr<WebPMux, MuxDeleter>;

struct AssembledFile {
    WebPData data;
    AssembledFile() { WebPDataInit(&data); }
    ~AssembledFile() { WebPDataClear(&data); }
    AssembledFile(const AssembledFile&) = delete;
    AssembledFile& operator=(const AssembledFile&) = delete;
};

const char* FaultOf(const Animation& animation) {
    if (animation.width < 1 || animation.height < 1 || animation.width > WEBP_MAX_DIMENSION ||
        animation.height > WEBP_MAX_DIMENSION)
        return "a WebP animation may have 1 to 16383 pixels a side";
    if (animation.frames.empty()) return "a WebP animation needs at least one frame";
    const size_t bytes = 4 * static_cast<size_t>(animation.width) * static_cast<size_t>(animation.height);
    for (const Frame& frame : animation.frames)
        if (frame.pixels.size() != bytes) return "a WebP frame must cover the whole animation";
    return nullptr;
}

bool AddFrame(WebPAnimEncoder* encoder, const WebPConfig& config, const Animation& animation,
              const Frame& frame, int startTime) {
    WebpPicture holder;
    if (!holder.usable) return false;
    holder.picture.use_argb = 1;
    holder.picture.width = animation.width;
    holder.picture.height = animation.height;
    return WebPPictureImportRGBA(&holder.picture, frame.pixels.data(), 4 * animation.width) &&
           WebPAnimEncoderAdd(encoder, &holder.picture, startTime, &config);
}

// Lossless levels run from 0 to 9. On photographs of 1920 x 1080, level 0 takes a quarter of the time and its
// files are more than twice as large. The levels between 0 and 6 take about as long as 6. Those above 6 take
// longer and save nothing. Lossy methods run from 0 to 6.
bool Configure(const WebpOptions& options, WebPConfig* config) {
    const int effort = std::clamp(options.effort, 0, 9);
    const int quality = std::clamp(options.quality, 0, 100);
    if (!WebPConfigInit(config)) return false;
    if (options.kind != WebpKind::Lossy) {
        if (!WebPConfigLosslessPreset(config, effort)) return false;
        if (options.kind == WebpKind::NearLossless) config->near_lossless = quality;
    } else {
        config->quality = static_cast<float>(quality);
        config->method = std::min(effort, 6);
    }
    return WebPValidateConfig(config) != 0;
}

bool SetChunk(WebPMux* mux, const char* name, const std::vector<uint8_t>& bytes) {
    const WebPData data = {bytes.data(), bytes.size()};
    return bytes.empty() || WebPMuxSetChunk(mux, name, &data, 1) == WEBP_MUX_OK;
}

// The file with the metadata and the recipe; `file` is as it was when there are none.
bool AddNotes(const Animation& notes, std::vector<uint8_t>* file) {
    const Metadata& metadata = notes.metadata;
    const std::vector<uint8_t> recipe(notes.recipe.begin(), notes.recipe.end());
    if (metadata.colorProfile.empty() && metadata.exif.empty() && metadata.xmp.empty() && recipe.empty())
        return true;
    const WebPData plain = {file->data(), file->size()};
    const Mux mux(WebPMuxCreate(&plain, 1));
    AssembledFile assembled;
    if (!mux || !SetChunk(mux.get(), "ICCP", metadata.colorProfile) ||
        !SetChunk(mux.get(), "EXIF", metadata.exif) || !SetChunk(mux.get(), "XMP ", metadata.xmp) ||
        !SetChunk(mux.get(), kRecipeChunk, recipe) ||
        WebPMuxAssemble(mux.get(), &assembled.data) != WEBP_MUX_OK)
        return false;
    file->assign(assembled.data.bytes, assembled.data.bytes + assembled.data.size);
    return true;
}

WebPMuxAnimParams AnimationParams(const Animation& animation) {
    WebPMuxAnimParams params = {.bgcolor = 0xFFFFFFFFu, .loop_count = 0};
    params.loop_count = static_cast<int>(TimesShown(animation.loopCount, kMaxTimesShown));
    if (animation.hasBackground)
        params.bgcolor =
            0xFF000000u | static_cast<uint32_t>(animation.background.red << 16 |
                                                animation.background.green << 8 | animation.background.blue);
    return params;
}

// One frame after another. With loss, what a frame stores depends on how similar pixels are; a single picture
// is stored without an animation around it.
bool EncodeInTurn(const Animation& animation, const WebPConfig& config, AssembledFile* assembled) {
    WebPAnimEncoderOptions encoderOptions;
    if (!WebPAnimEncoderOptionsInit(&encoderOptions)) return false;
    encoderOptions.anim_params = AnimationParams(animation);
    const Encoder encoder(WebPAnimEncoderNew(animation.width, animation.height, &encoderOptions));
    if (!encoder) return false;
    // The encoder takes the time at which each frame begins, and finally the time at which the last one ends.
    int64_t time = 0;
    const auto startOf = [&time] { return static_cast<int>(std::min<int64_t>(time, INT_MAX)); };
    for (const Frame& frame : animation.frames) {
        if (!AddFrame(encoder.get(), config, animation, frame, startOf())) return false;
        time += std::max(MillisecondsOf(frame), 0);
    }
    return WebPAnimEncoderAdd(encoder.get(), nullptr, startOf(), nullptr) &&
           WebPAnimEncoderAssemble(encoder.get(), &assembled->data);
}

bool PushPart(WebPMux* mux, const WebpPart& part) {
    WebPMuxFrameInfo info = {};
    info.bitstream = {part.data.data(), part.data.size()};
    info.x_offset = part.place.left;
    info.y_offset = part.place.top;
    info.duration = part.milliseconds;
    info.id = WEBP_CHUNK_ANMF;
    info.dispose_method = part.clears ? WEBP_MUX_DISPOSE_BACKGROUND : WEBP_MUX_DISPOSE_NONE;
    info.blend_method = part.blends ? WEBP_MUX_BLEND : WEBP_MUX_NO_BLEND;
    return WebPMuxPushFrame(mux, &info, 0) == WEBP_MUX_OK;
}

bool AssembleParts(const Animation& animation, const std::vector<WebpPart>& parts, AssembledFile* assembled) {
    const Mux mux(WebPMuxNew());
    const WebPMuxAnimParams params = AnimationParams(animation);
    return mux &&
           std::all_of(parts.begin(), parts.end(),
                       [&](const WebpPart& part) { return PushPart(mux.get(), part); }) &&
           WebPMuxSetCanvasSize(mux.get(), animation.width, animation.height) == WEBP_MUX_OK &&
           WebPMuxSetAnimationParams(mux.get(), &params) == WEBP_MUX_OK &&
           WebPMuxAssemble(mux.get(), &assembled->data) == WEBP_MUX_OK;
}

bool EncodeAll(const Animation& animation, const WebpOptions& options, AssembledFile* assembled) {
    WebPConfig config;
    if (!Configure(options, &config)) return false;
    if (options.kind == WebpKind::Lossy) return EncodeInTurn(animation, config, assembled);
    std::vector<WebpPart> parts;
    if (!PlanWebpParts(animation, &parts)) return false;
    if (parts.size() == 1) return EncodeInTurn(animation, config, assembled);
    EncodeWebpParts(animation, config, options.jobs, &parts);
    return AssembleParts(animation, parts, assembled);
}

bool EncodeChecked(const Animation& animation, const WebpOptions& options, std::vector<uint8_t>* file) {
    AssembledFile assembled;
    if (!EncodeAll(animation, options, &assembled)) return false;
    file->assign(assembled.data.bytes, assembled.data.bytes + assembled.data.size);
    return AddNotes(animation, file);
}

}  // namespace

bool EncodeWebp(const Animation& animation, std::vector<uint8_t>* file, std::string* error,
                const WebpOptions& options) {
    file->clear();
    if (const char* fault = FaultOf(animation)) {
        *error = fault;
        return false;
    }
    try {
        if (EncodeChecked(animation, options, file)) return true;
    } catch (const std::bad_alloc&) {
    }
    *error = "there is not enough memory to write the WebP file";
    file->clear();
    return false;
}

bool WriteWebp(const std::string& path, const Animation& animation, std::string* error,
               const WebpOptions& options) {
    const auto encode = [&animation, &options](size_t, std::vector<uint8_t>* file, std::string* clause) {
        return EncodeWebp(animation, file, clause, options);
    };
    return WriteWholeFiles({path}, encode, error);
}

}  // namespace kfx
