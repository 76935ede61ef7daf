// SPDX-License-Identifier: MIT
#include "tests/reference/quantizer_reference.h"

#include <algorithm>
#include <memory>

namespace kfx::test {
namespace {

constexpr uint32_t kNodeCap = 266817;

struct Node {
    double count = 0;
    double red = 0, green = 0, blue = 0;
    double error = 0;
    uint32_t id = 0;
    uint32_t level = 0;
    Node* parent = nullptr;
    std::unique_ptr<Node> children[8];
};

struct Cube {
    std::unique_ptr<Node> root = std::make_unique<Node>();
    uint32_t depth = 0;
    uint32_t nodes = 1;
    uint32_t colors = 0;
    double pruningThreshold = 0;
    double nextThreshold = 0;
};

uint32_t DepthFor(uint32_t limit) {
    uint32_t d = 1;
    for (uint32_t c = limit; c != 0; c /= 4) ++d;
    return std::min(std::max(d - 1, 2u), 8u);
}

void Merge(Cube* cube, Node* node) {
    for (auto& child : node->children)
        if (child) Merge(cube, child.get());
    Node* parent = node->parent;
    parent->count += node->count;
    parent->red += node->red;
    parent->green += node->green;
    parent->blue += node->blue;
    --cube->nodes;
    parent->children[node->id].reset();
}

void PruneLevel(Cube* cube, Node* node) {
    for (auto& child : node->children)
        if (child) PruneLevel(cube, child.get());
    if (node->level == cube->depth) Merge(cube, node);
}

void AddRun(Cube* cube, uint32_t color, double weight) {
    const uint32_t red = RedOf(color), green = GreenOf(color), blue = BlueOf(color);
    double midRed = 127.5, midGreen = 127.5, midBlue = 127.5, step = 128;
    Node* node = cube->root.get();
    for (uint32_t level = 1; level <= cube->depth; ++level) {
        step /= 2;
        const uint32_t bit = 8 - level;
        const uint32_t id = (red >> bit & 1) * 4 + (green >> bit & 1) * 2 + (blue >> bit & 1);
        midRed += id & 4 ? step : -step;
        midGreen += id & 2 ? step : -step;
        midBlue += id & 1 ? step : -step;
        if (!node->children[id]) {
            node->children[id] = std::make_unique<Node>();
            node->children[id]->id = id;
            node->children[id]->level = level;
            node->children[id]->parent = node;
            ++cube->nodes;
            if (level == cube->depth) ++cube->colors;
        }
        node = node->children[id].get();
        const double r = red - midRed, g = green - midGreen, b = blue - midBlue;
        node->error += weight * (r * r + g * g + b * b);
        cube->root->error += node->error;
    }
    node->count += weight;
    node->red += weight * red;
    node->green += weight * green;
    node->blue += weight * blue;
}

void Classify(Cube* cube, const WorkingImage* image) {
    for (int32_t r = 0; r < image->height; ++r) {
        if (cube->nodes > kNodeCap) {
            PruneLevel(cube, cube->root.get());
            --cube->depth;
        }
        const int32_t y = image->height - 1 - r;
        for (int32_t x = 0; x < image->width;) {
            const uint32_t color = GetDibPixel(image, x, y);
            int32_t end = x + 1;
            while (end < image->width && GetDibPixel(image, end, y) == color) ++end;
            AddRun(cube, color, end - x);
            x = end;
        }
    }
}

void ReduceNode(Cube* cube, Node* node) {
    for (auto& child : node->children)
        if (child) ReduceNode(cube, child.get());
    if (cube->pruningThreshold >= node->error) {
        Merge(cube, node);
        return;
    }
    if (node->count > 0) ++cube->colors;
    cube->nextThreshold = std::min(cube->nextThreshold, node->error);
}

uint32_t Reduce(Cube* cube, uint32_t limit) {
    uint32_t passes = 0;
    cube->nextThreshold = 0;
    while (cube->colors > limit) {
        ++passes;
        Node* root = cube->root.get();
        cube->pruningThreshold = cube->nextThreshold;
        cube->nextThreshold = root->error - 1;
        cube->colors = 0;
        for (auto& child : root->children)
            if (child) ReduceNode(cube, child.get());
        if (cube->pruningThreshold >= root->error) continue;  // merged into itself
        if (root->count > 0) ++cube->colors;
        cube->nextThreshold = std::min(cube->nextThreshold, root->error);
    }
    return passes;
}

void Assign(const Node* node, ReferencePalette* palette) {
    for (const auto& child : node->children)
        if (child) Assign(child.get(), palette);
    if (node->count == 0) return;
    uint8_t* entry = palette->bytes.data() + 3 * palette->colors++;
    entry[0] = static_cast<uint8_t>((node->red + node->count / 2) / node->count);
    entry[1] = static_cast<uint8_t>((node->green + node->count / 2) / node->count);
    entry[2] = static_cast<uint8_t>((node->blue + node->count / 2) / node->count);
}

}  // namespace

ReferencePalette ReferenceQuantize(uint32_t limit, const std::vector<ImageHandle>& frames) {
    if (limit == 0 || limit > 256) limit = 256;
    Cube cube;
    cube.depth = DepthFor(limit);
    std::vector<uint32_t> list;
    uint64_t distinct = 0;
    for (const ImageHandle frame : frames) {
        const ImageLock lock(frame);
        for (int32_t y = 0; y < lock.image->height; ++y) {
            for (int32_t x = 0; x < lock.image->width; ++x) {
                const uint32_t color = GetDibPixel(lock.image, x, y);
                if (list.size() >= 256) {
                    ++distinct;
                } else if (std::find(list.begin(), list.end(), color) == list.end()) {
                    list.push_back(color);
                    ++distinct;
                }
            }
        }
        Classify(&cube, lock.image);
    }
    ReferencePalette palette = {};
    if (distinct > limit) {
        palette.passes = Reduce(&cube, limit);
        Assign(cube.root.get(), &palette);
        return palette;
    }
    for (const uint32_t color : list) {
        uint8_t* entry = palette.bytes.data() + 3 * palette.colors++;
        entry[0] = static_cast<uint8_t>(RedOf(color));
        entry[1] = static_cast<uint8_t>(GreenOf(color));
        entry[2] = static_cast<uint8_t>(BlueOf(color));
    }
    return palette;
}

}  // namespace kfx::test
