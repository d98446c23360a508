// SPDX-License-Identifier: MIT
#include "ScriptReader.h"
