// SPDX-License-Identifier: MIT
// The impact results editor, the penetration and accuracy editors, the digit filter and Burst Shots.
#include "WepnEditor_Main.h"

void WepnEditor_Main::cboEffect_Click()
{
}

void WepnEditor_Main::lstWeaponResults_Click()
{
}

void WepnEditor_Main::cmdAdd_Click()
{
}

void WepnEditor_Main::cmdApply_Click()
{
}

void WepnEditor_Main::cmdRemove_Click()
{
}

void WepnEditor_Main::lstArmorFamilies_Click()
{
}

void WepnEditor_Main::lstAccuracy_Click()
{
}

void WepnEditor_Main::cmdPenApply_Click()
{
}

void WepnEditor_Main::cmdAccApply_Click()
{
}

void WepnEditor_Main::Value_Change(int index)
{
    Q_UNUSED(index);
}

void WepnEditor_Main::txtMinEffect_KeyPress(int &KeyAscii)
{
    Q_UNUSED(KeyAscii);
}

void WepnEditor_Main::txtMaxEffect_KeyPress(int &KeyAscii)
{
    Q_UNUSED(KeyAscii);
}

void WepnEditor_Main::txtPenetration_KeyPress(int &KeyAscii)
{
    Q_UNUSED(KeyAscii);
}
