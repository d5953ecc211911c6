"""Writes docs/verification.md from runs of TreModal.

Two cases, each run in batch by the real program on files in a temporary
directory, with a settings file of its own and a stand-in casepost:

1. The uniform shear building of the example tool, against its closed form.
2. A two-storey space frame (frame.py), against an eigen-solution and sums
   worked out by numpy in double precision.
3. CalculiX as the solver (calculix.py): tremodal-ccx's models and solved
   cases against the figures ccx prints, and a static solution by numpy.

The figures of TreModal are read back from what it writes: the participation
report in the results case header (.L20, comment lines) and the modal
response files (.HS1 to .HS3).

Usage: make_page.py --build BUILD --out PAGE
"""

import argparse
import math
import os
import re
import struct
import subprocess
import sys
import tempfile

import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import calculix  # noqa: E402
import frame  # noqa: E402

G = 9.81  # the options' curve factor: the curve is in g
FLAT = 0.3  # g, the flat spectrum of both cases
SA = FLAT * G  # m/s2, the spectral acceleration of every mode
DIRECTION_NAMES = {1: "X", 2: "Y", 3: "Z"}


# ---------------------------------------------------------------------------
# Running TreModal


def run_tremodal(build, model_dir, command_line):
    """A batch run as the suite's batch tool makes it: no screen, a settings
    file naming model_dir as Files1, a casepost that ends at once."""
    config = os.path.join(model_dir, "config")
    os.makedirs(os.path.join(config, "VARNEK"), exist_ok=True)
    os.makedirs(os.path.join(model_dir, "bin"), exist_ok=True)
    casepost = os.path.join(model_dir, "bin", "casepost")
    with open(casepost, "w") as f:
        f.write("#!/bin/sh\nexit 0\n")
    os.chmod(casepost, 0o755)
    with open(os.path.join(config, "VARNEK", "VARNEK.conf"), "w") as f:
        f.write(f"[Setup]\nFiles1={model_dir}\nFiles2={model_dir}/bin\n")
    env = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY")}
    env["XDG_CONFIG_HOME"] = config
    done = subprocess.run([os.path.join(build, "TreModal"), command_line], cwd=model_dir, env=env,
                          capture_output=True, text=True, timeout=120)
    if done.returncode != 0 or done.stderr:
        raise SystemExit(f"TreModal {command_line} in {model_dir}: status {done.returncode}\n{done.stderr}")


# ---------------------------------------------------------------------------
# Reading what it wrote


def read_report(path):
    """The participation tables of the results case header, by direction:
    rows of (mode, omega, hertz, period, effective mass, cumulative, per
    cent, damping) as printed."""
    with open(path, "rb") as f:
        lines = [l[len(b"ACOM,"):].decode() for l in f.read().split(b"\r\n") if l.startswith(b"ACOM,")]
    tables = {}
    for i, line in enumerate(lines):
        for d, name in DIRECTION_NAMES.items():
            if line.startswith(f"Excitation {name} Direction "):
                rows = []
                for row in lines[i + 4:]:
                    if not row.strip():
                        break
                    fields = row.split()
                    rows.append((int(fields[0]), *map(float, fields[1:])))
                tables[d] = rows
    return tables


def read_response(path):
    """A modal response file: the frequency table (omega, damping) and, by
    mode, the (equation, displacement) pairs of every node and freedom."""
    with open(path, "rb") as f:
        data = f.read()
    nodes, dof, modes, damping, comb = struct.unpack_from("<hiifh", data, 0)
    table = [struct.unpack_from("<ff", data, 16 + 8 * m) for m in range(modes)]
    blocks = []
    at = 16 + 8 * modes
    for _ in range(modes):
        pairs = struct.unpack_from("<" + "if" * (6 * nodes), data, at)
        blocks.append([(pairs[2 * k], pairs[2 * k + 1]) for k in range(6 * nodes)])
        at += 48 * nodes
    return [t[0] for t in table], blocks


def inertia_shear(block, omega, masses, freedom):
    """The base shear of one mode from its displacements: the sum of the
    inertia forces omega^2 M u of the freedoms along the direction."""
    total = 0.0
    for k, (equation, value) in enumerate(block):
        if k % 6 + 1 == freedom and equation:
            total += masses[equation - 1] * omega * omega * value
    return total


# ---------------------------------------------------------------------------
# The page


def relative(computed, theory):
    if theory == 0:
        return abs(computed)
    return abs(computed - theory) / abs(theory)


def number(x):
    return f"{x:.7g}"


class Table:
    def __init__(self, title, columns, reference="theory"):
        self.title = title
        self.columns = columns
        self.reference = reference
        self.rows = []
        self.worst = 0.0

    def add(self, label, theory, computed, where):
        error = relative(computed, theory)
        self.worst = max(self.worst, error)
        self.rows.append(f"| {label} | {number(theory)} | {number(computed)} | {error:.1e} | {where} |")

    def text(self):
        head = f"| {self.columns} | {self.reference} | TreModal | relative error | read from |"
        return "\n".join([f"**{self.title}**", "", head, "|---|---|---|---|---|", *self.rows, ""])


def shear_building_case(build, work):
    storeys, mass, stiffness = 5, 1000.0, {1: 1.0e6, 3: 1.5e6}
    factors = {1: 1.0, 3: 0.7}  # the example's options: principal 1, lateral 0.7
    model_dir = os.path.join(work, "shear")
    subprocess.run([os.path.join(build, "make_example_model"), model_dir, "--name-file", "--spectrum", "flat",
                    "--flat-value", str(FLAT), "--comb", "SRSS"], check=True, capture_output=True)
    run_tremodal(build, model_dir, "1/20/")
    report = read_report(os.path.join(model_dir, "SHEAR.L20"))
    masses = [mass] * (2 * storeys)

    theta = lambda n: (2 * n - 1) * math.pi / (2 * storeys + 1)
    omega_of = lambda d, n: 2 * math.sqrt(stiffness[d] / mass) * math.sin(theta(n) / 2)
    gamma_of = lambda n: math.sqrt(mass / (2 * storeys + 1)) / math.tan(theta(n) / 2)
    phi_of = lambda n, j: 2 / math.sqrt(mass * (2 * storeys + 1)) * math.sin(j * theta(n))

    # The analysis numbers the modes of both families by ascending frequency.
    modes = sorted(((omega_of(d, n), d, n) for d in (1, 3) for n in range(1, storeys + 1)))
    tables = []
    for d in (1, 3):
        name = DIRECTION_NAMES[d]
        omegas, blocks = read_response(os.path.join(model_dir, f"SHEAR.HS{d}"))
        freq = Table(f"Sway in {name}: circular frequency, rad/s", "mode (family n)")
        part = Table(f"Excitation {name}: effective mass and its running sum, kg", "mode (family n)")
        disp = Table(f"Excitation {name}: top floor displacement in each mode, m", "mode (family n)")
        shear = Table(f"Excitation {name}: base shear, N", "mode (family n)")
        cumulative = 0.0
        squares_theory = squares_run = 0.0
        for index, (omega, family, n) in enumerate(modes):
            if family != d:
                continue
            row = report[d][index]
            label = f"{index + 1} ({n})"
            freq.add(label, omega, omegas[index], ".HS frequency table")
            gamma = gamma_of(n)
            cumulative += gamma * gamma
            part.add(label + " effective", gamma * gamma, row[4], "report")
            part.add(label + " running sum", cumulative, row[5], "report")
            sd = SA / omega**2
            top = 2 * storeys - (1 if d == 1 else 0)  # the top floor's x or z equation
            u = sd * gamma * factors[d] * phi_of(n, storeys)
            value = next(v for e, v in blocks[index] if e == top)
            disp.add(label, u, value, ".HS mode block")
            v_theory = gamma * gamma * SA * factors[d]
            v_run = inertia_shear(blocks[index], omegas[index], masses, d)
            shear.add(label, v_theory, v_run, ".HS, inertia forces")
            squares_theory += v_theory**2
            squares_run += v_run**2
        part.add("all 10: per cent of the mass", 100.0, report[d][-1][6], "report")
        shear.add("SRSS", math.sqrt(squares_theory), math.sqrt(squares_run), ".HS, inertia forces")
        tables += [freq, part, disp, shear]
    return tables


def frame_case(build, work):
    model = frame.Frame()
    modes = 12
    omega, phi = model.solve(modes)
    model_dir = os.path.join(work, "frame")
    os.makedirs(model_dir)
    path = os.path.join(model_dir, "FRAME3D")
    model.write_size_file(path + ".XSZ", "FRAME3D")
    model.write_coordinates(path + ".XYZ")
    model.write_frequency_case(path + ".H1", omega, phi)
    frame.write_text(path + ".URS1", ["0,0.3", "10,0.3", "-1"])
    frame.write_text(path + ".USM1", frame.options_lines("1", "20", "MODEL.URS1", [1, 2, 3]))
    frame.write_text(os.path.join(model_dir, "MODEL.NAM"), [f'"{path}","FRAME3D"'])
    run_tremodal(build, model_dir, "1/20/")
    report = read_report(path + ".L20")
    total = model.total_mass()
    # The roof corner with the plant on it.
    roof = frame.node_at(model.nodes, frame.BAYS_X[-1], frame.LEVELS * frame.STOREY_HEIGHT, frame.BAYS_Z[-1])

    tables = []
    omegas, _ = read_response(path + ".HS1")
    freq = Table("Circular frequency, rad/s", "mode")
    for m in range(modes):
        freq.add(str(m + 1), omega[m], omegas[m], ".HS frequency table")
    tables.append(freq)
    for d in (1, 2, 3):
        name = DIRECTION_NAMES[d]
        _, blocks = read_response(path + f".HS{d}")
        gamma = phi.T @ (model.M * model.influence(d))
        part = Table(f"Excitation {name}: effective mass and its running sum, kg", "mode")
        disp = Table(f"Excitation {name}: displacement of the roof corner node {roof} along {name.lower()}, m",
                     "mode")
        shear = Table(f"Excitation {name}: base shear, N", "mode")
        cumulative = 0.0
        squares_theory = squares_run = 0.0
        equation = model.equation[(roof, d)]
        for m in range(modes):
            row = report[d][m]
            effective = gamma[m] ** 2
            cumulative += effective
            # Modes that this direction hardly moves are left out of the
            # tables: their figures are round-off of the solver on either side.
            if effective < 1e-3 * total:
                continue
            part.add(f"{m + 1} effective", effective, row[4], "report")
            part.add(f"{m + 1} running sum", cumulative, row[5], "report")
            u = SA / omega[m] ** 2 * gamma[m] * phi[equation - 1, m]
            value = next(v for e, v in blocks[m] if e == equation)
            disp.add(str(m + 1), u, value, ".HS mode block")
            v_theory = effective * SA
            v_run = inertia_shear(blocks[m], omegas[m], model.M, d)
            shear.add(str(m + 1), v_theory, v_run, ".HS, inertia forces")
            squares_theory += v_theory**2
            squares_run += v_run**2
        part.add(f"all {modes}: per cent of the mass", 100.0 * cumulative / total, report[d][-1][6], "report")
        shear.add("SRSS", math.sqrt(squares_theory), math.sqrt(squares_run), ".HS, inertia forces")
        tables += [part, disp, shear]
    return model, omega, tables


PAGE_HEAD = """# Verification: the numbers against theory

This page is written by `scripts/verify.sh` from runs of TreModal; do not edit it by hand. Each case
is a batch run, `TreModal 1/20/`, of the real program on model files in a temporary directory. Its
figures are read back from what the run wrote: the participation report that the results case header
`.L20` carries as comment lines, and the modal response files `.HS1` to `.HS3`. Both cases use a flat
acceleration spectrum of {flat} g with the curve factor 9.81, so every mode has the spectral
acceleration S_a = {sa} m/s² and the spectral displacement S_d = S_a / ω², and SRSS combination.

How close a figure can come depends on where it is read. The report prints the effective masses with
four significant digits ("0.000E+00"), so their relative error is up to 5 × 10⁻⁴ from the printing
alone. The response files hold singles: seven digits, and a sum over a few modes loses a unit or two
in the last place, about 10⁻⁷. The base shear is not among the files of a batch run: here it is formed
from the modal displacements of the response file as the sum of the inertia forces, V_m = ω_m² Σ M u,
over the freedoms along the direction, and combined by SRSS. That sum equals Γ_m² S_a f when the
displacements are right. The frequencies come from the solver's side in both cases (TreModal takes ω
as the square root of the eigenvalue in the frequency case file): their rows show that they come
through the file and into the response file unchanged, while the participation, the displacements and
the shears are TreModal's own work.

Theory, for mass-normalised modes φ (φᵀ M φ = 1) and a unit ground motion r along a direction of
factor f:

- participation factor Γ = φᵀ M r; effective mass Γ², whose sum over all modes is the mass moved, rᵀ M r;
- modal displacement u = S_d Γ f φ;
- modal base shear V = Γ² S_a f, and the SRSS base shear √(Σ V²).

"""

SHEAR_HEAD = """## 1. The uniform shear building

`make_example_model` writes a building of N = 5 storeys of mass m = 1000 kg, storey stiffness
k = 10⁶ N/m for sway in X and 1.5 × 10⁶ N/m in Z, on a fixed base; the two families of modes do not
couple. For the floors j = 1 … N and θ_n = (2n − 1)π / (2N + 1):

- ω_n = 2 √(k/m) sin(θ_n / 2)
- φ_n(j) = 2 / √(m(2N + 1)) · sin(j θ_n), mass-normalised
- Γ_n = √(m / (2N + 1)) · cot(θ_n / 2); the Γ_n² of a family add up to N m = 5000 kg

Directions X (factor 1) and Z (factor 0.7, the lateral factor of the example's options) are on. The
analysis numbers the ten modes of both families together by frequency; the tables give that number
and, in brackets, the mode's number n within its family. A family's modes take no part in the other
direction.

"""

FRAME_HEAD = """## 2. A space frame with an independent eigen-solution

`scripts/verification/frame.py` assembles a two-storey reinforced concrete frame, two bays of 6 m
along X and one of 5 m along Z, storeys of 3.5 m, Y upwards: {elements} beam elements of 12
freedoms (columns 0.4 × 0.4 m, one corner column 0.55 × 0.55 m, beams 0.3 × 0.5 m, E = 30 GPa,
G = 12.5 GPa), fixed bases, {dof} equations. The masses are lumped: 9000 kg at each first floor node,
6000 kg at each roof node and 4000 kg more at one roof corner, a rotary inertia of 500 kg m² on every
rotation; {total:.0f} kg in all. The large column and the uneven roof mass couple sway in X, sway in Z
and torsion. numpy (`numpy.linalg.eigh` on M^-½ K M^-½) gives the lowest {modes} modes, which the
script writes as frequency case 1; the options put directions X, Y (vertical) and Z on with factor 1.
The theory column is numpy's, in double precision, from the same K and M; TreModal sees the shapes
as the singles of the frequency case file.

Modes that a direction moves by less than 0.1 % of the mass are left out of its tables (their figures
are round-off on both sides), but count in the running sums and the SRSS. The vertical direction
reaches little of its mass within {modes} modes, as a building's vertical modes lie high: the per cent
row shows what the modes kept reach.

"""


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", required=True)
    parser.add_argument("--out", required=True)
    args = parser.parse_args()
    build = os.path.abspath(args.build)
    with tempfile.TemporaryDirectory(prefix="tremodal-verify-") as work:
        shear = shear_building_case(build, work)
        model, omega, frame_tables = frame_case(build, work)
        ccx_tables, notes = calculix.calculix_case(build, work, Table, run_tremodal, frame.options_lines)
    version = subprocess.run(["ccx", "-v"], capture_output=True, text=True).stdout
    version = re.search(r"Version ([0-9.]+)", version).group(1) if re.search(r"Version ([0-9.]+)", version) else ""
    worst = max(t.worst for t in shear + frame_tables)
    parts = [PAGE_HEAD.format(flat=FLAT, sa=number(SA)), SHEAR_HEAD]
    parts += [t.text() for t in shear]
    parts.append(FRAME_HEAD.format(elements=len(model.elements), dof=model.dof, total=model.total_mass(),
                                   modes=len(omega)))
    parts += [t.text() for t in frame_tables]
    parts.append(f"The largest relative error of sections 1 and 2 is {worst:.1e}.\n")
    parts.append(calculix.HEAD.format(version=version, column_mass=notes["column mass"],
                                      announced=notes["announced"]))
    parts += [t.text() for t in ccx_tables]
    parts.append(f"The largest relative difference of section 3 is {max(t.worst for t in ccx_tables):.1e}.\n")
    with open(args.out, "w") as f:
        f.write("\n".join(parts))
    print(f"{args.out}: largest relative error {worst:.1e}")


if __name__ == "__main__":
    main()
