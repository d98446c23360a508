armourfamily
 name = "Fighter"
 name = "Frigate"
unitcapsfamily
attackfamily
 name = "Fighter"
 name = "Frigate"
 name = "Mine"
dockfamily
