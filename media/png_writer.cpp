// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <memory>
#include <new>

#include <lodepng.h>

#include "media/animation_writer.h"
#include "media/file_io.h"

namespace kfx {
namespace {

constexpr size_t kLeastDigits = 3;

struct FreeDeleter {
    void operator()(unsigned char* memory) const { std::free(memory); }
};

struct SplitName {
    std::string stem;  // with the folder
    std::string extension;
};

SplitName SplitExtension(const std::string& path) {
    const size_t folderEnd = path.find_last_of("/\\");
    const size_t nameStart = folderEnd == std::string::npos ? 0 : folderEnd + 1;
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || dot <= nameStart) return {path, ".png"};
    return {path.substr(0, dot), path.substr(dot)};
}

constexpr unsigned kNoMemory = 83;  // of the library

}  // namespace

bool EncodePng(int width, int height, const uint8_t* rgba, std::vector<uint8_t>* file, std::string* error) {
    file->clear();
    if (width < 1 || height < 1) {
        *error = "a PNG picture needs at least one pixel";
        return false;
    }
    unsigned char* encoded = nullptr;
    size_t size = 0;
    const unsigned code =
        lodepng_encode32(&encoded, &size, rgba, static_cast<unsigned>(width), static_cast<unsigned>(height));
    const std::unique_ptr<unsigned char, FreeDeleter> owner(encoded);
    if (code != 0) {
        *error = code == kNoMemory ? "there is not enough memory to write the PNG file"
                                   : "the PNG picture is too large";
        return false;
    }
    try {
        file->assign(encoded, encoded + size);
    } catch (const std::bad_alloc&) {
        *error = "there is not enough memory to write the PNG file";
        return false;
    }
    return true;
}

bool WritePng(const std::string& path, const Picture& picture, std::string* error) {
    const auto encode = [&picture](size_t, std::vector<uint8_t>* file, std::string* clause) {
        return EncodePng(picture.width, picture.height, picture.pixels.data(), file, clause);
    };
    return WriteWholeFiles({path}, encode, error);
}

std::vector<std::string> PngFramePaths(const std::string& path, size_t frameCount) {
    if (frameCount == 1) return {path};
    const SplitName name = SplitExtension(path);
    const size_t lastDigits = std::to_string(frameCount == 0 ? 0 : frameCount - 1).size();
    const size_t digits = std::max(kLeastDigits, lastDigits);
    std::vector<std::string> paths;
    for (size_t i = 0; i < frameCount; ++i) {
        const std::string number = std::to_string(i);
        paths.push_back(name.stem + "-" + std::string(digits - number.size(), '0') + number + name.extension);
    }
    return paths;
}

bool WritePngFrames(const std::string& path, const Animation& animation, std::string* error) {
    if (animation.frames.empty()) {
        *error = path + ": there are no frames to write.";
        return false;
    }
    const auto encode = [&animation](size_t i, std::vector<uint8_t>* file, std::string* clause) {
        return EncodePng(animation.width, animation.height, animation.frames[i].pixels.data(), file, clause);
    };
    return WriteWholeFiles(PngFramePaths(path, animation.frames.size()), encode, error);
}

}  // namespace kfx
