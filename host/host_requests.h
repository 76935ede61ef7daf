// SPDX-License-Identifier: MIT
// One typed function per request to the host, so that nobody packs a request by hand. All of them are safe
// with a null context or a host without a service function: they then answer 0.
#pragma once

#include "host/host_records.h"

namespace kfx {

// Opens a new task for the frames; as a test task when `test`. 0: the host refused.
uint64_t RequestNewTask(const HostContext* host, bool test, const FileObjectRecord& task);

// Hands over one frame; the image stays the caller's. 0: the host refused.
uint64_t RequestAddImage(const HostContext* host, const FileObjectRecord& task, const AddImageRecord& frame);

// Attaches the descriptive comment. The answer carries no meaning.
void RequestAddComment(const HostContext* host, const FileObjectRecord& task, const char* text);

// Closes the task that RequestNewTask opened; `success` false tells the host to discard it.
void RequestCloseTask(const HostContext* host, const FileObjectRecord& task, bool success);

// Shows the help document; `reference` is its path with an optional "#TOPIC". 0: it could not be shown.
uint64_t RequestShowHelp(const HostContext* host, const char* reference);

void RequestSetStatusText(const HostContext* host, const char* text);

// Lets the user choose a colour: `*color` (0x00BBGGRR) is offered and replaced. `palette` is 256
// red-green-blue triples. 0: the user chose none, `*color` is unchanged.
uint64_t RequestChooseColor(const HostContext* host, void* owner, const uint8_t* palette, uint32_t* color);

// Progress within a stage; (0, 0) clears the display.
void RequestProgress(const HostContext* host, int32_t current, int32_t total);

// Asks for an animation. `request` is filled by MakeOpenAnimationRequest; its path tells afterwards what was
// opened. Returns the handle of a movable block, which the caller then owns, or 0.
uint64_t RequestOpenAnimation(const HostContext* host, OpenAnimationRequest* request);

// The request for the animation at `path` (at most 259 characters are kept), or for asking the user when
// empty.
OpenAnimationRequest MakeOpenAnimationRequest(void* owner, const char* path);

// The size in pixels that the host remembers for the plug-in's dialogs; zeros when it has none.
void RequestWindowSize(const HostContext* host, uint32_t* width, uint32_t* height);

}  // namespace kfx
