"""A frequency case of many modes over a few nodes, for timing the double sums.

    ceiling_case.py FROM TO MODES

Reads the frequency case FROM, as make_example_model writes it for a small
model with a lumped mass, and writes TO: the same case nodes, equation map,
direction masses and mass block, with MODES modes in place of its own. The
file layout lets a case hold more modes than equations, so the double sums of
CQC and DSM can be timed at the formats' ceiling of 32,767 modes on a file of
a few megabytes; a shear building with as many modes would take 26 GB.

The frequencies run geometrically from 0.2 Hz to 200 Hz, ascending and all
distinct. Every freedom with an equation gets a small value of a fixed
pseudo-random sequence, scaled by its equation's mass so that the effective
masses of all modes together come to about the moved mass of each direction:
participation is nonzero in every translation the model moves in. The modes
are not orthogonal to each other; only the work a run does with them counts.

Only the standard library: the benchmark's smoke run needs no numpy.
"""

import math
import struct
import sys

HEADER = struct.Struct("<4i6f")
PAIR = struct.Struct("<if")
LOWEST_HZ = 0.2
HIGHEST_HZ = 200.0
# The suite counts modes in 16 bits.
MOST_MODES = 32767


def read_case(path):
    """The header's node count and direction masses, the equation map of the
    first mode and the mass block's bytes with the equation masses."""
    data = open(path, "rb").read()
    nodes, equations, modes, _, *masses = HEADER.unpack_from(data, 0)
    at = HEADER.size + 8 * modes
    pairs = nodes * 6
    equation_map = [PAIR.unpack_from(data, at + 8 * k)[0] for k in range(pairs)]
    at += 8 * pairs * modes
    mass_block = data[at:]
    form, count = struct.unpack_from("<2i", mass_block, 0)
    if form not in (1, 2):
        sys.exit(f"ceiling_case.py: {path} has no lumped mass (form {form})")
    equation_mass = struct.unpack_from(f"<{count}d", mass_block, 8)
    return nodes, equations, masses, equation_map, mass_block, equation_mass


def unit_values():
    """A fixed sequence spread evenly over -1 .. 1 (a 32-bit linear
    congruential generator), the same on every machine."""
    state = 12345
    while True:
        state = (state * 1664525 + 1013904223) % 2**32
        yield state / 2**31 - 1


def write_case(path, nodes, equations, masses, equation_map, mass_block, equation_mass, modes):
    out = bytearray(HEADER.pack(nodes, equations, modes, 0, *masses))
    for k in range(modes):
        step = k / (modes - 1) if modes > 1 else 0
        hertz = LOWEST_HZ * (HIGHEST_HZ / LOWEST_HZ) ** step
        out += struct.pack("<d", (2 * math.pi * hertz) ** 2)
    # A uniform value has a mean square of 1/3: with this scale a mode's
    # effective mass in a direction averages the moved mass over the modes.
    scale = [0.0] + [math.sqrt(3 / (m * modes)) if m > 0 else 0.0 for m in equation_mass]
    shape = struct.Struct("<" + "if" * len(equation_map))
    values = unit_values()
    for _ in range(modes):
        fields = []
        for equation in equation_map:
            fields += [equation, next(values) * scale[equation] if equation > 0 else 0.0]
        out += shape.pack(*fields)
    out += mass_block
    with open(path, "wb") as f:
        f.write(out)


def main():
    if len(sys.argv) != 4:
        sys.exit("usage: ceiling_case.py FROM TO MODES")
    source, target, modes = sys.argv[1], sys.argv[2], int(sys.argv[3])
    if not 1 <= modes <= MOST_MODES:
        sys.exit(f"ceiling_case.py: MODES must be 1 to {MOST_MODES}")
    write_case(target, *read_case(source), modes)


if __name__ == "__main__":
    main()
