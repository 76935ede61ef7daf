// SPDX-License-Identifier: MIT
#include "stage/wall_render.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "stage/wall_engine.h"

namespace kfx::stage {
namespace {

constexpr int kMostThreads = 16;
constexpr char kNoMemory[] = "There is not enough memory for this picture.";
constexpr char kNoMemoryForSource[] = "There is not enough memory to scale the frames.";

struct Tile {
    TileView view;
    int rank = 0;
};

// One animation's thumbnails on their way. The threads that make them share it.
struct Scaling {
    std::shared_ptr<const WallSource> source;
    ThumbnailPlan plan;
    std::shared_ptr<Animation> thumbnails;  // of plan.count frames
    size_t begun = 0;
    size_t done = 0;
};

struct Worker {
    std::thread thread;
    std::atomic<bool> stop = false;  // what it does is not wanted any more
    size_t tile = kWallSource;       // what it makes
    bool busy = false;
};

}  // namespace

struct WallRender {
    WallSetup setup;
    Worker workers[kMostThreads];
    int threads = 0;

    std::mutex lock;  // of everything below, and of `tile` and `busy` above
    std::condition_variable workIsThere;
    std::condition_variable workerIsFree;
    bool closing = false;
    uint64_t show = 0;  // which animation: what was begun for an earlier one is dropped
    Scaling scaling;
    std::shared_ptr<const Animation> thumbnails;  // when all are there
    std::vector<Tile> tiles;
    std::atomic<uint64_t> framesMade = 0;  // written without the lock
};

namespace {

// What a thread takes away from the lock.
struct Job {
    uint64_t show = 0;
    size_t tile = kWallSource;  // or one thumbnail
    size_t number = 0;          // of the thumbnail
    Scaling scaling;            // of the thumbnail
    EffectSettings settings;
    std::shared_ptr<const Animation> source;  // of the tile
};

// The functions below this line are called under the lock, unless they say that they are not.

bool TakeThumbnail(WallRender* render, Job* job) {
    Scaling& scaling = render->scaling;
    if (scaling.begun == scaling.plan.count) return false;
    job->tile = kWallSource;
    job->number = scaling.begun++;
    job->scaling = scaling;
    return true;
}

bool TakeTile(WallRender* render, Job* job) {
    if (!render->thumbnails) return false;
    size_t best = render->tiles.size();
    for (size_t i = 0; i < render->tiles.size(); ++i) {
        const Tile& tile = render->tiles[i];
        if (tile.view.state != TileState::Waiting) continue;
        if (best == render->tiles.size() || tile.rank < render->tiles[best].rank) best = i;
    }
    if (best == render->tiles.size()) return false;
    render->tiles[best].view.state = TileState::Working;
    job->tile = best;
    job->settings = render->tiles[best].view.settings;
    job->source = render->thumbnails;
    return true;
}

bool TakeJob(WallRender* render, Worker* worker, Job* job) {
    *job = {};
    if (!TakeThumbnail(render, job) && !TakeTile(render, job)) return false;
    job->show = render->show;
    worker->tile = job->tile;
    worker->busy = true;
    worker->stop = false;
    return true;
}

void FailAll(WallRender* render, const char* error) {
    render->scaling = {};
    for (Tile& tile : render->tiles) {
        tile.view.state = TileState::Failed;
        tile.view.error = error;
    }
}

// True: all thumbnails are there now, or cannot be.
bool NoteThumbnail(WallRender* render, const Job& job, bool made) {
    if (job.show != render->show || !render->scaling.thumbnails) return false;
    if (!made) {
        FailAll(render, kNoMemoryForSource);
        return true;
    }
    if (++render->scaling.done < render->scaling.plan.count) return false;
    render->thumbnails = render->scaling.thumbnails;
    render->scaling = {};
    return true;
}

// Whether the tile has changed. A tile that was given other settings meanwhile waits already.
bool NoteTile(WallRender* render, const Job& job, bool stopped, std::shared_ptr<const Animation> picture) {
    if (job.show != render->show || stopped) return false;
    TileView& view = render->tiles[job.tile].view;
    view.state = picture ? TileState::Done : TileState::Failed;
    view.error = picture ? "" : kNoMemory;
    if (!picture) return true;
    view.picture = std::move(picture);
    view.pictureSettings = job.settings;
    return true;
}

void StopWorkers(WallRender* render) {
    for (Worker& worker : render->workers) worker.stop = true;
}

// Empties the wall; the tiles go to the caller, who lets them go when the lock is open. What workers still do
// for them is dropped when they come back.
void Clear(WallRender* render, std::vector<Tile>* tiles) {
    StopWorkers(render);
    ++render->show;
    render->scaling = {};
    render->thumbnails.reset();
    tiles->clear();
    tiles->swap(render->tiles);
}

// Without the lock. False: memory ran out.
bool MakeOneThumbnail(WallRender* render, const Job& job) {
    try {
        Frame& thumbnail = job.scaling.thumbnails->frames[job.number];
        if (!MakeThumbnail(*job.scaling.source, job.scaling.plan, job.number, &thumbnail)) return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
    render->framesMade.fetch_add(1, std::memory_order_relaxed);
    return true;
}

// Without the lock. Null: it was told to stop, or memory ran out.
std::shared_ptr<const Animation> MakeTile(WallRender* render, const Worker& worker, const Job& job) {
    try {
        auto picture = std::make_shared<Animation>(*job.source);
        commands::Failure failure;
        const EffectDescription& effect = (*render->setup.effects)[job.settings.effect];
        if (ApplyEffect(effect, job.settings, worker.stop, &render->framesMade, picture.get(), &failure))
            return picture;
    } catch (const std::bad_alloc&) {
    }
    return nullptr;
}

void TellChange(const WallRender& render, size_t tile) {
    if (render.setup.changed) render.setup.changed(render.setup.user, tile);
}

void RunWorker(WallRender* render, Worker* worker) {
    if (render->setup.threadBegins) render->setup.threadBegins();
    std::unique_lock<std::mutex> lock(render->lock);
    Job job;
    while (!render->closing) {
        if (!TakeJob(render, worker, &job)) {
            render->workIsThere.wait(lock);
            continue;
        }
        lock.unlock();
        const bool isThumbnail = job.tile == kWallSource;
        const bool made = isThumbnail && MakeOneThumbnail(render, job);
        std::shared_ptr<const Animation> picture = isThumbnail ? nullptr : MakeTile(render, *worker, job);
        lock.lock();
        const bool changed = isThumbnail ? NoteThumbnail(render, job, made)
                                         : NoteTile(render, job, worker->stop, std::move(picture));
        const size_t tile = job.tile;
        job = {};
        worker->busy = false;
        lock.unlock();
        render->workerIsFree.notify_all();
        if (changed && isThumbnail) render->workIsThere.notify_all();
        if (changed) TellChange(*render, tile);
        lock.lock();
    }
}

// Without the lock. How many could be started.
int StartWorkers(WallRender* render, int threads) {
    int started = 0;
    try {
        for (; started < threads; ++started)
            render->workers[started].thread = std::thread(RunWorker, render, &render->workers[started]);
    } catch (const std::exception&) {
        // No thread, or no memory for one: the others do its work.
    }
    return started;
}

}  // namespace

WallRender* OpenWallRender(const WallSetup& setup) {
    auto* render = new (std::nothrow) WallRender;
    if (!render) return nullptr;
    render->setup = setup;
    render->threads = StartWorkers(render, std::clamp(setup.threads, 1, kMostThreads));
    if (render->threads > 0) return render;
    delete render;
    return nullptr;
}

void CloseWallRender(WallRender* render) {
    if (!render) return;
    {
        const std::lock_guard<std::mutex> lock(render->lock);
        render->closing = true;
        StopWorkers(render);
    }
    render->workIsThere.notify_all();
    for (int i = 0; i < render->threads; ++i) render->workers[i].thread.join();
    delete render;
}

bool ShowInWall(WallRender* render, std::shared_ptr<const WallSource> source, int tileWidth, int tileHeight,
                const std::vector<EffectSettings>& tiles, const std::vector<int>& ranks) {
    const ThumbnailPlan plan =
        PlanThumbnails(*source, tileWidth, tileHeight, tiles.size() + 1, render->setup.mostBytes);
    std::shared_ptr<Animation> thumbnails;
    std::vector<Tile> made, before;
    try {
        thumbnails = std::make_shared<Animation>();
        thumbnails->width = plan.width;
        thumbnails->height = plan.height;
        thumbnails->frames.resize(plan.count);
        made.resize(tiles.size());
    } catch (const std::bad_alloc&) {
        EmptyWall(render);
        return false;
    }
    for (size_t i = 0; i < tiles.size(); ++i) {
        made[i].view.settings = tiles[i];
        made[i].rank = ranks[i];
    }
    {
        const std::lock_guard<std::mutex> lock(render->lock);
        Clear(render, &before);
        render->tiles = std::move(made);
        if (plan.count > 0) render->scaling = {std::move(source), plan, std::move(thumbnails)};
    }
    render->workIsThere.notify_all();
    return true;
}

void ChangeTile(WallRender* render, size_t tile, const EffectSettings& settings) {
    {
        const std::lock_guard<std::mutex> lock(render->lock);
        if (tile >= render->tiles.size()) return;
        TileView& view = render->tiles[tile].view;
        view.settings = settings;
        // Without thumbnails nothing can be made.
        if (!render->thumbnails && !render->scaling.thumbnails) return;
        view.state = TileState::Waiting;
        view.error = "";
        for (Worker& worker : render->workers)
            if (worker.busy && worker.tile == tile) worker.stop = true;
    }
    render->workIsThere.notify_one();
}

void RankTiles(WallRender* render, const std::vector<int>& ranks) {
    const std::lock_guard<std::mutex> lock(render->lock);
    const size_t count = std::min(ranks.size(), render->tiles.size());
    for (size_t i = 0; i < count; ++i) render->tiles[i].rank = ranks[i];
}

void EmptyWall(WallRender* render) {
    std::vector<Tile> before;
    std::unique_lock<std::mutex> lock(render->lock);
    Clear(render, &before);
    render->workerIsFree.wait(lock, [render] {
        return std::none_of(std::begin(render->workers), std::end(render->workers),
                            [](const Worker& worker) { return worker.busy; });
    });
}

TileView ReadTile(WallRender* render, size_t tile) {
    const std::lock_guard<std::mutex> lock(render->lock);
    return tile < render->tiles.size() ? render->tiles[tile].view : TileView();
}

std::shared_ptr<const Animation> ReadWallSource(WallRender* render) {
    const std::lock_guard<std::mutex> lock(render->lock);
    return render->thumbnails;
}

WallProgress ReadWallProgress(WallRender* render) {
    const std::lock_guard<std::mutex> lock(render->lock);
    WallProgress progress;
    progress.tiles = render->tiles.size();
    for (const Tile& tile : render->tiles)
        progress.tilesDone += tile.view.state == TileState::Done || tile.view.state == TileState::Failed;
    progress.framesMade = render->framesMade;
    return progress;
}

std::vector<int> TileRanks(size_t count, size_t firstVisible, size_t lastVisible, size_t inHand) {
    std::vector<int> ranks(count);
    for (size_t i = 0; i < count; ++i) {
        const size_t distance = i < firstVisible ? firstVisible - i : (i > lastVisible ? i - lastVisible : 0);
        ranks[i] = i == inHand ? 0 : static_cast<int>(distance) + 1;
    }
    return ranks;
}

}  // namespace kfx::stage
