// SPDX-License-Identifier: MIT
#include "ScriptWriter.h"
