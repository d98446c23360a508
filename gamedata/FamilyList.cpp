// SPDX-License-Identifier: MIT
#include "FamilyList.h"
