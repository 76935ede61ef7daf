// SPDX-License-Identifier: MIT
#include "stage/file_choice.h"

#include <algorithm>
#include <vector>

#include <commdlg.h>

#include "commands/command_line.h"
#include "commands/text_windows.h"
#include "stage/stage.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr DWORD kLongestPath = 4096;
constexpr wchar_t kOpenFilter[] =
    L"Animations and pictures\0*.gif;*.webp;*.png;*.apng;*.jpg;*.jpeg;*.bmp;*.y4m\0All files\0*.*\0";

// What a dialog for saving offers.
struct SaveOffer {
    const wchar_t* filter;
    const wchar_t* usual;              // the ending that a name without one gets
    std::vector<std::string> endings;  // of the filter's rows, in their order; then others that are taken
    size_t rows;
};

const SaveOffer& OfferOf(SaveKind kind) {
    static const SaveOffer animation = {
        L"GIF animation\0*.gif\0WebP animation, all colours\0*.webp\0Animated PNG, all colours\0*.png\0",
        L"gif",
        {".gif", ".webp", ".png", ".apng"},
        3};
    static const SaveOffer frames = {L"PNG frames, numbered\0*.png\0", L"png", {".png"}, 1};
    static const SaveOffer gif = {L"GIF animation\0*.gif\0", L"gif", {".gif"}, 1};
    return kind == SaveKind::Animation ? animation : kind == SaveKind::Gif ? gif : frames;
}

void PutPath(const std::string& path, wchar_t* buffer) {
    const std::wstring wide = Widen(path);
    if (wide.size() < kLongestPath) lstrcpyW(buffer, wide.c_str());
}

bool MayReplace(HWND owner, const std::string& path) {
    const std::wstring question = Widen(FileNameOf(path) + " exists already. Replace it?");
    return MessageBoxW(owner, question.c_str(), kStageTitle, MB_YESNO | MB_ICONQUESTION) == IDYES;
}

}  // namespace

bool ChooseAnimationToOpen(HWND owner, const std::string& folder, std::string* path) {
    wchar_t buffer[kLongestPath] = L"";
    const std::wstring start = Widen(folder);
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = kOpenFilter;
    dialog.lpstrFile = buffer;
    dialog.nMaxFile = kLongestPath;
    dialog.lpstrInitialDir = start.empty() ? nullptr : start.c_str();
    dialog.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!GetOpenFileNameW(&dialog)) return false;
    *path = Narrow(buffer);
    return true;
}

bool AnyExists(const std::vector<std::string>& files) {
    return std::any_of(files.begin(), files.end(), [](const std::string& file) {
        return GetFileAttributesW(Widen(file).c_str()) != INVALID_FILE_ATTRIBUTES;
    });
}

bool ChooseFileToSave(HWND owner, SaveKind kind, std::string* path) {
    const SaveOffer& offer = OfferOf(kind);
    wchar_t buffer[kLongestPath] = L"";
    PutPath(*path, buffer);
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = offer.filter;
    dialog.lpstrFile = buffer;
    dialog.nMaxFile = kLongestPath;
    dialog.lpstrDefExt = offer.usual;
    dialog.Flags =
        OFN_EXPLORER | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    for (;;) {
        if (!GetSaveFileNameW(&dialog)) return false;
        *path = Narrow(buffer);
        const std::string ending = EndingOf(*path);
        if (std::find(offer.endings.begin(), offer.endings.end(), ending) != offer.endings.end()) return true;
        const size_t row = dialog.nFilterIndex >= 1 ? dialog.nFilterIndex - 1 : 0;
        *path += offer.endings[row < offer.rows ? row : 0];
        // The dialog has asked about the name without this ending.
        if (!AnyExists({*path}) || MayReplace(owner, *path)) return true;
    }
}

}  // namespace kfx::stage
