// SPDX-License-Identifier: MIT
#include "media/contact_sheet.h"

#include <algorithm>
#include <cstddef>

#include "media/bitmap_font.h"

namespace kfx {
namespace {

constexpr int kMargin = 16;  // around the sheet
constexpr int kGap = 10;     // between thumbnails
constexpr int kTitleScale = 2;
constexpr int kTitleHeight = kGlyphHeight * kTitleScale + 12;
constexpr int kRowTitleHeight = kGlyphHeight + 7;
constexpr int kLabelGap = 5;  // between thumbnail and label
constexpr int kLabelHeight = kGlyphHeight + 5;
constexpr int kRowGap = 12;
constexpr int kCheckerSide = 8;

constexpr RgbColor kPaper = {244, 244, 241};
constexpr RgbColor kMat = {226, 226, 222};  // behind thumbnails
constexpr RgbColor kInk = {34, 38, 46};
constexpr RgbColor kFaintInk = {104, 108, 116};
constexpr RgbColor kRule = {184, 184, 178};
constexpr int kCheckerLevels[2] = {255, 208};

using Place = SheetPlace;

Picture MakeSheet(int width, int height) {
    Picture sheet;
    sheet.width = width;
    sheet.height = height;
    sheet.pixels.resize(4 * static_cast<size_t>(width) * static_cast<size_t>(height));
    return sheet;
}

uint8_t* PixelAt(Picture* picture, int x, int y) {
    return picture->pixels.data() +
           4 * (static_cast<size_t>(y) * static_cast<size_t>(picture->width) + static_cast<size_t>(x));
}

void FillPlace(Picture* sheet, const Place& place, RgbColor color) {
    for (int y = place.top; y < place.top + place.height; ++y) {
        for (int x = place.left; x < place.left + place.width; ++x) {
            uint8_t* pixel = PixelAt(sheet, x, y);
            pixel[0] = color.red;
            pixel[1] = color.green;
            pixel[2] = color.blue;
            pixel[3] = 255;
        }
    }
}

// One reduced pixel: the mean of the source pixels under it, each laid over the chequered ground first.
void AverageArea(const SheetPicture& picture, const Place& area, int ground, uint8_t* target) {
    uint64_t sums[3] = {};
    for (int y = area.top; y < area.top + area.height; ++y) {
        const uint8_t* source =
            picture.pixels + 4 * (static_cast<size_t>(y) * static_cast<size_t>(picture.width) +
                                  static_cast<size_t>(area.left));
        for (int x = 0; x < area.width; ++x, source += 4) {
            const int alpha = source[3];
            for (int channel = 0; channel < 3; ++channel) {
                const int level = source[channel] * alpha + ground * (255 - alpha);
                sums[channel] += static_cast<uint64_t>(level);
            }
        }
    }
    const uint64_t weight =
        uint64_t{255} * static_cast<uint64_t>(area.width) * static_cast<uint64_t>(area.height);
    for (int channel = 0; channel < 3; ++channel)
        target[channel] = static_cast<uint8_t>((sums[channel] + weight / 2) / weight);
    target[3] = 255;
}

void DrawThumbnail(Picture* sheet, const SheetPicture& picture, const Place& place) {
    const auto sourceEdge = [](int position, int shown, int stored) {
        return static_cast<int>(static_cast<int64_t>(position) * stored / shown);
    };
    for (int y = 0; y < place.height; ++y) {
        const int top = sourceEdge(y, place.height, picture.height);
        const int bottom = std::max(top + 1, sourceEdge(y + 1, place.height, picture.height));
        for (int x = 0; x < place.width; ++x) {
            const int left = sourceEdge(x, place.width, picture.width);
            const int right = std::max(left + 1, sourceEdge(x + 1, place.width, picture.width));
            const int ground = kCheckerLevels[(x / kCheckerSide + y / kCheckerSide) % 2];
            AverageArea(picture, {left, top, right - left, bottom - top}, ground,
                        PixelAt(sheet, place.left + x, place.top + y));
        }
    }
}

// The text as far as it fits, with two points where it was cut.
std::string CutText(const std::string& text, int width, int scale) {
    const int fitting = (width / scale + kGlyphAdvance - kGlyphWidth) / kGlyphAdvance;
    if (static_cast<int>(text.size()) <= fitting) return text;
    if (fitting < 3) return text.substr(0, static_cast<size_t>(std::max(fitting, 0)));
    return text.substr(0, static_cast<size_t>(fitting - 2)) + "..";
}

PictureSize ShownSize(const SheetPicture& picture, int mostWidth, int mostHeight) {
    if (picture.timesAsLarge > 1)
        return {picture.width * picture.timesAsLarge, picture.height * picture.timesAsLarge};
    return FitPicture(picture.width, picture.height, mostWidth, mostHeight);
}

// In the middle of the cell.
Place PlaceIn(const Place& cell, const SheetPicture& picture) {
    const PictureSize size = ShownSize(picture, cell.width, cell.height);
    return {cell.left + (cell.width - size.width) / 2, cell.top + (cell.height - size.height) / 2, size.width,
            size.height};
}

// In the middle below the cell.
void DrawLabel(Picture* sheet, const std::string& text, const Place& cell, int down, RgbColor color) {
    const std::string label = CutText(text, cell.width, 1);
    DrawBitmapText(sheet, cell.left + (cell.width - TextWidth(label, 1)) / 2, cell.top + cell.height + down,
                   label, 1, color);
}

// Returns where the thumbnail stands.
Place DrawCell(Picture* sheet, const SheetPicture& picture, const Place& cell) {
    FillPlace(sheet, {cell.left - 1, cell.top - 1, cell.width + 2, cell.height + 2}, kRule);
    FillPlace(sheet, cell, kMat);
    const Place shown = PlaceIn(cell, picture);
    DrawThumbnail(sheet, picture, shown);
    DrawLabel(sheet, picture.label, cell, kLabelGap, picture.note.empty() ? kFaintInk : kInk);
    DrawLabel(sheet, picture.note, cell, kLabelGap + kLabelHeight, kFaintInk);
    return shown;
}

int RowHeight(const SheetRow& row, int cellHeight) {
    const bool hasNotes = std::any_of(row.pictures.begin(), row.pictures.end(),
                                      [](const SheetPicture& picture) { return !picture.note.empty(); });
    return (row.title.empty() ? 0 : kRowTitleHeight) + cellHeight + (hasNotes ? 2 : 1) * kLabelHeight +
           kRowGap;
}

bool IsShowable(const SheetPicture& picture) {
    return picture.width > 0 && picture.height > 0 && picture.pixels;
}

SheetPicture PictureOf(const Animation& animation, size_t frame) {
    SheetPicture picture;
    picture.width = animation.width;
    picture.height = animation.height;
    picture.pixels = animation.frames[frame].pixels.data();
    picture.label = "frame " + std::to_string(frame);
    return picture;
}

int TimeBefore(const Animation& animation, size_t frame) {
    int time = 0;
    for (size_t i = 0; i < frame; ++i) time += animation.frames[i].delay;
    return time;
}

// The frame of the result that belongs to a frame of the source: the same number, or where equal frames were
// stored as one, the frame that is shown at the same moment.
size_t FrameBeside(const Animation& source, size_t frame, const Animation& result) {
    if (source.frames.size() == result.frames.size()) return frame;
    const int moment = TimeBefore(source, frame);
    size_t shown = 0;
    while (shown + 1 < result.frames.size() && TimeBefore(result, shown + 1) <= moment) ++shown;
    return shown;
}

}  // namespace

PictureSize FitPicture(int width, int height, int mostWidth, int mostHeight) {
    int64_t fittedWidth = width;
    int64_t fittedHeight = height;
    if (fittedWidth > mostWidth) {
        fittedHeight = std::max<int64_t>(1, fittedHeight * mostWidth / fittedWidth);
        fittedWidth = mostWidth;
    }
    if (fittedHeight > mostHeight) {
        fittedWidth = std::max<int64_t>(1, fittedWidth * mostHeight / fittedHeight);
        fittedHeight = mostHeight;
    }
    return {static_cast<int>(fittedWidth), static_cast<int>(fittedHeight)};
}

int TimesAsLarge(int width, int height, int mostWidth, int mostHeight) {
    constexpr int kMostTimes = 8;
    return std::clamp(std::min(mostWidth / width, mostHeight / height), 1, kMostTimes);
}

void DrawSheetPicture(const SheetPicture& picture, const SheetPlace& place, Picture* sheet) {
    DrawThumbnail(sheet, picture, place);
}

Picture DrawContactSheet(const std::string& title, const std::vector<SheetRow>& rows, int thumbnailWidth,
                         int thumbnailHeight, std::vector<SheetPlace>* places) {
    if (thumbnailWidth < 1 || thumbnailHeight < 1) return {};
    int columns = 0;
    int cellWidth = 0;
    int cellHeight = 0;
    int labelWidth = 0;
    for (const SheetRow& row : rows) {
        columns = std::max(columns, static_cast<int>(row.pictures.size()));
        for (const SheetPicture& picture : row.pictures) {
            if (!IsShowable(picture)) return {};
            const PictureSize fitted = ShownSize(picture, thumbnailWidth, thumbnailHeight);
            cellWidth = std::max(cellWidth, fitted.width);
            cellHeight = std::max(cellHeight, fitted.height);
            labelWidth = std::max(labelWidth, TextWidth(picture.label, 1));
        }
    }
    if (columns == 0) return {};
    cellWidth = std::max(cellWidth, std::min(labelWidth, thumbnailWidth));

    int height = 2 * kMargin + (title.empty() ? 0 : kTitleHeight) - kRowGap;
    for (const SheetRow& row : rows) height += RowHeight(row, cellHeight);
    const int width = 2 * kMargin + columns * cellWidth + (columns - 1) * kGap;
    Picture sheet = MakeSheet(width, height);
    FillPlace(&sheet, {0, 0, width, height}, kPaper);
    int top = kMargin;
    if (!title.empty()) {
        DrawBitmapText(&sheet, kMargin, top, CutText(title, width - 2 * kMargin, kTitleScale), kTitleScale,
                       kInk);
        top += kTitleHeight;
    }
    for (const SheetRow& row : rows) {
        int cellTop = top;
        if (!row.title.empty()) {
            DrawBitmapText(&sheet, kMargin, top, CutText(row.title, width - 2 * kMargin, 1), 1, kInk);
            cellTop += kRowTitleHeight;
        }
        int left = kMargin;
        for (const SheetPicture& picture : row.pictures) {
            const Place shown = DrawCell(&sheet, picture, {left, cellTop, cellWidth, cellHeight});
            if (places) places->push_back(shown);
            left += cellWidth + kGap;
        }
        top += RowHeight(row, cellHeight);
    }
    return sheet;
}

Picture DrawGallery(const std::string& title, const std::vector<SheetPicture>& pictures, int columns,
                    int thumbnailWidth, int thumbnailHeight, std::vector<SheetPlace>* places) {
    std::vector<SheetRow> rows;
    const auto perRow = static_cast<size_t>(std::max(columns, 1));
    for (size_t i = 0; i < pictures.size(); ++i) {
        if (i % perRow == 0) rows.emplace_back();
        rows.back().pictures.push_back(pictures[i]);
    }
    return DrawContactSheet(title, rows, thumbnailWidth, thumbnailHeight, places);
}

Picture DrawComparison(const std::string& title, const Animation& source, const Animation& result,
                       int columns, int thumbnailWidth, int thumbnailHeight) {
    if (source.frames.empty() || result.frames.empty()) return {};
    const size_t frames = source.frames.size();
    const size_t shown = std::min(frames, static_cast<size_t>(std::max(columns, 1)));
    std::vector<SheetRow> rows(2);
    rows[0].title = "Source";
    rows[1].title = "Result";
    for (size_t i = 0; i < shown; ++i) {
        const size_t frame = i * frames / shown;
        rows[0].pictures.push_back(PictureOf(source, frame));
        rows[1].pictures.push_back(PictureOf(result, FrameBeside(source, frame, result)));
    }
    return DrawContactSheet(title, rows, thumbnailWidth, thumbnailHeight);
}

}  // namespace kfx
