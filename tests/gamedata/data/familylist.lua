-- Families of Korvath's ships, as the game reads them.
-- Each entry gives the family's name; the weapon scripts refer to these names.

attackFamily =
{
    { name = "Fighter", },
    { name = "Corvette", },
    { Name="Frigate",displayName="Frigate class" },
    {
        displayname = "Capital ships", name = "BigCapitalShip",
    },
    -- the next family is an armour family too
    { name = "Utility", },
    { priority = 3, },
    { name = "", },
    { name = "Mine"
    },
}

dockFamily =
{
    { name = "Fighter", },
    { name = "NotAnAttackFamily", },
}

ARMOURFAMILY = {
    { name = "Unarmoured", }, { name = "ignored second name", },
    { name = "LightArmour", },
    { DisplayName = "Heavy armour", name = "HeavyArmour", },
    { name = "Utility", },
    { name = "ResArmour" }, -- no trailing comma
}

UnitCapsFamily =
{
    { name = "Attack", },
}
