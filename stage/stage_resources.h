// SPDX-License-Identifier: MIT
// Resource ids of Stage, for the resource compiler and the program alike.
#pragma once

#define IDI_STAGE 1
