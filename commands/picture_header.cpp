// SPDX-License-Identifier: MIT
#include "commands/picture_header.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "commands/text.h"
#include "media/animation.h"
#include "media/file_io.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMarkBytes = 12;  // enough for every format

// As the reader of whole files finds it, in small letters.
std::string FormatOf(const uint8_t* start, size_t size) {
    std::string name = FormatNameOf(start, size);
    for (char& c : name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return name;
}

// The chunk that announces an animation stands before the first picture data.
bool AnnouncesAnimation(std::ifstream* file) {
    constexpr int kMostChunks = 1000;
    file->clear();
    file->seekg(8);
    for (int i = 0; i < kMostChunks; ++i) {
        uint8_t chunk[8];
        if (!file->read(reinterpret_cast<char*>(chunk), sizeof chunk)) return false;
        if (std::memcmp(chunk + 4, "acTL", 4) == 0) return true;
        if (std::memcmp(chunk + 4, "IDAT", 4) == 0 || std::memcmp(chunk + 4, "IEND", 4) == 0) return false;
        const uint32_t length = static_cast<uint32_t>(chunk[0]) << 24 |
                                static_cast<uint32_t>(chunk[1]) << 16 | static_cast<uint32_t>(chunk[2]) << 8 |
                                chunk[3];
        file->seekg(static_cast<std::streamoff>(length) + 4, std::ios::cur);
    }
    return false;
}

// The sentence of a file whose beginning is not understood is that of the whole one's reading.
bool Refuse(const std::string& path, const std::vector<uint8_t>& start, std::string* error) {
    Animation ignored;
    std::string clause;
    ReadAnimationFromMemory(start.data(), start.size(), &ignored, &clause);
    *error = path + ": " + clause + ".";
    return false;
}

}  // namespace

bool ReadPictureHeader(const std::string& path, PictureHeader* header, std::string* error) {
    *header = {};
    const std::string system = SystemPath(path);
    std::error_code unknown;
    // Opening a pipe would wait for its writer, and take what the reader needs.
    if (fs::is_other(PathOf(system), unknown)) return true;
    std::ifstream file(PathOf(system), std::ios::binary);
    if (!file || fs::is_directory(PathOf(system), unknown)) {
        // Stays where the file has come meanwhile; else the reader of whole files says why.
        *error = system + ": the file cannot be opened.";
        std::vector<uint8_t> ignored;
        static_cast<void>(ReadWholeFile(system, &ignored, error));
        *error = WithFolderAsGiven(*error, path);
        return false;
    }
    uint8_t start[kMarkBytes] = {};
    file.read(reinterpret_cast<char*>(start), sizeof start);
    const auto size = static_cast<size_t>(file.gcount());
    header->format = FormatOf(start, size);
    if (header->format.empty()) return Refuse(path, {start, start + size}, error);
    header->isApng = header->format == "png" && AnnouncesAnimation(&file);
    return true;
}

}  // namespace kfx::commands
