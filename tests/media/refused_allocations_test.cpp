// SPDX-License-Identifier: MIT
// Memory that runs out in the readers and writers, or in the libraries that they call: each allocation is
// refused in turn, and from each one on all large ones. A file that is sound is read whole or not at all, and
// is not called damaged.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include <jpeglib.h>

#include <jerror.h>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "tests/media/gif_scenes.h"
#include "tests/media/reading.h"
#include "tests/support/refused_allocations.h"
#include "tests/support/tried.h"

extern "C" boolean __real_jpeg_start_decompress(j_decompress_ptr library);
extern "C" JDIMENSION __real_jpeg_read_scanlines(j_decompress_ptr library, JSAMPARRAY rows, JDIMENSION most);

namespace kfx::test {
namespace {

// What is left of a full memory is enough for a message.
constexpr size_t kLarge = 512;

// So many rows of JPEG pictures are read before the library reports an error; none by default.
int rowsBeforeError = -1;
// It lacks memory behind the last pass, where it smooths what is missing.
bool lacksMemoryAtStart = false;

[[noreturn]] void Fail(j_decompress_ptr library, int code) {
    library->err->msg_code = code;
    library->err->error_exit(reinterpret_cast<j_common_ptr>(library));
    std::abort();
}

struct ReadResult {
    bool isRead = false;
    Animation animation;
    std::string error;
};

ReadResult Read(const Bytes& file, const Refusal& refusal, size_t* counted) {
    ReadResult result;
    *counted = WithRefusal(refusal, [&] {
        result.isRead = ReadAnimationFromMemory(file.data(), file.size(), &result.animation, &result.error);
    });
    return result;
}

bool AreEqual(const Frame& a, const Frame& b) {
    return a.pixels == b.pixels && a.indices == b.indices && a.delay == b.delay && a.disposal == b.disposal &&
           a.milliseconds == b.milliseconds;
}

bool AreEqual(const Animation& a, const Animation& b) {
    return a.width == b.width && a.height == b.height && a.loopCount == b.loopCount &&
           a.globalPalette == b.globalPalette && a.comment == b.comment && a.recipe == b.recipe &&
           a.metadata.colorProfile == b.metadata.colorProfile && a.metadata.exif == b.metadata.exif &&
           a.metadata.xmp == b.metadata.xmp && a.warning == b.warning &&
           std::equal(a.frames.begin(), a.frames.end(), b.frames.begin(), b.frames.end(),
                      [](const Frame& x, const Frame& y) { return AreEqual(x, y); });
}

// Tries every allocation of reading the file.
void RefuseEach(const std::string& name, const Bytes& file) {
    size_t counted = 0;
    const ReadResult whole = Read(file, {}, &counted);
    if (!whole.isRead) return;  // damaged on purpose
    for (const bool fromThenOn : {false, true}) {
        for (size_t number = 1;; ++number) {
            const Refusal refusal = {
                .first = number, .fromThenOn = fromThenOn, .smallest = fromThenOn ? kLarge : 0};
            const ReadResult result = Read(file, refusal, &counted);
            if (counted < number) break;
            SCOPED_TRACE(name + ": allocation " + std::to_string(number) + (fromThenOn ? " and later" : ""));
            if (result.isRead) {
                EXPECT_TRUE(AreEqual(result.animation, whole.animation)) << result.animation.warning;
            } else {
                EXPECT_EQ(result.error, "there is not enough memory for the picture");
                EXPECT_TRUE(result.animation.frames.empty());
            }
            AddTried("allocations refused while files are read");
        }
    }
    EXPECT_TRUE(AreEqual(Read(file, {}, &counted).animation, whole.animation)) << name;
}

TEST(RefusedAllocations, A_sound_file_is_read_whole_or_not_at_all) {
    for (const char* format : {"bmp", "gif", "jpeg", "png", "webp", "y4m"}) {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry :
             std::filesystem::directory_iterator(std::string("tests/data/fuzz/") + format))
            paths.push_back(entry.path());
        std::sort(paths.begin(), paths.end());
        for (const std::filesystem::path& path : paths) {
            Bytes file;
            std::string error;
            ASSERT_TRUE(ReadWholeFile(path.string(), &file, &error)) << error;
            RefuseEach(path.string(), file);
        }
    }
}

TEST(RefusedAllocations, A_JPEG_picture_whose_rows_cannot_be_made_is_refused) {
    Bytes file;
    std::string error;
    ASSERT_TRUE(ReadWholeFile("tests/data/jpeg/full.jpg", &file, &error)) << error;
    for (const int rows : {0, 1, 20}) {
        rowsBeforeError = rows;
        EXPECT_EQ(ErrorOf(file), "the JPEG file is damaged before its picture can be shown") << rows;
    }
    rowsBeforeError = -1;
    EXPECT_EQ(ReadWhole(file).frames.size(), 1u);
}

TEST(RefusedAllocations, A_cut_file_is_read_as_far_as_it_goes_or_not_at_all) {
    Bytes file;
    std::string error;
    ASSERT_TRUE(ReadWholeFile("tests/data/jpeg/progressive.jpg", &file, &error)) << error;
    // In the second pass, after which the library smooths what it has; in the last one, and in its header.
    const Bytes scan = {0xFF, 0xDA};
    const auto first = std::search(file.begin(), file.end(), scan.begin(), scan.end());
    const auto second = std::search(first + 2, file.end(), scan.begin(), scan.end());
    const Bytes early(file.begin(), second + 20);
    RefuseEach("cut early", early);
    lacksMemoryAtStart = true;
    EXPECT_EQ(ErrorOf(early), "there is not enough memory for the picture");
    lacksMemoryAtStart = false;
    const auto last = std::find_end(file.begin(), file.end(), scan.begin(), scan.end());
    RefuseEach("cut pass", Bytes(file.begin(), last + 20));
    RefuseEach("cut header", Bytes(file.begin(), last + 4));
}

TEST(RefusedAllocations, A_frame_s_palette_that_gets_no_memory_is_no_damage) {
    TestImage second = Part("GR", 0, 0);
    second.localPalette = "GRB";
    RefuseEach("GIF", BuildGif(Gif(2, 1, {Part("RG"), second})));
}

// A writer with its pictures. On failure `file` is empty.
using Writer = std::function<bool(Bytes* file, std::string* error)>;

// Tries every allocation of writing the file.
void RefuseEachOf(const std::string& name, const Writer& write) {
    Bytes whole;
    std::string error;
    ASSERT_TRUE(write(&whole, &error)) << error;
    for (const bool fromThenOn : {false, true}) {
        for (size_t number = 1;; ++number) {
            const Refusal refusal = {
                .first = number, .fromThenOn = fromThenOn, .smallest = fromThenOn ? kLarge : 0};
            Bytes file;
            bool isWritten = false;
            const size_t counted = WithRefusal(refusal, [&] { isWritten = write(&file, &error); });
            if (counted < number) break;
            SCOPED_TRACE(name + ": allocation " + std::to_string(number) + (fromThenOn ? " and later" : ""));
            if (isWritten) {
                EXPECT_TRUE(file == whole) << file.size() << " bytes, not " << whole.size();
            } else {
                EXPECT_EQ(error, "there is not enough memory to write the " + name + " file");
                EXPECT_TRUE(file.empty());
            }
            AddTried("allocations refused while files are written");
        }
    }
}

Animation WithNotes() {
    Animation animation = RandomAnimation(12, 9, 3, 7, true);
    animation.comment = "a comment";
    animation.metadata.colorProfile = Bytes(700, 1);
    animation.metadata.xmp = Bytes(20, 'x');
    animation.loopCount = 2;
    return animation;
}

Animation FirstFrameOf(Animation animation) {
    animation.frames.resize(1);
    return animation;
}

TEST(RefusedAllocations, A_PNG_file_is_written_whole_or_not_at_all) {
    Animation animation = WithNotes();
    animation.frames.resize(2);
    RefuseEachOf("PNG", [&](Bytes* file, std::string* error) {
        return EncodeApng(animation, file, error, {.effort = 0});
    });
    RefuseEachOf("PNG", [&](Bytes* file, std::string* error) {
        return EncodePng(12, 9, animation.frames[0].pixels.data(), file, error, animation, {.effort = 0});
    });
}

TEST(RefusedAllocations, A_WebP_file_is_written_whole_or_not_at_all) {
    const Animation animation = WithNotes(), still = FirstFrameOf(animation);
    for (const Animation* pictures : {&animation, &still}) {
        for (const WebpKind kind : {WebpKind::Lossless, WebpKind::Lossy}) {
            RefuseEachOf("WebP", [&](Bytes* file, std::string* error) {
                return EncodeWebp(*pictures, file, error, {.kind = kind, .effort = 2});
            });
        }
    }
}

TEST(RefusedAllocations, A_GIF_file_is_written_whole_or_not_at_all) {
    GifAnimation gif = kGifScenes[0].make(12, 9, 3);
    gif.comment = "a comment";
    gif.metadata = WithNotes().metadata;
    for (const int lossy : {0, 50}) {
        RefuseEachOf("GIF", [&](Bytes* file, std::string* error) {
            return EncodeGif(gif, file, error, {.lossy = lossy});
        });
    }
}

}  // namespace
}  // namespace kfx::test

extern "C" JDIMENSION __wrap_jpeg_read_scanlines(j_decompress_ptr library, JSAMPARRAY rows, JDIMENSION most) {
    if (kfx::test::rowsBeforeError == 0) {
        kfx::test::Fail(library, JERR_BAD_HUFF_TABLE);
    }
    if (kfx::test::rowsBeforeError > 0) --kfx::test::rowsBeforeError;
    return __real_jpeg_read_scanlines(library, rows, most);
}

extern "C" boolean __wrap_jpeg_start_decompress(j_decompress_ptr library) {
    const boolean started = __real_jpeg_start_decompress(library);
    if (kfx::test::lacksMemoryAtStart) kfx::test::Fail(library, JERR_OUT_OF_MEMORY);
    return started;
}
