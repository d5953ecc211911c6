// tremodal-ccx's two commands: `modes` runs ccx's eigen-solution on a deck
// and writes the model the suite would have (size file, node coordinates,
// frequency case); `solve` runs the missing mass load cases that a first pass
// of TreModal left and writes their solved cases for the second pass.
#pragma once

#include <array>
#include <ostream>
#include <string>

#include "base/failure.h"

namespace tremodal::ccx {

// The suite's Y axis is vertical. With a deck whose Z is vertical, suite
// (x, y, z) = deck (X, Z, -Y): right-handed, and X stays X.
enum class Vertical { Y, Z };

struct AxisMap {
    std::array<int, 3> DeckAxis;  // the deck axis (0..2) of suite axis k
    std::array<f64, 3> DeckSign;  // and its sign
};
AxisMap AxesFor(Vertical vertical);

struct ModesRequest {
    std::string Deck;
    std::string Model;  // model path without extension
    i32 Modes = 20;
    std::string Case = "1";
    Vertical Up = Vertical::Y;
};

struct SolveRequest {
    std::string Deck;
    std::string Model;
    Vertical Up = Vertical::Y;
};

// Both write their summary to `out` and return 0, or write what failed to
// `err` and return 1.
int RunModes(const ModesRequest& request, std::ostream& out, std::ostream& err);
int RunSolve(const SolveRequest& request, std::ostream& out, std::ostream& err);

}  // namespace tremodal::ccx
