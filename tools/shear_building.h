// The uniform shear building: N equal storeys of mass m on a fixed base, each
// floor a rigid diaphragm joined to the one below by columns of storey
// stiffness k. The floors sway in the two horizontal directions x and z, which
// do not couple, so the building has two families of N modes each, one per
// direction, known in closed form (floors j = 1..N counted from the bottom):
//
//   theta_n  = (2n - 1) pi / (2N + 1)
//   omega_n  = 2 sqrt(k / m) sin(theta_n / 2)
//   phi_n(j) = 2 / sqrt(m (2N + 1)) sin(j theta_n)
//
// phi_n solves k (2 phi(j) - phi(j-1) - phi(j+1)) = omega^2 m phi(j) with
// phi(0) = 0 at the base and k (phi(N) - phi(N-1)) = omega^2 m phi(N) at the
// free top (the top condition is what fixes theta_n), and the amplitude makes
// the shapes mass-normalised: sum_j m phi_n(j)^2 = 1, because
// sum_j sin^2(j theta_n) = (2N + 1) / 4.
//
// Under a unit ground motion along the family's direction the participation
// factor is Gamma_n = sum_j m phi_n(j); the floor sum of the sines is
// cot(theta_n / 2) / 2, so Gamma_n = sqrt(m / (2N + 1)) cot(theta_n / 2). With
// mass-normalised shapes Gamma_n^2 is the effective mass of the mode, and over
// all N modes of a family the effective masses add up to the building's mass
// N m. A motion across the family's direction does not excite it at all.
//
// The model files of the example tool and the tests of the analysis share the
// numbering below, so that a test can find any floor's freedom in the files.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace tremodal::example {

constexpr double kPi = 3.14159265358979323846;

// The two sway directions, by the freedom a floor moves in: x is freedom 1,
// z freedom 3. Y is the vertical and never sways.
enum class Sway { X, Z };

inline int SwayFreedom(Sway sway) { return sway == Sway::X ? 1 : 3; }

struct ShearBuilding {
    int Storeys = 5;
    int NodesPerFloor = 1;      // columns standing side by side
    double StoreyMass = 1000;   // kg, of a whole floor
    double StiffnessX = 1.0e6;  // N/m, storey stiffness for sway in x
    double StiffnessZ = 1.5e6;  // N/m, for sway in z
    double StoreyHeight = 3;    // m
    double Bay = 5;             // m, between neighbouring columns along x
};

// Nodes: a floor may have P nodes, the heads of P equal columns standing in
// a row along x, one bay apart. Nodes 1..P are the column bases at y = 0,
// restrained, with no equation on any freedom; node j P + c is column c at
// floor j, at y = j h. Each column carries 1/P of the storey mass and of the
// storey stiffness, and the nodes of a floor are tied by links stiff enough
// that the modes in which they move apart lie above every mode kept: each
// kept mode moves a whole floor as one, with the value of the one-column
// building at every node of the floor, and so has that building's frequency
// and participation. With P = 1 node 1 is the base and node j + 1 floor j.
inline int NodeCount(const ShearBuilding& b) { return (b.Storeys + 1) * b.NodesPerFloor; }
inline int FloorNode(const ShearBuilding& b, int floor, int column = 1) {
    return floor * b.NodesPerFloor + column;
}

// Equations are numbered floor by floor from the bottom, within a floor
// column by column, and within a node in freedom order. In the lateral model
// only x and z of a node have equations: node number k of the floors (k = 1 for
// column 1 of floor 1) has x = 2k - 1 and z = 2k. With every freedom active
// freedom d of that node is equation 6 (k - 1) + d; y and the rotations then
// carry mass but no written mode moves them (their own modes are left out of
// the frequency case, as a solver that stopped early would leave them).
// Every equation carries the node's share m / P of the storey mass, for a
// rotation read as a rotary inertia of that mass times 1 m^2.
inline int EquationsPerNode(bool allFreedoms) { return allFreedoms ? 6 : 2; }
inline std::int64_t EquationCount(const ShearBuilding& b, bool allFreedoms) {
    return std::int64_t{b.Storeys} * b.NodesPerFloor * EquationsPerNode(allFreedoms);
}
// The equation of freedom 1..6 of a floor node, 0 for a freedom without one.
inline std::int64_t FloorEquation(const ShearBuilding& b, int floor, int column, int freedom,
                                  bool allFreedoms) {
    const std::int64_t k = std::int64_t{floor - 1} * b.NodesPerFloor + column;
    if (allFreedoms) return 6 * (k - 1) + freedom;
    if (freedom == 1) return 2 * k - 1;
    if (freedom == 3) return 2 * k;
    return 0;
}
inline double NodeMass(const ShearBuilding& b) { return b.StoreyMass / b.NodesPerFloor; }

// theta_n of mode n (1..N) of a family.
inline double ModeAngle(int storeys, int n) { return (2.0 * n - 1.0) * kPi / (2.0 * storeys + 1.0); }

// Circular frequency omega_n, rad/s.
inline double FamilyOmega(int storeys, double mass, double stiffness, int n) {
    return 2.0 * std::sqrt(stiffness / mass) * std::sin(ModeAngle(storeys, n) / 2.0);
}

// Mass-normalised shape value of mode n at floor j (1..N).
inline double ShapeValue(int storeys, double mass, int n, int floor) {
    return 2.0 / std::sqrt(mass * (2.0 * storeys + 1.0)) * std::sin(floor * ModeAngle(storeys, n));
}

// Gamma_n for a unit ground motion along the family's direction.
inline double ParticipationFactor(int storeys, double mass, int n) {
    return std::sqrt(mass / (2.0 * storeys + 1.0)) / std::tan(ModeAngle(storeys, n) / 2.0);
}

inline double EffectiveMass(int storeys, double mass, int n) {
    const double gamma = ParticipationFactor(storeys, mass, n);
    return gamma * gamma;
}

// One mode of the whole building: its family, its number n within the family
// and its circular frequency.
struct BuildingMode {
    Sway Family = Sway::X;
    int Order = 1;
    double Omega = 0;
};

// All 2N modes by ascending frequency, or the lowest `keep` of them. Equal
// frequencies (equal storey stiffness in x and z) keep x before z, and each
// family in its own order.
inline std::vector<BuildingMode> SortedModes(const ShearBuilding& b, int keep = -1) {
    std::vector<BuildingMode> modes;
    for (Sway family : {Sway::X, Sway::Z}) {
        const double k = family == Sway::X ? b.StiffnessX : b.StiffnessZ;
        for (int n = 1; n <= b.Storeys; ++n) {
            modes.push_back({family, n, FamilyOmega(b.Storeys, b.StoreyMass, k, n)});
        }
    }
    std::stable_sort(modes.begin(), modes.end(),
                     [](const BuildingMode& a, const BuildingMode& c) { return a.Omega < c.Omega; });
    if (keep >= 0 && keep < static_cast<int>(modes.size())) modes.resize(keep);
    return modes;
}

// The shape value of a building mode at freedom 1..6 of floor j: the family's
// sway freedom carries phi_n(j), every other freedom 0.
inline double ModeValue(const ShearBuilding& b, const BuildingMode& mode, int floor, int freedom) {
    if (freedom != SwayFreedom(mode.Family)) return 0;
    return ShapeValue(b.Storeys, b.StoreyMass, mode.Order, floor);
}

// Participation factor of a building mode under a unit ground motion in x
// (freedom 1) or z (freedom 3): Gamma_n along its own direction, 0 across.
inline double ModeParticipation(const ShearBuilding& b, const BuildingMode& mode, int freedom) {
    if (freedom != SwayFreedom(mode.Family)) return 0;
    return ParticipationFactor(b.Storeys, b.StoreyMass, mode.Order);
}

}  // namespace tremodal::example
