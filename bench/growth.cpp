// SPDX-License-Identifier: MIT
#include "bench/growth.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "bench/bench_animation.h"
#include "bench/bench_picture.h"
#include "bench/job.h"

namespace kfx::bench {
namespace {

struct Column {
    const char* job;
    const char* variant;
    const char* title;
};

constexpr int32_t kTileSide = 512;
constexpr int32_t kSmallWidth = 64;
constexpr int32_t kSmallHeight = 48;

// The least milliseconds of one run; below 0 when it fails.
double LeastTime(const Run& run, const Patience& patience) {
    using Clock = std::chrono::steady_clock;
    double least = 1e30, spent = 0;
    for (int i = 0; i < patience.runs || spent < patience.milliseconds; ++i) {
        const Clock::time_point start = Clock::now();
        if (!run()) return -1;
        const std::chrono::duration<double, std::milli> took = Clock::now() - start;
        spent += took.count();
        least = std::min(least, took.count());
    }
    return least;
}

double NanosecondsPerPixel(const std::vector<Job>& jobs, const Column& column, const Shot& shot,
                           const Patience& patience) {
    const auto job = std::find_if(jobs.begin(), jobs.end(), [&](const Job& candidate) {
        return candidate.name == column.job && candidate.variant == column.variant;
    });
    if (job == jobs.end()) return 0;
    const Run run = job->prepare(shot);
    const double milliseconds = run ? LeastTime(run, patience) : -1;
    const double frames = job->allFrames ? shot.frames.count : 1;
    return milliseconds < 0 ? 0 : milliseconds * 1e6 / (static_cast<double>(PixelsOfFrame(shot)) * frames);
}

void AddRow(const std::string& name, const std::vector<Column>& columns, const Shot& shot,
            const Patience& patience, GrowthTable* table) {
    const std::vector<Job> jobs = ListJobs(false);
    GrowthRow row = {.name = name, .values = {}};
    for (const Column& column : columns)
        row.values.push_back(NanosecondsPerPixel(jobs, column, shot, patience));
    table->rows.push_back(row);
}

GrowthTable MakeTable(const char* what, const std::vector<Column>& columns) {
    GrowthTable table = {.what = what, .columns = {}, .rows = {}};
    for (const Column& column : columns) table.columns.emplace_back(column.title);
    return table;
}

// Makes `picture` the shot's only frame and owner.
void SetPicture(ImageHandle picture, int32_t width, int32_t height, Shot* shot) {
    FrameEntry entry = {};
    entry.transparentIndex = -1;
    entry.image = picture;
    shot->width = width;
    shot->height = height;
    if (!picture || !AppendFrame(&shot->frames, entry)) FreeMemory(picture);
}

// The photograph's beginning over and over: drawing a large one would take longer than what is measured.
ImageHandle TilePhotograph(int32_t side) {
    const int32_t tile = std::min(side, kTileSide);
    const MemoryOwner photograph(MakeBenchPicture(tile, tile));
    MemoryOwner picture(CreateDib(side, side, nullptr, 24));
    const ImageLock from(photograph.memory), to(picture.memory);
    if (!from || !to) return nullptr;
    for (int32_t y = 0; y < side; ++y) {
        for (int32_t x = 0; x < side; x += tile)
            std::memcpy(PictureRow(to.image, y) + 3 * static_cast<size_t>(x),
                        PictureRow(from.image, y % tile), 3 * static_cast<size_t>(std::min(tile, side - x)));
    }
    return picture.Release();
}

// Each colour is so much more than the one before, modulo 2^24: with an odd step no two are equal.
ImageHandle CountColors(int32_t side, int64_t colors, int64_t step) {
    MemoryOwner picture(CreateDib(side, side, nullptr, 24));
    const ImageLock lock(picture.memory);
    if (!lock) return nullptr;
    for (int32_t y = 0; y < side; ++y) {
        uint8_t* pixel = PictureRow(lock.image, y);
        for (int32_t x = 0; x < side; ++x, pixel += 3) {
            const int64_t color = (int64_t{y} * side + x) % colors * step;
            for (int byte = 0; byte < 3; ++byte) pixel[byte] = static_cast<uint8_t>(color >> 8 * byte);
        }
    }
    return picture.Release();
}

std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value < 10 ? "%.2f" : "%.1f", value);
    return value > 0 ? text : "–";
}

}  // namespace

GrowthTable GrowthOfSides(const std::vector<int32_t>& sides, const Patience& patience) {
    const std::vector<Column> columns = {
        {.job = "solarize", .variant = "default", .title = "Solarize"},
        {.job = "swirl", .variant = "default", .title = "Swirl"},
        {.job = "emboss", .variant = "heavy", .title = "Emboss, 45, 50"},
        {.job = "build", .variant = "default", .title = "build"},
        {.job = "build-dither", .variant = "default", .title = "dithered build"},
        {.job = "scaler", .variant = "default", .title = "scaling to 424"},
    };
    GrowthTable table = MakeTable("sides", columns);
    for (const int32_t side : sides) {
        Shot shot;
        SetPicture(TilePhotograph(side), side, side, &shot);
        std::string name = std::to_string(side);
        name.append(" x ").append(std::to_string(side));
        if (shot.frames.count) AddRow(name, columns, shot, patience, &table);
    }
    return table;
}

GrowthTable GrowthOfFrames(const std::vector<int32_t>& counts, const Patience& patience) {
    const std::vector<Column> columns = {
        {.job = "build", .variant = "default", .title = "build"},
        {.job = "build-dither", .variant = "default", .title = "dithered build"},
        {.job = "diff", .variant = "default", .title = "supercompression"},
        {.job = "gif-write", .variant = "default", .title = "GIF writing"},
        {.job = "gif-read", .variant = "default", .title = "GIF reading"},
    };
    GrowthTable table = MakeTable("frames", columns);
    for (const int32_t count : counts) {
        Shot shot;
        shot.width = kSmallWidth;
        shot.height = kSmallHeight;
        shot.frames = MakeBenchAnimation(kSmallWidth, kSmallHeight, count);
        if (shot.frames.count) AddRow(std::to_string(count), columns, shot, patience, &table);
    }
    return table;
}

GrowthTable GrowthOfColors(const std::vector<int32_t>& counts, int32_t side, const Patience& patience) {
    const std::vector<Column> columns = {
        {.job = "quantize", .variant = "default", .title = "palette"},
        {.job = "remap", .variant = "default", .title = "nearest colours"},
        {.job = "dither", .variant = "default", .title = "dithering"},
    };
    GrowthTable table = MakeTable("colours", columns);
    const auto add = [&](const std::string& name, int64_t colors, int64_t step) {
        Shot shot;
        SetPicture(CountColors(side, colors, step), side, side, &shot);
        if (shot.frames.count) AddRow(name, columns, shot, patience, &table);
    };
    for (const int32_t count : counts) add(std::to_string(count), count, 0x9E3779);
    for (const int64_t step : {46368, 0x10107}) add("250, steps of " + std::to_string(step), 250, step);
    return table;
}

std::string MarkdownOf(const GrowthTable& table, size_t firstCounted) {
    std::string text = "| " + table.what + " |", rule = "| ---: |", last = "| greatest step |";
    for (size_t i = 0; i < table.columns.size(); ++i) {
        text.append(" ").append(table.columns[i]).append(" |");
        rule += " ---: |";
        double step = 0;
        for (size_t r = firstCounted; r + 1 < table.rows.size(); ++r) {
            const double value = table.rows[r].values[i];
            if (value > 0) step = std::max(step, table.rows[r + 1].values[i] / value);
        }
        last.append(" ").append(Number(step)).append(" |");
    }
    text += "\n" + rule + "\n";
    for (const GrowthRow& row : table.rows) {
        text.append("| ").append(row.name).append(" |");
        for (const double value : row.values) text.append(" ").append(Number(value)).append(" |");
        text += "\n";
    }
    return text + last + "\n";
}

}  // namespace kfx::bench
