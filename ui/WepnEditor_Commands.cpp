// SPDX-License-Identifier: MIT
// File > Open and File > Save As.
#include "WepnEditor_Main.h"

void WepnEditor_Main::Open_Click()
{
}

void WepnEditor_Main::Save_Click()
{
}

bool WepnEditor_Main::LoadWeaponEffects()
{
    return true;
}

bool WepnEditor_Main::LoadFamilyList()
{
    return true;
}
