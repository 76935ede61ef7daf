// SPDX-License-Identifier: MIT
// The help document with pictures of what each control does, as one file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "commands/engine.h"
#include "media/animation.h"

namespace kfx::commands {

// A picture for the document.
struct HelpPicture {
    Animation animation;  // its first frame is shown
    std::string caption;
};

// Pictures that stand in one row.
using PictureRow = std::vector<HelpPicture>;

// Draws the session's source, one opaque frame, as the engine's effects and palettes show it.
// - of an effect: for each number at its least, default and greatest value, for each switch off and on, for
//   each list all rows, the other parameters at their defaults; for an effect without parameters once.
// - of the output options: palettes without and with dithering, and three local backgrounds.
// False: `*failure` says why.
bool DrawEffectRows(const OpenEngine& engine, HostSession* session, const std::string& effect,
                    std::vector<PictureRow>* rows, Failure* failure);
bool DrawOutputRows(const OpenEngine& engine, HostSession* session, std::vector<PictureRow>* rows,
                    Failure* failure);
// Of all effects, each at the settings at which it shows best.
bool DrawOverview(const OpenEngine& engine, HostSession* session, const std::vector<std::string>& effects,
                  PictureRow* row, Failure* failure);

// The pictures as HTML, each with its data in the document. Returns an empty text when memory ran out.
std::string HtmlOf(const std::vector<PictureRow>& rows);

// The document with `html` behind the section of this heading (the text between its <h2> or <h3> marks), or
// in the place of the link to the picture beside the document when `heading` is empty. False: the document
// has no such place.
bool PutIntoDocument(const std::string& heading, const std::string& html, std::string* document);

// Puts the picture of the plug-in's window into the document in place of its name. False: the document does
// not name it.
bool PutWindowPicture(std::string* document);

// That picture, a PNG file.
extern const uint8_t kWindowPicture[];
extern const size_t kWindowPictureBytes;

}  // namespace kfx::commands
