// SPDX-License-Identifier: MIT
// The numbers of Stage's commands and controls. A button has the number of its command.
#pragma once

namespace kfx::stage {

enum CommandId {
    kOpen = 100,
    kEffects = 101,
    kSave = 102,
    kExit = 103,
    kPlay = 104,
    kAbout = 105,
    kExportFrames,
    kCopyFrame,
    kUndo,
    kRedo,
    kRepeatEffect,
    kStopWork,
    kKeepTest,
    kDropTest,
    kFirstFrame,
    kPreviousFrame,
    kNextFrame,
    kLastFrame,
    kSlower,
    kFaster,
    kUsualSpeed,
    kLoopForever,
    kWipeView,
    kSideBySideView,
    kWallView,
    kZoomFit,
    kZoomFull,
    kZoomIn,
    kZoomOut,
    kCheckeredGround,
    kLightGround,
    kDarkGround,
    kColoredGround,
    kShowKeys,
    kShowHelp,
    kSaveWithin,
    kGiveUpPlugin,

    kFirstRecent = 300,  // and the files after it
    kLastRecent = 309,

    kFrameSlider = 400,
    kFrameText,
    kStatusText,
    kStatusProgress,
    kHistoryList,
    kCanvas,
    kWall,
};

}  // namespace kfx::stage
