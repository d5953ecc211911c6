// tremodal-ccx: CalculiX (ccx) as the suite's solver for TreModal. `modes`
// turns a CalculiX deck into the model files TreModal reads; `solve` solves
// the missing mass load cases between TreModal's two passes.
#include <iostream>
#include <string>
#include <vector>

#include "base/number_text.h"
#include "ccx/ccx_commands.h"

namespace {

const char* const kUsage =
    "usage: tremodal-ccx modes DECK.inp MODEL [--modes N] [--case K] [--vertical y|z]\n"
    "       tremodal-ccx solve DECK.inp MODEL [--vertical y|z]\n"
    "Runs CalculiX (ccx from PATH, or $CCX) on a deck that defines a model and has no *STEP.\n"
    "  modes   the N lowest modes (20) and the mass matrix; writes MODEL.XSZ, MODEL.XYZ and the\n"
    "          frequency case MODEL.H<K> (K = 1): the deck's nodes, with their numbers, and the\n"
    "          translations that move as the equations, the mode shapes as ccx gives them\n"
    "          (unit modal mass) and each equation's mass from ccx's mass matrix.\n"
    "  solve   after TreModal's first missing mass pass: the cases of the run comb MODEL.C0,\n"
    "          each load case MODEL.L<case> as one static step; writes MODEL.R<case>.\n"
    "MODEL is the model path without extension, as MODEL.NAM names it. The suite's Y axis is\n"
    "vertical: --vertical y (the default) takes the deck's axes as they are; --vertical z takes a\n"
    "deck whose Z is vertical as suite (x, y, z) = deck (X, Z, -Y), and maps loads and\n"
    "displacements back the same way in solve (give solve the --vertical of modes).\n"
    "ccx works in a scratch folder under $TMPDIR, removed after a run that went well and kept\n"
    "(and named) after one that failed. Exit status: 0 done, 1 ccx or a file failed, 2 usage.\n";

int Usage(const std::string& what) {
    std::cerr << "tremodal-ccx: " << what << "; see tremodal-ccx --help\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace tremodal::ccx;
    const std::vector<std::string> args(argv + 1, argv + argc);
    for (const std::string& arg : args) {
        if (arg == "--help" || arg == "-h") {
            std::cout << kUsage;
            return 0;
        }
    }
    if (args.empty()) return Usage("a command is needed: modes or solve");
    const std::string& command = args[0];
    if (command != "modes" && command != "solve") return Usage("unknown command \"" + command + "\"");
    std::vector<std::string> positional;
    ModesRequest modes;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg.rfind("--", 0) != 0) {
            positional.push_back(arg);
            continue;
        }
        if (i + 1 >= args.size()) return Usage(arg + " needs a value");
        const std::string value = args[++i];
        if (arg == "--vertical") {
            if (value != "y" && value != "z") return Usage("--vertical takes y or z, not \"" + value + "\"");
            modes.Up = value == "z" ? Vertical::Z : Vertical::Y;
        } else if (command == "modes" && (arg == "--modes" || arg == "--case")) {
            double number = 0;
            try {
                number = tremodal::StrictNumber(value);
            } catch (const tremodal::Failure&) {
                number = 0;
            }
            const double high = arg == "--modes" ? 10000 : 32767;
            if (number != static_cast<int>(number) || number < 1 || number > high)
                return Usage(arg + " takes a whole number from 1 to " +
                             tremodal::GeneralText(tremodal::f64(high)) + ", not \"" + value + "\"");
            if (arg == "--modes") modes.Modes = static_cast<int>(number);
            if (arg == "--case") modes.Case = tremodal::GeneralText(tremodal::i32(number));
        } else {
            return Usage("unknown option " + arg + " for " + command);
        }
    }
    if (positional.size() != 2) return Usage(command + " takes a deck and a model path");
    modes.Deck = positional[0];
    modes.Model = positional[1];
    if (modes.Model.size() > 4 && modes.Model.substr(modes.Model.size() - 4) == ".inp")
        return Usage("the model path comes without extension, not \"" + modes.Model + "\"");
    if (command == "modes") return RunModes(modes, std::cout, std::cerr);
    return RunSolve(SolveRequest{modes.Deck, modes.Model, modes.Up}, std::cout, std::cerr);
}
