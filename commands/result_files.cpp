// SPDX-License-Identifier: MIT
#include "commands/result_files.h"

#include <new>
#include <utility>

#include "media/animation_writer.h"
#include "commands/command_line.h"

namespace kfx::commands {
namespace {

bool Write(const std::string& path, BuiltAnimation built, const SourceRecord& source,
           std::vector<std::string>* files, std::string* error) {
    files->assign(1, path);
    if (EndingOf(path) == ".gif") return WriteGif(path, MakeGif(std::move(built), source), error);
    const Animation animation = PlayBuilt(built, source);
    built = {};  // the played frames take its place in memory
    if (EndingOf(path) == ".webp") return WriteWebp(path, animation, error);
    *files = PngFramePaths(path, animation.frames.size());
    return WritePngFrames(path, animation, error);
}

}  // namespace

bool WriteResult(const std::string& path, BuiltAnimation built, const SourceRecord& source,
                 std::vector<std::string>* files, std::string* error) {
    try {
        return Write(path, std::move(built), source, files, error);
    } catch (const std::bad_alloc&) {
        *error = path + ": there is not enough memory to write it.";
        return false;
    }
}

}  // namespace kfx::commands
