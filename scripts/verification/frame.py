"""A small space frame whose eigen-solution comes from numpy, written as the
suite's files, for checking TreModal against an independent computation.

Two storeys of a reinforced concrete frame, two bays along X and one along Z,
Y upwards. Columns and beams are 12-freedom Euler-Bernoulli beam elements
(Przemieniecki, Theory of Matrix Structural Analysis, 1968, ch. 5); the base
nodes are fixed; every free node carries a lumped mass on its three
translations and a rotary inertia on its three rotations, so the mass matrix
is diagonal and positive definite. One corner column is larger than the
others and the roof masses are uneven, so the modes couple sway in X, sway in
Z and torsion, as the modes of a real building do.

The generalised eigenproblem K phi = omega^2 M phi is solved by the symmetric
form M^-1/2 K M^-1/2 (numpy.linalg.eigh), which gives mass-normalised shapes
phi^T M phi = 1 directly.
"""

import struct

import numpy as np

STOREY_HEIGHT = 3.5  # m
BAYS_X = [0.0, 6.0, 12.0]  # m, the column lines along X
BAYS_Z = [0.0, 5.0]  # m, along Z
LEVELS = 2

E = 30e9  # N/m2, concrete
G = 12.5e9  # N/m2


def rectangle(b, h):
    """Area, torsion constant and the two second moments of a b x h section
    (b along the local z axis, h along the local y axis)."""
    a = b * h
    long_side, short_side = max(b, h), min(b, h)
    # Torsion constant of a solid rectangle (Roark): k ab^3.
    ratio = short_side / long_side
    j = long_side * short_side**3 * (1.0 / 3.0 - 0.21 * ratio * (1.0 - ratio**4 / 12.0))
    iz = b * h**3 / 12.0
    iy = h * b**3 / 12.0
    return a, j, iy, iz


COLUMN = rectangle(0.40, 0.40)
BIG_COLUMN = rectangle(0.55, 0.55)  # the corner column at X = 0, Z = 0
BEAM = rectangle(0.30, 0.50)

# Lumped masses of the floors, kg, and the rotary inertia of a node, kg m2.
FLOOR_NODE_MASS = {1: 9000.0, 2: 6000.0}
ROOF_EXTRA = 4000.0  # plant on the roof at the node X = 12, Z = 5
ROTARY_INERTIA = 500.0


def nodes():
    """Node number (from 1) -> (x, y, z). Level 0 are the fixed bases."""
    table = {}
    n = 0
    for level in range(LEVELS + 1):
        for z in BAYS_Z:
            for x in BAYS_X:
                n += 1
                table[n] = (x, level * STOREY_HEIGHT, z)
    return table


def node_at(table, x, y, z):
    for n, p in table.items():
        if np.allclose(p, (x, y, z)):
            return n
    raise KeyError((x, y, z))


def elements(table):
    """(node i, node j, section) of every column and beam."""
    result = []
    for level in range(1, LEVELS + 1):
        y0, y1 = (level - 1) * STOREY_HEIGHT, level * STOREY_HEIGHT
        for z in BAYS_Z:
            for x in BAYS_X:
                section = BIG_COLUMN if (x, z) == (0.0, 0.0) else COLUMN
                result.append((node_at(table, x, y0, z), node_at(table, x, y1, z), section))
        for z in BAYS_Z:
            for xa, xb in zip(BAYS_X, BAYS_X[1:]):
                result.append((node_at(table, xa, y1, z), node_at(table, xb, y1, z), BEAM))
        for x in BAYS_X:
            result.append((node_at(table, x, y1, BAYS_Z[0]), node_at(table, x, y1, BAYS_Z[1]), BEAM))
    return result


def local_stiffness(length, section):
    a, j, iy, iz = section
    L = length
    k = np.zeros((12, 12))
    k[0, 0] = k[6, 6] = E * a / L
    k[0, 6] = -E * a / L
    k[3, 3] = k[9, 9] = G * j / L
    k[3, 9] = -G * j / L
    # Bending in the local x-y plane: v and theta z.
    k[1, 1] = k[7, 7] = 12 * E * iz / L**3
    k[1, 7] = -12 * E * iz / L**3
    k[1, 5] = k[1, 11] = 6 * E * iz / L**2
    k[5, 7] = k[7, 11] = -6 * E * iz / L**2
    k[5, 5] = k[11, 11] = 4 * E * iz / L
    k[5, 11] = 2 * E * iz / L
    # Bending in the local x-z plane: w and theta y.
    k[2, 2] = k[8, 8] = 12 * E * iy / L**3
    k[2, 8] = -12 * E * iy / L**3
    k[2, 4] = k[2, 10] = -6 * E * iy / L**2
    k[4, 8] = k[8, 10] = 6 * E * iy / L**2
    k[4, 4] = k[10, 10] = 4 * E * iy / L
    k[4, 10] = 2 * E * iy / L
    return np.triu(k) + np.triu(k, 1).T


def rotation(pi, pj):
    """Rows: the member's local axes in global coordinates."""
    ex = np.subtract(pj, pi)
    length = np.linalg.norm(ex)
    ex = ex / length
    reference = np.array([1.0, 0.0, 0.0]) if abs(ex[1]) > 0.99 else np.array([0.0, 1.0, 0.0])
    ey = reference - reference.dot(ex) * ex
    ey /= np.linalg.norm(ey)
    ez = np.cross(ex, ey)
    return np.vstack([ex, ey, ez]), length


class Frame:
    """The assembled model: equations numbered node by node from the first
    free node, freedoms x, y, z, xr, yr, zr in order."""

    def __init__(self):
        self.nodes = nodes()
        self.elements = elements(self.nodes)
        self.free = [n for n, p in self.nodes.items() if p[1] > 0]
        # Equation of (node, freedom 1..6); 0 for the fixed bases.
        self.equation = {}
        e = 0
        for n in sorted(self.nodes):
            for d in range(1, 7):
                if n in self.free:
                    e += 1
                    self.equation[(n, d)] = e
                else:
                    self.equation[(n, d)] = 0
        self.dof = e
        self.K = self.assemble()
        self.M = self.masses()

    def assemble(self):
        K = np.zeros((self.dof, self.dof))
        for i, j, section in self.elements:
            R, length = rotation(self.nodes[i], self.nodes[j])
            T = np.kron(np.eye(4), R)
            kg = T.T @ local_stiffness(length, section) @ T
            eqs = [self.equation[(n, d)] for n in (i, j) for d in range(1, 7)]
            for a, ea in enumerate(eqs):
                for b, eb in enumerate(eqs):
                    if ea and eb:
                        K[ea - 1, eb - 1] += kg[a, b]
        return K

    def node_mass(self, n):
        x, y, z = self.nodes[n]
        level = round(y / STOREY_HEIGHT)
        m = FLOOR_NODE_MASS[level]
        if level == LEVELS and (x, z) == (BAYS_X[-1], BAYS_Z[-1]):
            m += ROOF_EXTRA
        return m

    def masses(self):
        m = np.zeros(self.dof)
        for n in self.free:
            for d in range(1, 7):
                m[self.equation[(n, d)] - 1] = self.node_mass(n) if d <= 3 else ROTARY_INERTIA
        return m

    def total_mass(self):
        return sum(self.node_mass(n) for n in self.free)

    def solve(self, modes):
        """The lowest modes: omega (rad/s) and mass-normalised shapes by
        column, each turned so that its largest value is positive."""
        scale = 1.0 / np.sqrt(self.M)
        A = scale[:, None] * self.K * scale[None, :]
        values, vectors = np.linalg.eigh(A)
        omega = np.sqrt(values[:modes])
        phi = scale[:, None] * vectors[:, :modes]
        for m in range(modes):
            if phi[np.argmax(np.abs(phi[:, m])), m] < 0:
                phi[:, m] = -phi[:, m]
        return omega, phi

    def influence(self, freedom):
        """Unit ground motion along freedom 1 (x), 2 (y) or 3 (z)."""
        r = np.zeros(self.dof)
        for n in self.free:
            r[self.equation[(n, freedom)] - 1] = 1.0
        return r

    # ----------------------------------------------------------------------
    # The suite's files

    def write_size_file(self, path, name):
        lines = [
            "VERIFICATION MODEL",
            name,
            "Two-storey space frame of 2 x 1 bays",
            "beam elements",
            "lumped mass",
            "-",
            f"{len(self.elements)},0,{len(self.nodes)},0",
            "-", "-", "-", "-", "-", "-", "-",
            "0",
        ]
        write_text(path, lines)

    def write_coordinates(self, path):
        with open(path, "wb") as f:
            for n in sorted(self.nodes):
                x, y, z = self.nodes[n]
                f.write(struct.pack("<hfff", n, x, y, z))

    def write_frequency_case(self, path, omega, phi):
        modes = len(omega)
        total = self.total_mass()
        with open(path, "wb") as f:
            f.write(struct.pack("<iiii", len(self.nodes), self.dof, modes, 0))
            f.write(struct.pack("<6f", total, total, total, 0, 0, 0))
            for w in omega:
                f.write(struct.pack("<d", w * w))
            for m in range(modes):
                for n in sorted(self.nodes):
                    for d in range(1, 7):
                        e = self.equation[(n, d)]
                        f.write(struct.pack("<if", e, phi[e - 1, m] if e else 0.0))
            f.write(struct.pack("<ii", 1, self.dof))
            for value in self.M:
                f.write(struct.pack("<d", value))


def write_text(path, lines):
    with open(path, "wb") as f:
        for line in lines:
            f.write(line.encode() + b"\r\n")


def options_lines(freq_case, results_case, spectrum, directions, comb=0):
    """An options set: the curve in g times 9.81, angle 0, the given
    directions on with factor 1, SRSS, 5 % damping, no missing mass."""
    pair = [" 0             0 "] * 6
    for d in directions:
        pair[d - 1] = " 1             1 "
    return [
        "Frequency (Mass) Case Number         ," + freq_case,
        "Results Case Number                  ," + results_case,
        "Single Mode (non-zero is active)     , 0 ",
        "Response Spectrum File               ," + spectrum,
        "Spectrun Type  0-Disp 1-Vel 2-Accel  , 2",
        "Specrum Curve Factor                 , 9.81",
        "Principal Direction                  , 0",
        "Interpolation Method 0-Linear 1-Log  , 0",
        "Spectrum Direction Definition",
        "Dir Factors   On/Off",
        *pair,
        "Subsoil Shear Wave veleocity           , 400",
        "Rotation Datum (Ground)   X   Y   Z    , 0  0  0 ",
        f"Modal Combination Method               , {comb} ",
        "Earthquake Duration (Secs)             , 10",
        "Modal Damping Ratio                    , .05",
        "Element force sign is based on Mode    , 0 ",
        "Missing Mass Case (1 is active)        , 0 ,0",
        "ZPZ Option (1 is higest mode)          , 1 ",
    ]
