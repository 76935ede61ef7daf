// SPDX-License-Identifier: MIT
// Names of every dialog, control, string and data resource, for the resource compiler and the C++ compiler
// alike. The effects' panels have theirs in panel_controls.h.
#pragma once

#include "resources/panel_controls.h"

// The plug-in window.
#define IDD_PLUGIN_WINDOW 1000
#define IDC_BUILD 1
#define IDC_CANCEL 2
#define IDC_HELP_BUTTON 9
#define IDC_TRUE_COLOR 10
#define IDC_SOURCE_SIZE 12
#define IDC_PALETTE 13
#define IDC_CUSTOM_PALETTE 14
#define IDC_DITHER 15
#define IDC_LOGO 17
#define IDC_ABOUT 18
#define IDC_SUPERCOMPRESS 19
#define IDC_ADD_COMMENT 20
#define IDC_TEST 24
#define IDC_PREVIEW 25
#define IDC_EFFECT_CAPTION 33
#define IDC_PALETTE_CAPTION 34
#define IDC_BUILD_LOCAL_BACKGROUND 35  // read by the build; the window has no such control
#define IDC_OPEN_SAVE 36
#define IDC_SOURCE_PATH 41
#define IDC_SOURCE_CAPTION 42
#define IDC_EFFECT 50
#define IDC_SELECT 51
#define IDC_LOCAL_BACKGROUND 53
#define IDC_BACKGROUND_COLOR 54

// Commands without a control of their own.
#define IDM_DOCUMENT_OPEN 37
#define IDM_DOCUMENT_SAVE 38
#define IDM_DOCUMENT_SAVE_AS 39
#define IDM_BUILD_PLAIN 40
#define IDM_SLIDER_DEFAULT 43
#define IDM_REOPEN_SOURCE 52

// Panel controls and the companions of panel controls (id + 10000) lie in these ranges.
#define FIRST_PANEL_CONTROL 100
#define LAST_PANEL_CONTROL 1198
#define COMPANION_OFFSET 10000
// From this id on, a changed control changes the preview.
#define FIRST_PREVIEWED_CONTROL 50

// The About box.
#define IDD_ABOUT 8900
#define IDC_ABOUT_TITLE 101
#define IDC_ABOUT_TEXT 102
#define IDC_ABOUT_LOGO 106
#define IDC_ABOUT_CLOSE 1
#define IDC_ABOUT_HELP 9
#define IDC_ABOUT_WEB_PAGE 205

// The message boxes' templates have names: "MessageBox", "YESNOBOX", "YESNOCANCELBOX".
#define IDC_MESSAGE_TEXT 101
#define IDC_MESSAGE_OK 1
#define IDC_MESSAGE_CANCEL 2
#define IDC_MESSAGE_YES 6
#define IDC_MESSAGE_NO 7

// Texts.
#define IDS_INTERNAL_ERROR 1
#define IDS_EFFECT_NOT_INITIALIZED 2
#define IDS_SOURCE_NOT_OPENED 3
#define IDS_NEW_TASK_REFUSED 4
#define IDS_IMAGE_REFUSED 5
#define IDS_MEMORY_ERROR 6
#define IDS_HELP_NOT_SHOWN 7
#define IDS_BROWSER_NOT_OPENED 8
#define IDS_HOST_TOO_OLD 9
#define IDS_NO_SOURCE_PROMPT 10
#define IDS_ABOUT_TEXT 11
#define IDS_GROUP_SOURCE 20
#define IDS_GROUP_OUTPUT 21
#define IDS_GROUP_EFFECT 22
#define IDS_MESSAGE_TITLE 23
#define IDS_EFFECT_SENTENCES 1700  // by the number of the panel, from the first on

// Data. The palettes' resources have names: "PALETTE216", "PALETTE256G".
#define IDR_LOGO_FRAMES 9001

// The version that the version resource and the About box show.
#define KFX_VERSION_MAJOR 16
#define KFX_VERSION_MINOR 0
#define KFX_VERSION_LETTER "a"
#define KFX_REVISION 1

// The maker's page, in the About box and in the comment of every built animation.
#define KFX_WEB_PAGE "https://kestrel-fx.example/"
