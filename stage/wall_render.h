// SPDX-License-Identifier: MIT
// An animation under many effects at once, as thumbnails, made by threads in the background.
//
// A wall is a row of tiles: an effect with its settings each. All functions may be called by one thread, the
// owner's; none of them waits for a picture. A tile that is made anew keeps its old picture until then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "media/animation.h"
#include "stage/wall_settings.h"
#include "stage/wall_source.h"

namespace kfx::stage {

struct WallRender;

// In place of a tile's number: the thumbnails of the source.
constexpr size_t kWallSource = SIZE_MAX;

struct WallSetup {
    const std::vector<EffectDescription>* effects = nullptr;  // outlives the wall
    int threads = 1;
    uint64_t mostBytes = uint64_t{192} << 20;  // of the thumbnails of the source and of all tiles together
    // Called by the threads when a tile has changed, or the source's thumbnails are there, in any order. It
    // may call the functions below but OpenWallRender and those that say that they wait.
    void (*changed)(void* user, size_t tile) = nullptr;
    void* user = nullptr;
    void (*threadBegins)() = nullptr;  // called first by each thread; null: nothing
};

// Null: no thread could be started, or memory ran out.
WallRender* OpenWallRender(const WallSetup& setup);

// Ends the threads and waits for them; each ends with the frame that it is at. Null is allowed.
void CloseWallRender(WallRender* render);

// Leaves what was there and begins with another animation, or with another size of its thumbnails. `ranks`
// says in which order tiles are made, the lowest first, one for each tile; see TileRanks. Without frames
// there is nothing to make. False: memory ran out, and the wall is empty.
bool ShowInWall(WallRender* render, std::shared_ptr<const WallSource> source, int tileWidth, int tileHeight,
                const std::vector<EffectSettings>& tiles, const std::vector<int>& ranks);

// Makes one tile anew with other settings. What was made for the settings before is dropped.
void ChangeTile(WallRender* render, size_t tile, const EffectSettings& settings);

// Changes the order of what has not been begun.
void RankTiles(WallRender* render, const std::vector<int>& ranks);

// Empties the wall and waits until no thread uses the animation any more: at most for a frame.
void EmptyWall(WallRender* render);

enum class TileState {
    Waiting,
    Working,
    Done,    // `picture` shows `settings`
    Failed,  // `error` says why; `picture` may be an older one
};

struct TileView {
    TileState state = TileState::Waiting;
    EffectSettings settings;                   // what is wanted
    std::shared_ptr<const Animation> picture;  // the last that was made; null: none yet
    EffectSettings pictureSettings;            // what it shows
    const char* error = "";                    // one sentence
};

TileView ReadTile(WallRender* render, size_t tile);

// The source's thumbnails; null: not ready.
std::shared_ptr<const Animation> ReadWallSource(WallRender* render);

struct WallProgress {
    size_t tilesDone = 0;  // or failed
    size_t tiles = 0;
    uint64_t framesMade = 0;  // since the wall was opened, thumbnails and frames that were dropped included
};
WallProgress ReadWallProgress(WallRender* render);

// Ranks for `count` tiles of which those from firstVisible to lastVisible are seen: the tile in hand comes
// first, then those that are seen, then the others by their distance from these. SIZE_MAX: none is in hand.
std::vector<int> TileRanks(size_t count, size_t firstVisible, size_t lastVisible, size_t inHand);

}  // namespace kfx::stage
