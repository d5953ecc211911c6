// The frequency case file laid out byte by byte as the solver writes it: a
// 40-byte header (case nodes, equations, modes, an unused word, six direction
// masses), the eigenvalues as doubles, for every mode a shape block of six
// (equation, value) pairs per case node, the mass form word and the mass
// block. The example tool writes its building with it, and the tests their
// small eigen-solutions and broken files.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tremodal::example {

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
    // unless set. Square form: the diagonal; the rest of the matrix is
    // OffDiagonal, or OffDiagonalTerm(i, j) where that is given.
    std::vector<double> Masses;
    std::int32_t MassCount = -1;
    double OffDiagonal = 0.0;
    std::function<double(std::int64_t, std::int64_t)> OffDiagonalTerm;
};

// The pieces in file order, appended to `out`, for a writer that streams a
// large case to its file: the header with the eigenvalues; one mode's shape
// block (shape indexed by equation as in Shapes); the mass form word with the
// word behind it (the mass count, or in the square form a word the reader
// skips); the lumped masses; and row i (1..NumDof) of the square matrix.
void PutCaseHeader(std::string& out, const FrequencyCaseData& data);
void PutShapeBlock(std::string& out, const FrequencyCaseData& data, const std::vector<float>& shape);
void PutMassForm(std::string& out, const FrequencyCaseData& data);
void PutLumpedMasses(std::string& out, const FrequencyCaseData& data);
void PutSquareMassRow(std::string& out, const FrequencyCaseData& data, std::int64_t i);

// The whole file.
std::string FrequencyCaseBytes(const FrequencyCaseData& data);

}  // namespace tremodal::example
