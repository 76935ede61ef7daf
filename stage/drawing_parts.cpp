// SPDX-License-Identifier: MIT
#include "stage/drawing_parts.h"

#include "commands/text_windows.h"

namespace kfx::stage {

void Fill(HDC target, const RECT& area, int systemColor) {
    FillRect(target, &area, GetSysColorBrush(systemColor));
}

void DrawLine(HDC target, RECT area, const std::string& text, HFONT font, int systemColor, UINT format) {
    const std::wstring wide = commands::Widen(text);
    const HGDIOBJ before = SelectObject(target, font);
    SetBkMode(target, TRANSPARENT);
    SetTextColor(target, GetSysColor(systemColor));
    DrawTextW(target, wide.c_str(), static_cast<int>(wide.size()), &area, format | DT_NOPREFIX);
    SelectObject(target, before);
}

}  // namespace kfx::stage
