// SPDX-License-Identifier: MIT
// Parts of an animation in files (.kpart): frames as they were built, before they are encoded, with the
// survey that they belong to.
//
// The file: "KFXPART1", the survey, then blocks. Numbers are little-endian; a text or a block has its length
// (4 bytes) before it. The first block is the head: the first frame's number and how many there are (4 bytes
// each), what they share. Each frame has a block of its own, packed by zlib. Behind them stands the XXH3-128
// of all bytes before it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "commands/built_animation.h"
#include "commands/exit_codes.h"

namespace kfx::commands {

constexpr char kPartEnding[] = ".kpart";

struct PartFile {
    std::string survey;             // its text
    size_t first = 0;               // number of the first frame in the whole
    size_t count = 0;               // of frames
    bool thresholdApplied = false;  // PipelineNotes'
    // Everything but the frames. Comment, metadata and loop count stand in the part that has frame 0.
    BuiltAnimation built;
    SourceRecord record;
};

// The whole file. `part.built` and `part.record` have the frames; those of `part.built` are numbered from 0,
// and are as many as those of `part.record`.
std::vector<uint8_t> EncodePart(const PartFile& part);

// Reads everything but the frames of a whole file. The survey is not looked into. False: `*error` is a
// clause.
bool DecodePart(const std::vector<uint8_t>& file, PartFile* part, std::string* error);

// Reads the frames and adds them to `*built` and `*record`, as frames that follow theirs. To be called for a
// file that DecodePart has read into `part`; the hash is not compared again. False: `*error` is a clause.
bool DecodeFrames(const std::vector<uint8_t>& file, const PartFile& part, BuiltAnimation* built,
                  SourceRecord* record, std::string* error);

// Replaces the sentence about an input that is no picture by one that says what to do, when it is a part.
void ExplainPart(const std::string& input, std::string* error);

}  // namespace kfx::commands
