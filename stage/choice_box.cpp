// SPDX-License-Identifier: MIT
#include "stage/choice_box.h"

#include <algorithm>

#include "commands/text_windows.h"
#include "stage/plain_dialog.h"
#include "stage/view.h"

namespace kfx::stage {

using namespace commands;

namespace {

// Device-independent pixels.
constexpr int kMargin = 14, kGap = 10, kCellWidth = 224, kPictureHeight = 168, kPadding = 10, kLine = 18;
constexpr int kTextLines = 6, kSentence = 36, kButtonWidth = 90, kButtonHeight = 26, kLeastCellWidth = 120;
constexpr UINT_PTR kPlayTimer = 1;
constexpr UINT kTimerMilliseconds = 15;

struct OfferBox {
    PlainDialog dialog;
    const Offer* offer;
    uint64_t start = 0;          // of playing, in milliseconds of the clock
    uint64_t length = 0;         // of the longest
    std::vector<size_t> frames;  // that are shown
    int cellWidth = kCellWidth;
    size_t last = 0;  // file that had the focus
    bool isTaking = false;
};

int Scale(const OfferBox& box, int value) { return MulDiv(value, box.dialog.dpi, 96); }

HWND CellOf(const OfferBox& box, size_t file) {
    return GetDlgItem(box.dialog.window, kFirstOfferedFile + static_cast<int>(file));
}

RECT PictureArea(const OfferBox& box, const RECT& cell) {
    const int padding = Scale(box, kPadding);
    return {cell.left + padding, cell.top + padding, cell.right - padding,
            cell.top + padding + Scale(box, kPictureHeight)};
}

// As wide as the screen allows.
int CellWidthFor(const OfferBox& box, size_t files) {
    MONITORINFO screen = {};
    screen.cbSize = sizeof screen;
    GetMonitorInfoW(MonitorFromWindow(box.dialog.window, MONITOR_DEFAULTTONEAREST), &screen);
    const int room = MulDiv(screen.rcWork.right - screen.rcWork.left, 96, box.dialog.dpi) - 2 * kMargin - 16;
    const int count = static_cast<int>(files);
    return std::clamp((room - (count - 1) * kGap) / count, kLeastCellWidth, kCellWidth);
}

void MakeCells(OfferBox* box) {
    const Offer& offer = *box->offer;
    const int count = static_cast<int>(offer.files.size());
    box->cellWidth = CellWidthFor(*box, offer.files.size());
    // The sentence and the buttons need the width of two files.
    const int width = std::max(count * box->cellWidth + (count - 1) * kGap, 2 * kCellWidth);
    const int top = kMargin + kSentence;
    const int bottom = top + 2 * kPadding + kPictureHeight + kTextLines * kLine;
    AddControl(box->dialog, {L"STATIC",
                             Widen(offer.sentence).c_str(),
                             SS_NOPREFIX,
                             -1,
                             {kMargin, kMargin, kMargin + width, top}});
    for (int i = 0; i < count; ++i) {
        const int left = kMargin + i * (box->cellWidth + kGap);
        const DWORD group = i == 0 ? WS_GROUP : 0;
        AddControl(box->dialog, {L"BUTTON",
                                 Widen(offer.files[static_cast<size_t>(i)].whole).c_str(),
                                 WS_TABSTOP | BS_OWNERDRAW | BS_NOTIFY | group,
                                 kFirstOfferedFile + i,
                                 {left, top, left + box->cellWidth, bottom}});
    }
    const int button = bottom + kGap;
    const LONG right = kMargin + width;
    AddControl(box->dialog,
               {L"BUTTON",
                L"&Save...",
                WS_TABSTOP | WS_GROUP | BS_DEFPUSHBUTTON,
                IDOK,
                {right - 2 * kButtonWidth - 8, button, right - kButtonWidth - 8, button + kButtonHeight}});
    AddControl(box->dialog, {L"BUTTON",
                             L"Cancel",
                             WS_TABSTOP | BS_PUSHBUTTON,
                             IDCANCEL,
                             {right - kButtonWidth, button, right, button + kButtonHeight}});
    SizePlainDialog(box->dialog, {right + kMargin, button + kButtonHeight + kMargin});
}

void OnInit(OfferBox* box, HWND window) {
    TakePlainDialog(&box->dialog, window);
    MakeCells(box);
    box->start = GetTickCount64();
    box->frames.assign(box->offer->files.size(), 0);
    for (const OfferedFile& file : box->offer->files)
        box->length = std::max(box->length, LengthOf(*file.film));
    SetTimer(window, kPlayTimer, kTimerMilliseconds, nullptr);
    box->last = box->offer->first;
    SetFocus(CellOf(*box, box->last));
}

// All show the same moment; the frames may have other times.
void OnPlayTime(OfferBox* box) {
    if (box->length == 0) return;
    const uint64_t moment = (GetTickCount64() - box->start) % box->length;
    for (size_t i = 0; i < box->frames.size(); ++i) {
        const size_t frame = FrameAt(*box->offer->files[i].film, moment);
        if (frame == box->frames[i]) continue;
        box->frames[i] = frame;
        const HWND cell = CellOf(*box, i);
        RECT area;
        GetClientRect(cell, &area);
        area = PictureArea(*box, area);
        InvalidateRect(cell, &area, FALSE);
    }
}

void DrawPictureOf(const OfferBox& box, HDC target, size_t file, const RECT& area) {
    const Film& film = *box.offer->files[file].film;
    if (film.frames.empty()) return;
    const SIZE picture = {film.facts.width, film.facts.height};
    const RECT place = PlaceOf(View(), picture, area);
    const auto& pixels = *film.frames[std::min(box.frames[file], film.frames.size() - 1)].pixels;
    PictureGround ground = box.offer->ground;
    ground.square = Scale(box, 6);
    DrawPicture(target, place, area, pixels.data(), picture, ground);
}

void DrawTexts(const OfferBox& box, HDC target, size_t file, RECT area, int color) {
    const OfferedFile& shown = box.offer->files[file];
    SetBkMode(target, TRANSPARENT);
    SetTextColor(target, GetSysColor(color));
    const HGDIOBJ before = SelectObject(target, box.dialog.boldFont);
    DrawTextW(target, Widen(shown.name).c_str(), -1, &area, DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(target, box.dialog.font);
    for (size_t i = 0; i < shown.lines.size(); ++i) {
        area.top += Scale(box, kLine);
        const UINT format = i + 1 == shown.lines.size() ? DT_WORDBREAK | DT_EDITCONTROL : DT_SINGLELINE;
        DrawTextW(target, Widen(shown.lines[i]).c_str(), -1, &area, format | DT_NOPREFIX | DT_END_ELLIPSIS);
    }
    SelectObject(target, before);
}

void DrawCell(const OfferBox& box, HDC target, const RECT& area, size_t file, bool hasFocus) {
    FillRect(target, &area, GetSysColorBrush(COLOR_WINDOW));
    const RECT picture = PictureArea(box, area);
    DrawPictureOf(box, target, file, picture);
    RECT texts = {picture.left, picture.bottom + Scale(box, kPadding) / 2, picture.right,
                  area.bottom - Scale(box, 4)};
    DrawTexts(box, target, file, texts, COLOR_WINDOWTEXT);
    RECT frame = area;
    const int thickness = hasFocus ? Scale(box, 3) : 1;
    for (int i = 0; i < thickness; ++i) {
        FrameRect(target, &frame, GetSysColorBrush(hasFocus ? COLOR_HIGHLIGHT : COLOR_BTNSHADOW));
        InflateRect(&frame, -1, -1);
    }
}

// Off screen first: animations must not flicker.
void OnDrawCell(const OfferBox& box, const DRAWITEMSTRUCT& item) {
    const auto file = static_cast<size_t>(item.CtlID - kFirstOfferedFile);
    if (file >= box.offer->files.size()) return;
    const RECT& area = item.rcItem;
    const HDC memory = CreateCompatibleDC(item.hDC);
    const HBITMAP bitmap = CreateCompatibleBitmap(item.hDC, area.right, area.bottom);
    if (memory && bitmap) {
        const HGDIOBJ before = SelectObject(memory, bitmap);
        DrawCell(box, memory, area, file, (item.itemState & ODS_FOCUS) != 0);
        BitBlt(item.hDC, 0, 0, area.right, area.bottom, memory, 0, 0, SRCCOPY);
        SelectObject(memory, before);
    }
    if (bitmap) DeleteObject(bitmap);
    if (memory) DeleteDC(memory);
}

void OnTake(OfferBox* box, size_t file) {
    if (box->isTaking || file >= box->offer->files.size()) return;
    box->isTaking = true;
    const HWND window = box->dialog.window;
    const bool isDone = box->offer->take(window, file);
    box->isTaking = false;
    if (isDone)
        EndDialog(window, IDOK);
    else if (IsWindow(window))
        SetFocus(CellOf(*box, file));
}

// Owner-drawn buttons tell when they get the focus only with BS_NOTIFY.
void OnButton(OfferBox* box, int id, int notification) {
    const int files = static_cast<int>(box->offer->files.size());
    const bool isCell = id >= kFirstOfferedFile && id < kFirstOfferedFile + files;
    if (isCell && notification == BN_SETFOCUS) box->last = static_cast<size_t>(id - kFirstOfferedFile);
    if (isCell && notification == BN_CLICKED) OnTake(box, static_cast<size_t>(id - kFirstOfferedFile));
    if (id == IDOK) OnTake(box, box->last);
    if (id == IDCANCEL && !box->isTaking) EndDialog(box->dialog.window, IDCANCEL);
}

INT_PTR CALLBACK OfferProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, pointer);
        OnInit(reinterpret_cast<OfferBox*>(pointer), window);
        return FALSE;  // the focus stands already
    }
    auto* box = reinterpret_cast<OfferBox*>(GetWindowLongPtrW(window, DWLP_USER));
    if (!box) return FALSE;
    switch (message) {
        case WM_TIMER:
            OnPlayTime(box);
            return TRUE;
        case WM_DRAWITEM:
            OnDrawCell(*box, *reinterpret_cast<const DRAWITEMSTRUCT*>(pointer));
            return TRUE;
        case WM_COMMAND:
            OnButton(box, LOWORD(word), HIWORD(word));
            return TRUE;
    }
    return FALSE;
}

}  // namespace

void ShowOffer(HWND owner, const Offer& offer) {
    OfferBox box;
    box.offer = &offer;
    RunPlainDialog(owner, L"Save within a size", OfferProcedure, &box);
    FreePlainDialog(&box.dialog);
}

}  // namespace kfx::stage
