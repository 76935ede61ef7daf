// SPDX-License-Identifier: MIT
// Resource and command ids of Stage, for the resource compiler and the program alike.
#pragma once

#define IDI_STAGE 1
#define IDM_STAGE 10
#define IDA_STAGE 11

#define IDC_OPEN 100
#define IDC_EFFECTS 101
#define IDC_SAVE 102
#define IDC_EXIT 103
#define IDC_PLAY 104
#define IDC_ABOUT 105
