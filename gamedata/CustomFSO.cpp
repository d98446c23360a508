// SPDX-License-Identifier: MIT
#include "CustomFSO.h"
