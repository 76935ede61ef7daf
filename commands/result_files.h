// SPDX-License-Identifier: MIT
// A built animation's way into files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "commands/built_animation.h"
#include "commands/output_format.h"
#include "commands/recipe_text.h"

namespace kfx::commands {

// How the formats are written; see media/animation_writer.h.
struct ResultOptions {
    std::string format;  // as ResolveFormat has it; empty: what the path's ending says
    GifOptions gif;
    WebpOptions webp;
    PngOptions png;
    RecipeDraft recipe;        // is kept in the file, with its fingerprint; raw frames hold none
    bool fingerprint = false;  // is wanted in WrittenResult
};

// Whether a file in this format shows other pixels than those that it is made of.
bool HasLoss(const ResultOptions& options, const std::string& format);

struct WrittenResult {
    std::vector<std::string> files;  // with folders as in the path that was given
    uint64_t bytes = 0;              // of all files; 0 for a device or a pipe
    std::string fingerprint;         // of what the files show, when it was wanted; see fingerprint.h
    std::string note;                // a clause about times that viewers or the file do not keep; or empty
};

// What viewers make of the times in a GIF file, which has hundredths only; as ShortDelayNote.
std::string ShortDelaysOf(const GifAnimation& gif);

// The files that WriteResult makes for so many frames.
std::vector<std::string> ResultPaths(const std::string& path, size_t frameCount,
                                     const std::string& format = "");

// To be asked before the work begins. False: one of the files cannot be written, is one of the inputs, or
// exists and is not to be replaced; `*error` is one sentence.
bool MayWriteResult(const std::vector<std::string>& files, const std::vector<std::string>& inputs,
                    bool replace, std::string* error);

// Gives the animation the recipe that its file keeps, and notes what is known before it is written: the note
// about times and the fingerprint, of a file without loss. `format` is "webp", "apng" or "png", a still.
void NoteResult(const ResultOptions& options, GifAnimation* gif, WrittenResult* written);
void NoteResult(const ResultOptions& options, const std::string& format, Animation* animation,
                WrittenResult* written);

// Writes the animation in the format of the options, to standard output when that is the path.
bool WriteResult(const std::string& path, BuiltAnimation built, const SourceRecord& source,
                 const ResultOptions& options, WrittenResult* written, std::string* error);

}  // namespace kfx::commands
