// SPDX-License-Identifier: MIT
// The library's error handler must not return, so it jumps back into the function that called the library.
// Each of those has nothing with a destructor between setjmp and its end.
#include "media/jpeg_decoder.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <jpeglib.h>

#include <jerror.h>

namespace kfx {

struct JpegDecoder {
    jpeg_decompress_struct library = {};
    jpeg_error_mgr errors = {};
    jpeg_source_mgr source = {};
    jpeg_progress_mgr progress = {};
    std::jmp_buf recovery;
    const uint8_t* data = nullptr;
    size_t size = 0;
    JpegFault fault = JpegFault::None;
    bool isCut = false;
    bool isDamaged = false;
};

namespace {

// Writers make about ten. Without a limit, a small file could keep the decoder busy for hours.
constexpr int kMostPasses = 100;
constexpr unsigned kLongestMarker = 0xFFFF;
constexpr int kExifMarker = JPEG_APP0 + 1;  // and XMP
constexpr int kProfileMarker = JPEG_APP0 + 2;

constexpr char kExifName[] = "Exif\0";  // with the second zero byte that ends the literal
constexpr char kXmpName[] = "http://ns.adobe.com/xap/1.0/";

// A file that ends too early is given this end.
constexpr JOCTET kEndMarker[] = {0xFF, JPEG_EOI};

JpegDecoder* DecoderOf(j_common_ptr library) { return static_cast<JpegDecoder*>(library->client_data); }

JpegDecoder* DecoderOf(j_decompress_ptr library) { return static_cast<JpegDecoder*>(library->client_data); }

JpegFault FaultOfCode(int code) {
    switch (code) {
        case JERR_OUT_OF_MEMORY:
            return JpegFault::NoMemory;
        case JERR_EMPTY_IMAGE:
            return JpegFault::Sizeless;
        case JERR_IMAGE_TOO_BIG:
            return JpegFault::TooLarge;
        case JERR_SOF_UNSUPPORTED:
        case JERR_BAD_PRECISION:
        case JERR_COMPONENT_COUNT:
        case JERR_CONVERSION_NOTIMPL:
        case JERR_FRACT_SAMPLE_NOTIMPL:
            return JpegFault::OtherKind;
        default:
            return JpegFault::Damaged;
    }
}

[[noreturn]] void Leave(JpegDecoder* decoder, JpegFault fault) {
    decoder->fault = fault;
    std::longjmp(decoder->recovery, 1);
}

[[noreturn]] void OnError(j_common_ptr library) {
    Leave(DecoderOf(library), FaultOfCode(library->err->msg_code));
}

// Warnings have a level below 0. Most are about what does no harm. Nothing is printed: the reader has its own
// words.
void OnMessage(j_common_ptr library, int level) {
    const int code = library->err->msg_code;
    if (level >= 0) return;
    if (code == JWRN_HIT_MARKER || code == JWRN_HUFF_BAD_CODE || code == JWRN_ARITH_BAD_CODE ||
        code == JWRN_MUST_RESYNC)
        DecoderOf(library)->isDamaged = true;
}

void OnProgress(j_common_ptr library) {
    JpegDecoder* const decoder = DecoderOf(library);
    if (decoder->library.input_scan_number > kMostPasses) Leave(decoder, JpegFault::ManyPasses);
}

void OnSource(j_decompress_ptr) {}

boolean OnMoreInput(j_decompress_ptr library) {
    DecoderOf(library)->isCut = true;
    library->src->next_input_byte = kEndMarker;
    library->src->bytes_in_buffer = sizeof kEndMarker;
    return TRUE;
}

// `count` is above 0.
void OnSkip(j_decompress_ptr library, long count) {
    jpeg_source_mgr* const source = library->src;
    if (static_cast<size_t>(count) > source->bytes_in_buffer) {
        OnMoreInput(library);
        return;
    }
    source->next_input_byte += count;
    source->bytes_in_buffer -= static_cast<size_t>(count);
}

void SetSource(JpegDecoder* decoder) {
    decoder->source.next_input_byte = decoder->data;
    decoder->source.bytes_in_buffer = decoder->size;
    decoder->source.init_source = OnSource;
    decoder->source.fill_input_buffer = OnMoreInput;
    decoder->source.skip_input_data = OnSkip;
    decoder->source.resync_to_restart = jpeg_resync_to_restart;
    decoder->source.term_source = OnSource;
    decoder->library.src = &decoder->source;
}

bool HasName(const jpeg_saved_marker_ptr marker, const char* name, size_t length) {
    return marker->data_length >= length && std::memcmp(marker->data, name, length) == 0;
}

// The first content wins: others are parts that do not stand by themselves.
void TakeContent(const jpeg_saved_marker_ptr marker, size_t start, std::vector<uint8_t>* content) {
    if (content->empty()) content->assign(marker->data + start, marker->data + marker->data_length);
}

// The colour profile may stand in several markers. Null: there is none. To be freed with std::free.
JOCTET* JoinProfile(JpegDecoder* decoder, unsigned* size) {
    if (setjmp(decoder->recovery) != 0) return nullptr;
    JOCTET* profile = nullptr;
    return jpeg_read_icc_profile(&decoder->library, &profile, size) ? profile : nullptr;
}

struct FreeDeleter {
    void operator()(JOCTET* memory) const { std::free(memory); }
};

// Whether all passes of a file without end are there.
bool HasAllPasses(const jpeg_decompress_struct& library) {
    if (!library.coef_bits) return false;
    for (int i = 0; i < library.num_components; ++i) {
        for (int k = 0; k < DCTSIZE2; ++k) {
            if (library.coef_bits[i][k] != 0) return false;
        }
    }
    return true;
}

}  // namespace

void JpegDecoderDeleter::operator()(JpegDecoder* decoder) const {
    jpeg_destroy_decompress(&decoder->library);
    delete decoder;
}

JpegDecoderOwner MakeJpegDecoder(const uint8_t* data, size_t size) {
    JpegDecoderOwner decoder(new JpegDecoder);
    decoder->data = data;
    decoder->size = size;
    return decoder;
}

bool ReadJpegHeader(JpegDecoder* decoder) {
    jpeg_decompress_struct* const library = &decoder->library;
    library->err = jpeg_std_error(&decoder->errors);
    decoder->errors.error_exit = OnError;
    decoder->errors.emit_message = OnMessage;
    library->client_data = decoder;
    if (setjmp(decoder->recovery) != 0) return false;
    jpeg_create_decompress(library);
    decoder->progress.progress_monitor = OnProgress;
    library->progress = &decoder->progress;
    SetSource(decoder);
    jpeg_save_markers(library, JPEG_COM, kLongestMarker);
    jpeg_save_markers(library, kExifMarker, kLongestMarker);
    jpeg_save_markers(library, kProfileMarker, kLongestMarker);
    jpeg_read_header(library, TRUE);
    const bool isCmyk = library->jpeg_color_space == JCS_CMYK || library->jpeg_color_space == JCS_YCCK;
    library->out_color_space = isCmyk ? JCS_CMYK : JCS_EXT_RGBA;
    return true;
}

uint32_t JpegWidth(const JpegDecoder& decoder) { return decoder.library.image_width; }

uint32_t JpegHeight(const JpegDecoder& decoder) { return decoder.library.image_height; }

bool IsJpegEmpty(const JpegDecoder& decoder) {
    const jpeg_source_mgr& source = decoder.source;
    return decoder.isCut || source.bytes_in_buffer == 0 ||
           (source.bytes_in_buffer >= sizeof kEndMarker &&
            std::memcmp(source.next_input_byte, kEndMarker, sizeof kEndMarker) == 0);
}

bool IsJpegTooShort(const JpegDecoder& decoder) {
    // A block takes a bit at least; only in arithmetic coding there is no such limit.
    constexpr uint64_t kPixelsPerByte = 8 * DCTSIZE2;
    constexpr uint64_t kParts = 8;
    const uint64_t pixels = uint64_t{JpegWidth(decoder)} * JpegHeight(decoder);
    return !decoder.library.arith_code && pixels / kPixelsPerByte / kParts > decoder.size;
}

bool IsJpegCmyk(const JpegDecoder& decoder) { return decoder.library.out_color_space == JCS_CMYK; }

bool ReadJpegMetadata(JpegDecoder* decoder, std::string* comment, Metadata* metadata) {
    unsigned profileSize = 0;
    const std::unique_ptr<JOCTET, FreeDeleter> profile(JoinProfile(decoder, &profileSize));
    if (decoder->fault != JpegFault::None) return false;
    if (profile) metadata->colorProfile.assign(profile.get(), profile.get() + profileSize);
    for (jpeg_saved_marker_ptr marker = decoder->library.marker_list; marker; marker = marker->next) {
        if (marker->marker == JPEG_COM) {
            if (!comment->empty()) *comment += '\n';
            comment->append(reinterpret_cast<const char*>(marker->data), marker->data_length);
        } else if (marker->marker == kExifMarker && HasName(marker, kExifName, sizeof kExifName)) {
            TakeContent(marker, sizeof kExifName, &metadata->exif);
        } else if (marker->marker == kExifMarker && HasName(marker, kXmpName, sizeof kXmpName)) {
            TakeContent(marker, sizeof kXmpName, &metadata->xmp);
        }
    }
    return true;
}

bool StartJpeg(JpegDecoder* decoder) {
    if (setjmp(decoder->recovery) != 0) return false;
    jpeg_start_decompress(&decoder->library);
    // The data of one pass are not read yet, and show themselves whether they are whole; several passes have
    // been read, and the last ones may be missing.
    if (decoder->isCut && !HasAllPasses(decoder->library)) decoder->isDamaged = true;
    return true;
}

bool ReadJpegRow(JpegDecoder* decoder, uint8_t* row) {
    if (setjmp(decoder->recovery) != 0) return false;
    JSAMPROW rows[] = {row};
    return jpeg_read_scanlines(&decoder->library, rows, 1) == 1;
}

JpegFault FaultOf(const JpegDecoder& decoder) { return decoder.fault; }

bool IsJpegCut(const JpegDecoder& decoder) { return decoder.isCut; }

bool IsJpegDamaged(const JpegDecoder& decoder) {
    // Arithmetic coding goes on without data, so nothing else tells that they are missing.
    return decoder.isDamaged || (decoder.isCut && decoder.library.arith_code);
}

}  // namespace kfx
