"""Section 3 of the verification page: tremodal-ccx and TreModal against
CalculiX's own printed figures.

- The example building (examples/calculix/building.inp), point masses and
  near-massless members: TreModal's frequencies, participation factors and
  effective masses (TreModal --report --csv) against the tables of ccx's .dat
  file.
- A solid column with its consistent mass: the effective masses, against the
  difference that tremodal-ccx modes announced.
- A braced truss tower with Z vertical: the missing mass cases that
  tremodal-ccx solve wrote against ccx's .frd for the same loads, and the
  second pass's pseudo-mode against a static solution by numpy from the
  bars' axial stiffness.
"""

import math
import os
import re
import shutil
import struct
import subprocess

import numpy as np

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
CURVE = ["0.03,0.2", "0.1,0.5", "0.5,0.5", "1,0.25", "10,0.025", "-1"]


def write_lines(path, lines, end="\r\n"):
    with open(path, "w", newline="") as f:
        f.write("".join(line + end for line in lines))


def run(command, cwd, env=None):
    done = subprocess.run(command, cwd=cwd, env=env, capture_output=True, text=True, timeout=300)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(command)} in {cwd}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def ccx(deck, steps, folder, job):
    """ccx itself on the deck with the steps; the .dat text and the .frd path."""
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, job + ".inp"), "w") as f:
        f.write(deck + steps)
    run(["ccx", job], folder)
    with open(os.path.join(folder, job + ".dat")) as f:
        return f.read(), os.path.join(folder, job + ".frd")


def dat_tables(dat):
    """Eigenvalue rows (mode, eigenvalue, rad/time, cycles/time), participation
    factors and effective masses (X, Y, Z, rotations) by mode, and the total
    mass per direction, as ccx prints them."""
    tables = {"eig": [], "part": [], "eff": [], "total": None}
    table = None
    heads = {"E I G E N V A L U E   O U T P U T": "eig", "P A R T I C I P A T I O N": "part",
             "E F F E C T I V E   M O D A L": "eff", "T O T A L   E F F E C T I V E": "total"}
    for line in dat.splitlines():
        for head, name in heads.items():
            if head in line:
                table = name
        words = line.split()
        try:
            numbers = [float(w) for w in words]
        except ValueError:
            continue
        if table == "eig" and len(numbers) == 5:
            tables["eig"].append(numbers[1:4])
        elif table in ("part", "eff") and len(numbers) == 7:
            tables[table].append(numbers[1:])
        elif table == "total" and len(numbers) == 6:
            tables["total"] = numbers
    return tables


def frd_displacements(path):
    """The DISP block of a static step: node -> (x, y, z)."""
    values, inside = {}, False
    with open(path) as f:
        for line in f:
            if line.startswith(" -4"):
                inside = line.split()[1] == "DISP"
            elif inside and line.startswith(" -1"):
                values[int(line[3:13])] = [float(line[13 + 12 * k:25 + 12 * k]) for k in range(3)]
            elif line.startswith(" -3"):
                inside = False
    return values


def csv_rows(path):
    with open(path) as f:
        return [[float(x) if x else 0.0 for x in line.strip().split(",")] for line in f.readlines()[1:]]


class Model:
    """A model folder for tremodal-ccx and TreModal."""

    def __init__(self, build, work, name, deck, run_tremodal, options_lines):
        self.build, self.dir, self.deck = build, os.path.join(work, name), deck
        self.run_tremodal, self.options_lines = run_tremodal, options_lines
        os.makedirs(os.path.join(self.dir, "tmp"))
        self.path = os.path.join(self.dir, "M")
        with open(os.path.join(self.dir, "deck.inp"), "w") as f:
            f.write(deck)
        write_lines(os.path.join(self.dir, "MODEL.NAM"), [f'"{self.path}","M"'])

    def tool(self, command, *options):
        """tremodal-ccx COMMAND deck.inp M OPTIONS; its standard output."""
        env = dict(os.environ, TMPDIR=os.path.join(self.dir, "tmp"))
        return run([os.path.join(self.build, "tremodal-ccx"), command, "deck.inp", self.path, *options], self.dir,
                   env)

    def options(self, missing_mass):
        lines = self.options_lines("1", "20", "MODEL.URS1", [1, 2, 3])
        if missing_mass:
            lines = [re.sub(r", 0 ,0$", ", 1 ,10", l) for l in lines]
        lines = [l.replace("higest mode)          , 1 ", "higest mode)          , 0 ") for l in lines]
        write_lines(self.path + ".USM1", lines)
        write_lines(self.path + ".URS1", CURVE)

    def report(self):
        """TreModal --report 1 --csv: (mode rows, participation rows)."""
        csv = os.path.join(self.dir, "csv")
        os.makedirs(csv, exist_ok=True)
        env = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY")}
        env["XDG_CONFIG_HOME"] = os.path.join(self.dir, "noconfig")
        run([os.path.join(self.build, "TreModal"), "--report", "1", "--model", self.path, "--csv", csv],
            self.dir, env)
        return csv_rows(os.path.join(csv, "modes.csv")), csv_rows(os.path.join(csv, "participation.csv"))


def deck(name):
    """A deck of tests/ccx/decks/, which the tests of tremodal-ccx run as well."""
    with open(os.path.join(ROOT, "tests", "ccx", "decks", name)) as f:
        return f.read()


class Tower:
    """The braced truss tower of tests/ccx/decks/tower.inp, Z vertical: its
    nodes and bars, read from the deck; bars of E A = 2.1e11 x 1e-3."""

    EA = 2.1e11 * 1e-3

    def __init__(self):
        self.text = deck("tower.inp")
        self.nodes, self.bars, block = {}, [], None
        for line in self.text.splitlines():
            if line.startswith("*"):
                block = line.split(",")[0].strip().upper() + ("T3D2" if "T3D2" in line else "")
                continue
            fields = [f.strip() for f in line.split(",")]
            if block == "*NODE":
                self.nodes[int(fields[0])] = tuple(float(v) for v in fields[1:4])
            elif block == "*ELEMENTT3D2":
                self.bars.append((int(fields[1]), int(fields[2])))

    def solve(self, loads):
        """K u = F over the free nodes 5..12; node -> deck (X, Y, Z)."""
        row = lambda n: 3 * (n - 5)
        K = np.zeros((24, 24))
        for i, j in self.bars:
            d = np.subtract(self.nodes[j], self.nodes[i])
            length = np.linalg.norm(d)
            k = self.EA / length * np.outer(d, d) / length**2
            for p in (i, j):
                for q in (i, j):
                    if p >= 5 and q >= 5:
                        K[row(p):row(p) + 3, row(q):row(q) + 3] += k if p == q else -k
        F = np.zeros(24)
        for n, f in loads.items():
            F[row(n):row(n) + 3] += f
        u = np.linalg.solve(K, F)
        return {n: u[row(n):row(n) + 3] for n in range(5, 13)}


def deck_loads(path):
    """A load case file's node loads in deck axes, for Z vertical: suite
    (x, y, z) = deck (X, Z, -Y)."""
    loads = {}
    with open(path) as f:
        for line in f:
            if line.startswith("NF,"):
                fields = (line.strip() + ",,,").split(",")
                x, y, z = (float(v) if v else 0.0 for v in fields[2:5])
                loads[int(fields[1])] = np.array([x, -z, y])
    return loads


def calculix_case(build, work, Table, run_tremodal, options_lines):
    if shutil.which("ccx") is None:
        raise SystemExit("ccx is not installed: scripts/install-deps.sh installs it")
    tables, notes = [], {}

    # The example building: lumped, to ccx's printed digits.
    with open(os.path.join(ROOT, "examples", "calculix", "building.inp")) as f:
        building = Model(build, work, "building", f.read(), run_tremodal, options_lines)
    building.tool("modes", "--modes", "12")
    building.options(False)
    modes, participation = building.report()
    printed = dat_tables(ccx(building.deck, "*STEP\n*FREQUENCY\n12\n*END STEP\n",
                             os.path.join(building.dir, "ref"), "ref")[0])
    freq = Table("Building: circular frequency, rad/s", "mode", "CalculiX")
    for m, row in enumerate(modes):
        freq.add(str(m + 1), printed["eig"][m][1], row[1], "--csv modes.csv")
    tables.append(freq)
    for d, name in ((1, "X"), (2, "Y"), (3, "Z")):
        total = printed["total"][d - 1]
        table = Table(f"Building, excitation {name}: participation factor and effective mass, kg", "mode",
                      "CalculiX")
        for row in participation:
            m = int(row[1]) - 1
            if int(row[0]) != d or printed["eff"][m][d - 1] < 1e-3 * total:
                continue
            table.add(f"{m + 1} factor", printed["part"][m][d - 1], row[2], "--csv participation.csv")
            table.add(f"{m + 1} effective", printed["eff"][m][d - 1], row[3], "--csv participation.csv")
        tables.append(table)

    # The solid column: consistent mass, within what modes announced.
    column = Model(build, work, "column", deck("solid-column.inp"), run_tremodal, options_lines)
    said = column.tool("modes", "--modes", "6")
    notes["announced"] = re.search(r"by at most ([-+.0-9E]+) %", said).group(1)
    column.options(False)
    _, participation = column.report()
    printed = dat_tables(ccx(column.deck, "*STEP\n*FREQUENCY\n6\n*END STEP\n",
                             os.path.join(column.dir, "ref"), "ref")[0])
    notes["column mass"] = printed["total"][0]
    table = Table("Solid column: effective mass, kg", "direction, mode", "CalculiX")
    for row in participation:
        d, m = int(row[0]), int(row[1]) - 1
        if printed["eff"][m][d - 1] >= 1e-3 * printed["total"][d - 1]:
            table.add(f"{'XYZ'[d - 1]} {m + 1}", printed["eff"][m][d - 1], row[3], "--csv participation.csv")
    tables.append(table)

    # The tower: solve against ccx's .frd and the pseudo-mode against numpy.
    tower = Tower()
    model = Model(build, work, "tower", tower.text, run_tremodal, options_lines)
    model.tool("modes", "--modes", "4", "--vertical", "z")
    model.options(True)
    run_tremodal(build, model.dir, "1/20/1/")
    model.tool("solve", "--vertical", "z")
    run_tremodal(build, model.dir, "1/20/2/")
    solved = Table("Tower: solved missing mass case of node 12 (roof), m", "case, freedom", "ccx .frd")
    pseudo = Table("Tower: the second pass's pseudo-mode at node 12 (roof), m", "direction, freedom",
                   "numpy K u = F")
    axis, sign = (0, 2, 1), (1, 1, -1)
    for d in (1, 2, 3):
        case = str(9 + d)
        loads = deck_loads(model.path + ".L" + case)
        steps = "*STEP\n*STATIC\n*CLOAD\n" + "".join(
            f"{n}, {k + 1}, {f[k]!r}\n" for n, f in loads.items() for k in range(3) if f[k] != 0)
        _, frd = ccx(tower.text, steps + "*NODE FILE\nU\n*END STEP\n", os.path.join(model.dir, "c" + case),
                     "c" + case)
        frd = frd_displacements(frd)
        u = tower.solve(loads)
        with open(model.path + ".R" + case, "rb") as f:
            r = f.read()
        with open(model.path + f".HS{d}", "rb") as f:
            hs = f.read()
        nodes, _, rows = struct.unpack_from("<hii", hs, 0)
        block = 16 + 8 * rows + 48 * nodes * (rows - 1)
        for k in range(3):
            value = struct.unpack_from("<f", r, 24 + 24 * 11 + 4 * k)[0]
            solved.add(f"{case} {'xyz'[k]}", sign[k] * frd[12][axis[k]], value, f".R{case}")
            equation, mode = struct.unpack_from("<if", hs, block + 48 * 11 + 8 * k)
            if equation:
                pseudo.add(f"{d} {'xyz'[k]}", sign[k] * u[12][axis[k]], mode, f".HS{d} last block")
    tables += [solved, pseudo]
    return tables, notes


HEAD = """## 3. CalculiX as the solver

`tremodal-ccx` (see the README, "With CalculiX as the solver") runs ccx {version} on a deck and writes the
model; here TreModal's figures, from `TreModal --report 1 --csv` (nine digits), stand against the
tables that ccx prints in its `.dat` file for the same deck (seven digits): direction 1 against X, 2
against Y (vertical), 3 against Z. ccx's seven digits and TreModal's singles (a sum of singles over
the equations) bound the agreement at about 10⁻⁶, and the six digits of the `.frd` file at 5 × 10⁻⁶.

- The example building `examples/calculix/building.inp`: three storeys, point masses at the joints
  and a plant room on one side of the roof, members of a tiny density. Its mass matrix is diagonal, so
  the frequency case is exact. Modes that a direction moves by less than 0.1 % of its mass are left out.
- A solid column of 24 C3D8 bricks (`tests/ccx/decks/solid-column.inp`), 1 × 1 × 3 m of concrete
  with its consistent mass ({column_mass:.1f} kg on the free nodes per direction). `tremodal-ccx modes`
  writes each equation's mass as the sum of its row over the equations of its direction and announced
  that the effective masses differ from ccx's by at most {announced} % of the total mass.
- A braced truss tower of two storeys (`tests/ccx/decks/tower.inp`), Z vertical (`--vertical z`),
  missing mass on from case 10 with the three translations: the solved cases that `tremodal-ccx solve` wrote (`.R10` to `.R12`, suite
  axes) against the `.frd` file of ccx run by the script on the same loads (six digits), and the
  second pass's pseudo-mode, the last block of each `.HS<d>` file, against K u = F solved by numpy
  from the bars' axial stiffness E A / L.

"""
