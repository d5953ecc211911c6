"""The modal response pipeline of a TreModal batch run up to casepost, in numpy.

A speed baseline for the benchmark: what a careful vectorised script takes
for the work TreModal does on a large model, from the frequency case to the
modal response files.

    numpy_pipeline.py FILES_DIR OPTIONS_NUMBER --out DIR [--factors]

FILES_DIR holds MODEL.NAM, which names the model path; OPTIONS_NUMBER picks
the options set (.USM<n>). For every translational direction that is on, the
script builds the unit excitation, works out the participation factors
Gamma = phi^T M r, the modal displacements S_d Gamma f phi of every freedom
in every mode, and the combined base shear of the options' method, and
writes DIR/<name>.HS<d> in the layout of TreModal's modal response file:
header, frequency table, one block of (equation, value) pairs per mode. It
prints each direction's base shear (with --factors also Gamma of every mode)
on standard output.

The figures follow TreModal's arithmetic closely but not bit for bit: sums
run in numpy's order, and the displacement is the single product of the
single scale and the mode shape. Left out, as the benchmark's models do not
use them: ground rotations (directions 4 to 6), missing mass, damping by mode
(.USD), and a model with more nodes than its frequency case.
"""

import argparse
import os
import re
import sys

import numpy as np

# One freedom of a shape block or a response block: equation, value.
PAIR = np.dtype([("eq", "<i4"), ("v", "<f4")])
FREQ_HEADER = np.dtype([("nodes", "<i4"), ("dof", "<i4"), ("modes", "<i4"), ("unused", "<i4"),
                        ("mass", "<f4", 6)])
RESPONSE_HEADER = np.dtype([("nodes", "<i2"), ("dof", "<i4"), ("rows", "<i4"), ("damping", "<f4"),
                            ("comb", "<i2")])
# TreModal looks modes up on the curve at this numerator over omega, not 2 pi.
LOOKUP_NUMERATOR = 6.284
NUMBER = re.compile(r"\s*([-+]?(?:\d+\.?\d*|\.\d+)(?:[eE][-+]?\d+)?)")


def number(text):
    """The longest numeric prefix of a field; a field without one is 0."""
    found = NUMBER.match(text)
    return float(found.group(1)) if found else 0.0


def read_options(path):
    lines = open(path, "rb").read().decode("latin-1").splitlines()
    lines += [""] * (24 - len(lines))

    def value(line):  # the text behind the label's comma
        return lines[line - 1].partition(",")[2]

    factors = [lines[10 + d].split() + ["0", "0"] for d in range(6)]
    return {
        "freq_case": value(1).strip(),
        "single_mode": int(number(value(3))),
        "curve_file": value(4).strip(),
        "spectrum_type": int(number(value(5))),
        "curve_factor": number(value(6)),
        "angle": number(value(7)),
        "logarithmic": int(number(value(8))) == 1,
        "dir_factor": [float(np.float32(number(f[0]))) for f in factors],
        "dir_on": [int(number(f[1])) for f in factors],
        "comb": int(number(value(19))),
        "duration": number(value(20)),
        "damping": float(np.float32(number(value(21)))),
        "missing_mass": int(number(value(23))),
    }


def read_curve(path):
    """Period, value pairs up to a period of -1, as singles."""
    fields = [number(f) for f in re.split(r"[,\s]+", open(path, "rb").read().decode("latin-1").strip())]
    periods, values = [], []
    for k in range(0, len(fields) - 1, 2):
        if fields[k] == -1:
            break
        periods.append(fields[k])
        values.append(fields[k + 1])
    return np.array(periods, np.float32), np.array(values, np.float32)


class FrequencyCase:
    """Eigenvalues, the shape block as mode shape values by slot (node by
    node, six freedoms each) with the equation map of the slots, and the
    mass of every equation."""

    def __init__(self, path):
        with open(path, "rb") as f:
            head = np.fromfile(f, FREQ_HEADER, 1)[0]
            self.case_nodes, self.dof = int(head["nodes"]), int(head["dof"])
            announced = int(head["modes"])
            eigen = np.fromfile(f, "<f8", announced)
            zeros = np.flatnonzero(eigen == 0.0)
            # The list ends at the first 0.0, which is consumed with it.
            modes = int(zeros[0]) if zeros.size else announced
            f.seek(FREQ_HEADER.itemsize + 8 * (modes + (1 if zeros.size else 0)))
            slots = 6 * self.case_nodes
            block = np.fromfile(f, PAIR, modes * slots).reshape(modes, slots)
            if block.shape[0] != modes:
                sys.exit(f"{path}: the shape block ends early")
            form = int(np.fromfile(f, "<i4", 1)[0])
            mass = np.zeros(self.dof + 1, np.float32)
            if form in (1, 2):
                count = int(np.fromfile(f, "<i4", 1)[0])
                mass[1:] = np.fromfile(f, "<f8", count)[: self.dof]
            elif form == 0:
                # Only the diagonal of the square matrix counts: map the file
                # and touch no more of it than the diagonal's pages.
                at = f.tell() + 4
                square = np.memmap(path, "<f8", "r", at, (self.dof, self.dof))
                mass[1:] = square.diagonal()
        self.omega = np.sqrt(eigen[:modes]).astype(np.float32)
        self.mass = mass
        # The map is repeated in every mode; the last mode's stands.
        self.eq = block["eq"][-1].copy() if modes else np.zeros(slots, np.int32)
        if self.eq.size and (self.eq.min() < 0 or self.eq.max() > self.dof):
            sys.exit(f"{path}: an equation number beyond 0 ... {self.dof}")
        counts = np.bincount(self.eq, minlength=self.dof + 1)
        if (block["eq"] == self.eq).all() and counts[1:].max(initial=0) <= 1:
            # Each equation has one slot in every mode: the slots' values are
            # the mode shapes as they stand.
            self.shape = np.ascontiguousarray(block["v"])
            self.shape[:, self.eq == 0] = 0
        else:
            # Each mode's values go to the equations of its own map, and the
            # slots read them back through the last map.
            phi = np.zeros((modes, self.dof + 1), np.float32)
            for m in range(modes):
                phi[m, block["eq"][m]] = block["v"][m]
            phi[:, 0] = 0
            self.shape = phi[:, self.eq]
        # One slot stands for each equation in the sums over equations.
        self.first_slot = np.zeros(self.eq.size, bool)
        self.first_slot[np.unique(self.eq, return_index=True)[1]] = True
        self.first_slot &= self.eq != 0


def spectral_displacement(case, options, model_path):
    """S_d of every mode: the curve at 6.284 / omega, linearly or on the
    logarithms of both axes, the ends held beyond the curve, times the curve
    factor and turned into a displacement."""
    curve_file = options["curve_file"]
    if curve_file.upper() == "MODEL.URS1":
        curve_file = model_path + ".URS1"
    periods, values = read_curve(curve_file)
    omega = case.omega.astype(np.float64)
    t = (LOOKUP_NUMERATOR / omega).astype(np.float32)
    if options["logarithmic"]:
        at = np.interp(np.log(t), np.log(np.where(periods == 0, np.float32(1e-5), periods)), np.log(values))
        s = np.exp(at)
    else:
        s = np.interp(t, periods, values)
    s = options["curve_factor"] * s.astype(np.float32)
    kind = options["spectrum_type"]
    if kind == 1:
        s = s / omega
    elif kind == 2:
        s = s / (omega * omega)
    return s.astype(np.float32).astype(np.float64)


def excitation(case, options, d):
    """A unit ground translation in direction d, by equation: the major wave
    (1) at the principal angle in the X-Z plane, the minor wave (3) 90
    degrees on, the vertical (2) along Y."""
    a = np.radians(options["angle"])
    if d == 3:
        a += np.pi / 2
    r = np.zeros(case.dof + 1, np.float32)
    x, y, z = (case.eq[k::6] for k in range(3))
    if d == 2:
        r[y] = 1
    else:
        r[x] = np.cos(a)
        r[y] = 0
        r[z] = np.sin(a)
    r[0] = 0
    return r


def correlation(omega, zeta, method, duration):
    """The modal correlation matrix of the double sum methods."""
    w = omega.astype(np.float64)
    zi, zj = zeta[:, None], zeta[None, :]
    if method == 1:  # complete quadratic combination (Der Kiureghian 1981)
        r = (w[None, :] / w[:, None]).astype(np.float32).astype(np.float64)
        num = 8 * np.sqrt(zi * zj) * (zj * r + zi) * r**1.5
        den = (1 - r * r) ** 2 + (1 + r * r) * 4 * zi * zj * r + 4 * (zi * zi + zj * zj) * r * r
        with np.errstate(divide="ignore", invalid="ignore"):
            rho = np.minimum(num / den, 1.0)
        return np.where(r == 1.0, 1.0, rho)
    # double sum (Rosenblueth and Elorduy 1969)
    duration = duration or 10.0
    damped = np.sqrt(1 - zeta * zeta) * w
    effective = 2 / duration / w + zeta
    spread = effective * w
    eps = (damped[None, :] - damped[:, None]) / (spread[None, :] + spread[:, None])
    return 1 / (1 + eps * eps)


def base_shear(shear, omega, zeta, method, duration):
    """The combined base shear of the modal shears."""
    if method == 0:
        return np.sqrt(np.sum(shear * shear))
    if method == 4:
        return np.sum(shear)
    if method == 2:  # ten percent grouping: closely spaced pairs add 2 |Ai Aj|
        w = omega.astype(np.float64)
        close = np.triu((w[None, :] - w[:, None]) / w[None, :] <= 0.1, 1)
        return np.sqrt(np.sum(shear * shear) + 2 * np.sum(close * np.abs(np.outer(shear, shear))))
    if method in (1, 3):
        return np.sqrt(shear @ correlation(omega, zeta, method, duration) @ shear)
    return 0.0


def write_response(path, case, options, first, last, scale, pairs):
    """The modal response file: header, frequency table, one block a mode;
    pairs holds the equation map already and takes each block's values."""
    rows = last - first
    head = np.zeros(1, RESPONSE_HEADER)
    head[0] = (case.case_nodes, case.dof, rows, options["damping"], options["comb"])
    table = np.empty((rows, 2), np.float32)
    table[:, 0] = case.omega[first:last]
    table[:, 1] = options["damping"]
    scale32 = scale.astype(np.float32)
    with open(path, "wb") as f:
        f.write(head.tobytes())
        f.write(table.tobytes())
        for m in range(first, last):
            np.multiply(case.shape[m], scale32[m], out=pairs["v"])
            pairs.tofile(f)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("files_dir")
    parser.add_argument("options_number")
    parser.add_argument("--out", required=True, help="directory for the .HS files")
    parser.add_argument("--factors", action="store_true", help="print the participation factors")
    args = parser.parse_args()

    name_fields = open(os.path.join(args.files_dir, "MODEL.NAM"), "rb").read().decode("latin-1").split(",")
    model_path = name_fields[0].strip().strip('"')
    options = read_options(f"{model_path}.USM{args.options_number}")
    if options["missing_mass"] == 1 or any(options["dir_on"][3:]):
        sys.exit("numpy_pipeline.py: missing mass and ground rotations are not part of this baseline")

    case = FrequencyCase(f"{model_path}.H{options['freq_case']}")
    modes = case.omega.size
    sd = spectral_displacement(case, options, model_path)
    single = options["single_mode"]
    first, last = (single - 1, single) if single else (0, modes)
    zeta = np.full(modes, options["damping"], np.float64)[first:last]
    omega2 = case.omega.astype(np.float64) ** 2

    pairs = np.empty(case.eq.size, PAIR)
    pairs["eq"] = case.eq
    base = os.path.join(args.out, os.path.basename(model_path))
    for d in (1, 2, 3):
        if not options["dir_on"][d - 1]:
            continue
        f = options["dir_factor"][d - 1]
        r = excitation(case, options, d)
        w = np.where(case.first_slot, (case.mass * r)[case.eq], 0).astype(np.float32)
        gamma = (case.shape @ w).astype(np.float64)
        scale = sd * gamma * f
        write_response(f"{base}.HS{d}", case, options, first, last, scale, pairs)
        shear = (gamma * gamma * sd * f * omega2)[first:last]
        total = base_shear(shear, case.omega[first:last], zeta, options["comb"], options["duration"])
        print(f"direction {d} base shear {total:.7e}")
        if args.factors:
            for m in range(modes):
                print(f"  mode {m + 1} gamma {gamma[m]:.7e}")


if __name__ == "__main__":
    main()
