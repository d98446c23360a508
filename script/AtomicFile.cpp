// SPDX-License-Identifier: MIT
#include "AtomicFile.h"
