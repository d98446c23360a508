// SPDX-License-Identifier: MIT
#include "GamePaths.h"
