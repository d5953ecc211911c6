// Frequency case files built byte by byte, for tests that need a small
// eigen-solution of their own rather than the example building.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tremodal::testing {

struct FrequencyCaseData {
    std::int32_t CaseNodes = 0;
    std::int32_t NumDof = 0;
    // The header's mode count; -1 writes the number of eigenvalues given.
    std::int32_t Modes = -1;
    std::array<float, 6> DirMass{};
    // Written as given, so a 0.0 ends the list early as the solver would.
    std::vector<double> Eigenvalues;
    // Equation of freedom 1..6 of each case node, the same in every mode.
    std::vector<std::array<std::int32_t, 6>> NodeDof;
    // Shapes[m][e]: value of equation e (1..NumDof; index 0 unused) in mode
    // m + 1. One shape block is written per row.
    std::vector<std::vector<float>> Shapes;
    std::int32_t MassForm = 1;
    // Lumped form: the masses of equations 1..; MassCount is their number
    // unless set. Square form: the diagonal, the rest of the block is
    // OffDiagonal.
    std::vector<double> Masses;
    std::int32_t MassCount = -1;
    double OffDiagonal = 0.0;
};

// The bytes of the file, laid out as the solver writes it.
std::string FrequencyCaseBytes(const FrequencyCaseData& data);

}  // namespace tremodal::testing
