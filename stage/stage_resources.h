// SPDX-License-Identifier: MIT
// Resource ids of Stage, for the resource compiler and the program alike.
#pragma once
