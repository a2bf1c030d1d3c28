# The three tanks of the station: lying cylinders, and the gauge tables measured on them.

function set_up_tanks() {
    tanks = 3
    # Diameter in centimetres and length in decimetres: some 30,000, 15,000 and 20,000 litres.
    diameter[1] = 254; length_dm[1] = 59.2
    diameter[2] = 190; length_dm[2] = 52.9
    diameter[3] = 229; length_dm[3] = 48.6
}

# Litres of a tank filled up to a depth in centimetres.
function volume(tank, depth,    radius, above, half) {
    radius = diameter[tank] / 20
    above = radius - depth / 10
    half = sqrt(radius * radius - above * above)
    return int(length_dm[tank] * (radius * radius * atan2(half, above) - above * half) + 0.5)
}

# Depth whose line of the gauge table is the nearest below a volume.
function depth_of(tank, litres,    depth) {
    for (depth = diameter[tank]; depth > 1 && volume(tank, depth) > litres; depth--)
        ;
    return depth
}

function write_gauge_tables(    tank, depth, litres) {
    for (tank = 1; tank <= tanks; tank++)
        for (depth = 1; depth <= diameter[tank]; depth++) {
            litres = amount(volume(tank, depth) * 100)
            sub(/,00$/, "", litres)
            insert("TANQUE_" tank, "cdI, cmA, ltsA", depth ", " depth ", " quoted(litres))
        }
}
