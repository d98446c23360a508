attackfamily = {
{ name = "Fighter", },
{ name = "Corvette", },
{ name = "Alpha", },
{ name = "Beta", },
}
dockfamily = {}
armourfamily = {
{ name = "PlanetKillerArmour", },
{ name = "ResArmour", },
{ name = "Alpha", },
{ name = "Beta", },
}
unitcapsfamily = {}
