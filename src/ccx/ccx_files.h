// The files CalculiX (ccx) reads and writes, as far as tremodal-ccx needs
// them: the deck it is given (node numbers and coordinates, the heading), and
// what ccx leaves in its job folder: the tables and node prints of the .dat
// file, the displacements of the .frd file, and the equation list (.dof) and
// mass matrix (.mas) of a matrix storage run. The readers of ccx's output take
// the file's text, skip what they do not know and keep what they do.
#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"

namespace tremodal::ccx {

// Node numbers of the suite are 16 bits.
constexpr i32 kMaxNode = 32767;

struct DeckNode {
    i32 Number = 0;
    std::array<f64, 3> At{};  // deck axes X, Y, Z
};

struct Deck {
    std::string Title;            // the first line behind *HEADING
    std::vector<DeckNode> Nodes;  // ascending node numbers
    i32 LastNode = 0;
};

// The deck's *NODE lines and heading. Fails (13) on a *STEP or *INCLUDE line,
// naming it, on a node number outside 1 to kMaxNode and on a coordinate that
// is not a number; 53 when the file is not there.
Deck ReadDeck(const std::string& path);

// A number for a deck line, with all the digits that bring the double back.
std::string DeckNumber(f64 value);

// The modal tables of a frequency step's .dat file, deck axes: for each mode
// the eigenvalue, the participation factors and effective masses (X, Y, Z,
// then the rotations about X, Y, Z), and the total mass per direction that
// ccx prints beneath ("T O T A L   E F F E C T I V E   M A S S").
struct ModalTables {
    std::vector<f64> Eigenvalues;
    std::vector<std::array<f64, 6>> Participation;
    std::vector<std::array<f64, 6>> EffectiveMass;
    std::array<f64, 6> TotalMass{};
};
ModalTables ReadModalTables(std::string_view dat);

// Displacements by node (deck axes); one block per printed time: each mode of
// a frequency step, each static step.
using NodeValues = std::map<i32, std::array<f64, 3>>;
// The .dat file's "displacements (vx,vy,vz) for set ..." blocks, in order.
std::vector<NodeValues> ReadPrintedDisplacements(std::string_view dat);
// The .frd file's DISP blocks, in order.
std::vector<NodeValues> ReadFrdDisplacements(std::string_view frd);

// A matrix storage run: equation i (from 1) of the .dof file is entry i - 1,
// node and freedom ("12.3" is node 12, freedom 3); and the terms of one
// triangle of the .mas (or .sti) file, "row column value" with 1-based
// equations. Lines that are not of this form are skipped.
struct Freedom {
    i32 Node = 0;
    i32 Number = 0;
};
std::vector<Freedom> ReadDofList(std::string_view dof);
struct MatrixTerm {
    i32 Row = 0;
    i32 Column = 0;
    f64 Value = 0;
};
std::vector<MatrixTerm> ReadMatrixTerms(std::string_view mas);

}  // namespace tremodal::ccx
