-- Families for the command-line tool's tests.
armourFamily =
{
    { name = "Unarmoured", },
    { name = "LightArmour", },
    { name = "HeavyArmour", },
}
unitcapsFamily = {}

attackFamily =
{
    { name = "Fighter", },
    { name = "Frigate", },
    { name = "Capital", },
}
dockFamily = {}
