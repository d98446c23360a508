-- Korvath family list (sample for Vantorel).
-- Every ship belongs to one family of each kind below.

attackfamily =
{
	{ name = "Fighter", },
	{ name = "Corvette", },
	{ name = "Frigate", },
	{ name = "Capital", displayname = "$4510", },
	{ name = "Utility", },
}

dockfamily =
{
	{ name = "Fighter", },
	{ name = "Frigate", },
}

armourfamily =
{
	{ name = "Unarmoured", },
	{ name = "LightArmour", },
	{ name = "MediumArmour", },
	{ name = "HeavyArmour", },
	{ name = "ShieldedHull", },
}

unitcapsfamily =
{
	{ name = "Fighter", maxunits = 40, },
	{ name = "Capital", maxunits = 6, },
}
