// SPDX-License-Identifier: MIT
// What is done with a wall's tiles: variations, keeping, opening, and the keys for it.
#include "commands/text_windows.h"
#include "stage/variation.h"
#include "stage/wall_window.h"

namespace kfx::stage {
namespace {

// Always the same: the number of a variation is its name.
constexpr uint64_t kSeed = 1;

// Whether a tile shows something else than what Escape goes back to.
bool IsVaried(const WallTile& tile) { return tile.shown != tile.kept; }

std::string VariationText(const WallWindow& wall, size_t number) {
    const WallTile& tile = wall.tiles[number];
    std::string text;
    if (tile.isKept && !IsVaried(tile))
        text = "Kept: ";
    else if (tile.variation > 0)
        text = "Variation " + std::to_string(tile.variation) + ": ";
    else
        return "";
    return text + SettingsText(wall.effects[number], tile.shown);
}

// The effect with what the tile shows of it.
std::string NameOf(const WallWindow& wall, size_t number) {
    const WallTile& tile = wall.tiles[number];
    const std::string settings = SettingsText(wall.effects[number], tile.shown);
    std::string text = wall.effects[number].name;
    if (!settings.empty()) text += ": " + settings;
    if (tile.isKept && !IsVaried(tile)) return text + " (kept)";
    return tile.variation > 0 ? text + " (variation " + std::to_string(tile.variation) + ")" : text;
}

void Show(WallWindow* wall, size_t number, uint64_t variation, const EffectSettings& settings) {
    WallTile& tile = wall->tiles[number];
    tile.variation = variation;
    if (tile.shown != settings) {
        tile.shown = settings;
        ChangeTile(wall->render, number, settings);
        tile.view = ReadTile(wall->render, number);
    }
    RankWall(*wall);
    NameTile(wall, number);
    TellTile(*wall, number);
}

bool MoveFocus(WallWindow* wall, WallStep step) {
    RECT client;
    GetClientRect(wall->window, &client);
    SetFocus(wall->tiles[TileBeside(wall->layout, client.bottom, wall->focus, step)].button);
    TellTile(*wall, wall->focus);
    return true;
}

}  // namespace

std::string TileNote(const WallWindow& wall, size_t tile) {
    const TileView& view = wall.tiles[tile].view;
    const std::string text = VariationText(wall, tile);
    if (!text.empty()) return text;
    if (!wall.source) return "";
    return view.state == TileState::Working   ? "Being made"
           : view.state == TileState::Waiting ? "Waiting"
                                              : "";
}

void NameTile(WallWindow* wall, size_t number) {
    WallTile& tile = wall->tiles[number];
    std::string text = NameOf(*wall, number);
    if (tile.view.state == TileState::Failed) text += std::string(". ") + tile.view.error;
    const std::wstring wide = commands::Widen(text);
    if (wide != tile.text) {
        tile.text = wide;
        SetWindowTextW(tile.button, wide.c_str());
    }
    RedrawTile(*wall, number);
}

void TellTile(const WallWindow& wall, size_t number) {
    const bool varies = HasVariations(wall.effects[number]);
    const std::string text = NameOf(wall, number) + ".   Enter: open" +
                             (varies ? "   Space: next variation   Left: the one before   S: keep" : "");
    SendMessageW(GetParent(wall.window), kWallTells, 0, reinterpret_cast<LPARAM>(&text));
}

void ShowVariation(WallWindow* wall, size_t tile, uint64_t variation) {
    Show(wall, tile, variation, VariationAt(wall->effects, tile, kSeed, variation));
}

void ShowKept(WallWindow* wall, size_t number) {
    const WallTile& tile = wall->tiles[number];
    Show(wall, number, tile.keptVariation, tile.kept);
}

void KeepShown(WallWindow* wall, size_t number) {
    WallTile& tile = wall->tiles[number];
    tile.kept = tile.shown;
    tile.keptVariation = tile.variation;
    tile.isKept = tile.kept != DefaultSettings(wall->effects, number);
    NameTile(wall, number);
    TellTile(*wall, number);
}

void OpenTile(const WallWindow& wall, size_t tile) {
    if (!wall.source) return;
    SendMessageW(GetParent(wall.window), kWallOpens, 0, reinterpret_cast<LPARAM>(&wall.tiles[tile].shown));
}

bool OnWallKey(WallWindow* wall, WPARAM key) {
    const size_t focus = wall->focus;
    const WallTile& tile = wall->tiles[focus];
    switch (key) {
        case VK_RETURN:
            OpenTile(*wall, focus);
            return true;
        case VK_SPACE:
            if (HasVariations(wall->effects[focus])) ShowVariation(wall, focus, tile.variation + 1);
            return true;
        case VK_BACK:
            if (tile.variation > 0) ShowVariation(wall, focus, tile.variation - 1);
            return true;
        case VK_LEFT:
            if (tile.variation == 0) return MoveFocus(wall, WallStep::Left);
            ShowVariation(wall, focus, tile.variation - 1);
            return true;
        case 'S':
            KeepShown(wall, focus);
            return true;
        case VK_ESCAPE:
            if (!IsVaried(tile)) return false;
            ShowKept(wall, focus);
            return true;
        case VK_RIGHT:
            return MoveFocus(wall, WallStep::Right);
        case VK_UP:
            return MoveFocus(wall, WallStep::Up);
        case VK_DOWN:
            return MoveFocus(wall, WallStep::Down);
        case VK_PRIOR:
            return MoveFocus(wall, WallStep::PageUp);
        case VK_NEXT:
            return MoveFocus(wall, WallStep::PageDown);
        case VK_HOME:
            return MoveFocus(wall, WallStep::First);
        case VK_END:
            return MoveFocus(wall, WallStep::Last);
    }
    return false;
}

}  // namespace kfx::stage
