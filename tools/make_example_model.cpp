// make_example_model: writes the files of a uniform shear building whose
// eigen-solution is known in closed form (tools/shear_building.h), laid out as
// the suite's solver and model editor leave them, so that an analysis run on
// it can be checked against theory:
//
//   <name>.XSZ      model size and names
//   <name>.XYZ      node coordinates
//   <name>.H<case>  frequency case: eigenvalues, mode shapes, equation map, mass
//   <name>.URS1     response spectrum curve, accelerations in g
//   <name>.USM<n>   analysis options: both horizontal directions on
//   MODEL.NAM       (with --name-file) naming this model as the current one
//
// Usage: make_example_model DIR [options]; the options are listed in kUsage.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "base/binary_files.h"
#include "base/failure.h"
#include "base/file_system.h"
#include "base/number_text.h"
#include "base/run_state.h"
#include "base/text_files.h"
#include "frequency_case_writer.h"
#include "input/options_file.h"
#include "shear_building.h"

namespace tremodal::example {
namespace {

enum class MassForm { Lumped, Square };
enum class SpectrumShape { Design, Flat };

struct ExampleOptions {
    std::string Dir;
    std::string Name = "SHEAR";
    ShearBuilding Building;
    int Modes = -1;  // -1: all 2N
    MassForm Mass = MassForm::Lumped;
    double MassNoise = 0;  // off-diagonal terms of the square form, as a fraction of m
    bool AllFreedoms = false;
    SpectrumShape Spectrum = SpectrumShape::Design;
    double FlatValue = 0.3;  // g
    double Zpa = 0.2;        // g, the design curve's value at period 0
    std::string FreqCase = "1";
    std::string ResultsCase = "20";
    std::string OptionsNumber = "1";
    std::vector<int> Directions{1, 3};
    int CombMethod = 1;  // CQC
    bool NameFile = false;
};

// The shape block is written a few modes at a time, in blocks of about this
// size: a 30,000-node model has 1.4 MB per mode and gigabytes in all.
constexpr std::size_t kBlockBytes = 8u * 1024 * 1024;
// Bytes of one node in the shape block: six pairs of an i32 equation and an
// f32 value.
constexpr std::int64_t kNodeBytes = 6 * 8;
// A frequency case above this is refused rather than left to fill the disk.
constexpr std::int64_t kMaxCaseBytes = std::int64_t{16} * 1024 * 1024 * 1024;
// Node numbers are 16-bit.
constexpr int kMaxNodes = 32767;

// The combination methods by their number in the options file.
const char* const kCombMethods[] = {"SRSS", "CQC", "GROUP", "DSM", "ABS"};

struct UsageError {
    std::string Text;
};

// --help: the usage on standard output, nothing written.
struct HelpAsked {};

const char* const kUsage =
    "usage: %s DIR [options]\n"
    "Writes a uniform shear building into DIR as the suite's tools leave a model: size file,\n"
    "node coordinates, frequency case with its exact modes, a response spectrum curve and an\n"
    "options set, ready for a batch run of TreModal.\n"
    "  --help                this text\n"
    "  --name NAME           base name of the model files (SHEAR)\n"
    "  --storeys N           storeys, 1 to 32766 (5)\n"
    "  --nodes-per-floor P   columns side by side, (N + 1) P up to 32767 nodes (1)\n"
    "  --modes M             keep the lowest M modes, 0 to 2N (all 2N)\n"
    "  --mass M              storey mass, kg (1000)\n"
    "  --kx K, --kz K        storey stiffness for sway in x and in z, N/m (1e6, 1.5e6)\n"
    "  --height H            storey height, m (3)\n"
    "  --all-freedoms        every floor freedom gets an equation, not only x and z\n"
    "  --mass-form F         lumped or square (lumped)\n"
    "  --mass-noise F        square form: off-diagonal terms of F times the storey mass (0)\n"
    "  --spectrum S          design or flat (design)\n"
    "  --flat-value A        flat curve value, g (0.3)\n"
    "  --zpa A               design curve value at period 0, g (0.2)\n"
    "  --freq-case C         frequency case number (1)\n"
    "  --results-case C      results case number in the options (20)\n"
    "  --options N           options number (1)\n"
    "  --directions D        directions on in the options, digits 1 to 6 (13)\n"
    "  --comb C              combination method: SRSS, CQC, GROUP, DSM or ABS (CQC)\n"
    "  --name-file           also write DIR/MODEL.NAM naming this model\n";

double NumberArgument(const std::string& option, const std::string& text) {
    try {
        return StrictNumber(text);
    } catch (const Failure&) {
        throw UsageError{option + " needs a number, not \"" + text + "\""};
    }
}

double PositiveArgument(const std::string& option, const std::string& text) {
    const double value = NumberArgument(option, text);
    if (!(value > 0) || !std::isfinite(value)) throw UsageError{option + " must be above 0"};
    return value;
}

int IntegerArgument(const std::string& option, const std::string& text, int low, int high) {
    const double value = NumberArgument(option, text);
    if (value != std::floor(value) || value < low || value > high) {
        throw UsageError{option + " must be a whole number from " + GeneralText(i32{low}) + " to " +
                         GeneralText(i32{high})};
    }
    return static_cast<int>(value);
}

// A case or options number goes into file names as it stands.
std::string CaseArgument(const std::string& option, const std::string& text) {
    IntegerArgument(option, text, 1, 32767);
    return Trim(text);
}

ExampleOptions ParseArguments(const std::vector<std::string>& args) {
    ExampleOptions o;
    ShearBuilding& b = o.Building;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--help") throw HelpAsked{};
        if (arg.rfind("-", 0) != 0) {
            if (!o.Dir.empty()) throw UsageError{"more than one directory: " + arg};
            o.Dir = arg;
            continue;
        }
        if (arg == "--all-freedoms") {
            o.AllFreedoms = true;
            continue;
        }
        if (arg == "--name-file") {
            o.NameFile = true;
            continue;
        }
        // An option where a value should stand means the value was left out;
        // it must not become a model name or a number.
        if (arg.rfind("--", 0) != 0) throw UsageError{"unknown option " + arg};
        if (i + 1 >= args.size() || args[i + 1].rfind("--", 0) == 0) throw UsageError{arg + " needs a value"};
        const std::string& value = args[++i];
        if (arg == "--name") {
            if (value.empty() || value.find_first_of("/,\" ") != std::string::npos) {
                throw UsageError{"--name must be a plain file name"};
            }
            o.Name = value;
        } else if (arg == "--storeys") {
            b.Storeys = IntegerArgument(arg, value, 1, kMaxNodes - 1);
        } else if (arg == "--nodes-per-floor") {
            b.NodesPerFloor = IntegerArgument(arg, value, 1, kMaxNodes / 2);
        } else if (arg == "--modes") {
            o.Modes = IntegerArgument(arg, value, 0, 2 * kMaxNodes);
        } else if (arg == "--mass") {
            b.StoreyMass = PositiveArgument(arg, value);
        } else if (arg == "--kx") {
            b.StiffnessX = PositiveArgument(arg, value);
        } else if (arg == "--kz") {
            b.StiffnessZ = PositiveArgument(arg, value);
        } else if (arg == "--height") {
            b.StoreyHeight = PositiveArgument(arg, value);
        } else if (arg == "--mass-form") {
            if (value == "lumped") {
                o.Mass = MassForm::Lumped;
            } else if (value == "square") {
                o.Mass = MassForm::Square;
            } else {
                throw UsageError{"--mass-form is lumped or square"};
            }
        } else if (arg == "--mass-noise") {
            o.MassNoise = NumberArgument(arg, value);
        } else if (arg == "--spectrum") {
            if (value == "design") {
                o.Spectrum = SpectrumShape::Design;
            } else if (value == "flat") {
                o.Spectrum = SpectrumShape::Flat;
            } else {
                throw UsageError{"--spectrum is design or flat"};
            }
        } else if (arg == "--flat-value") {
            o.FlatValue = PositiveArgument(arg, value);
        } else if (arg == "--zpa") {
            o.Zpa = PositiveArgument(arg, value);
        } else if (arg == "--freq-case") {
            o.FreqCase = CaseArgument(arg, value);
        } else if (arg == "--results-case") {
            o.ResultsCase = CaseArgument(arg, value);
        } else if (arg == "--options") {
            o.OptionsNumber = CaseArgument(arg, value);
        } else if (arg == "--directions") {
            o.Directions.clear();
            for (char c : value) {
                if (c < '1' || c > '6') throw UsageError{"--directions takes digits 1 to 6"};
                o.Directions.push_back(c - '0');
            }
        } else if (arg == "--comb") {
            o.CombMethod = -1;
            for (int m = 0; m < 5; ++m) {
                if (value == kCombMethods[m]) o.CombMethod = m;
            }
            if (o.CombMethod < 0) throw UsageError{"--comb is SRSS, CQC, GROUP, DSM or ABS"};
        } else {
            throw UsageError{"unknown option " + arg};
        }
    }
    if (o.Dir.empty()) throw UsageError{"no directory given"};
    if (std::int64_t{b.Storeys + 1} * b.NodesPerFloor > kMaxNodes) {
        throw UsageError{"(storeys + 1) x nodes per floor must not exceed 32767 nodes"};
    }
    if (o.Modes > 2 * b.Storeys) throw UsageError{"--modes must not exceed twice the storeys"};
    if (o.MassNoise != 0 && o.Mass != MassForm::Square)
        throw UsageError{"--mass-noise needs --mass-form square"};

    const std::int64_t equations = EquationCount(b, o.AllFreedoms);
    const std::int64_t modes = o.Modes < 0 ? 2 * b.Storeys : o.Modes;
    const std::int64_t massBytes = o.Mass == MassForm::Square ? equations * equations * 8 : equations * 8;
    const std::int64_t caseBytes = 40 + modes * 8 + modes * NodeCount(b) * kNodeBytes + 8 + massBytes;
    if (caseBytes > kMaxCaseBytes) {
        throw UsageError{"the frequency case would take " + GeneralText(f64(caseBytes)) +
                         " bytes; keep fewer --modes or use the lumped mass form"};
    }
    return o;
}

std::string ModelPath(const ExampleOptions& o) {
    std::string dir = o.Dir;
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    return dir + "/" + o.Name;
}

// BinaryFile writes in place and keeps an old file's tail, so an older,
// larger model under the same name is removed first.
void RemoveOld(const std::string& path) {
    if (FileExists(path)) DeleteFile(path);
}

// The size file, read field by field: an unused text, the model's name and
// title, three unused texts, the size figures on one line (elements, unused,
// nodes, unused), seven unused texts and the unit system. The unused texts
// record how the model was made; none may hold a comma, which ends a field.
void WriteSizeFile(const ExampleOptions& o, const std::string& modelPath) {
    const ShearBuilding& b = o.Building;
    PrintFile out(modelPath + ".XSZ", TextMode::Output);
    out.Line("EXAMPLE MODEL");
    out.Line(o.Name);
    std::string title = "Uniform shear building of " + GeneralText(i32{b.Storeys}) + " storeys";
    if (b.NodesPerFloor > 1) title += " of " + GeneralText(i32{b.NodesPerFloor}) + " columns";
    out.Line(title);
    out.Line("storey mass " + GeneralText(b.StoreyMass));
    out.Line("storey height " + GeneralText(b.StoreyHeight));
    out.Line(o.AllFreedoms ? "all floor freedoms active" : "floors sway in x and z only");
    // The columns are the elements: one per column and storey.
    out.Line(GeneralText(i32{b.Storeys * b.NodesPerFloor}) + ",0," + GeneralText(i32{NodeCount(b)}) + ",0");
    out.Line("storey stiffness x " + GeneralText(b.StiffnessX));
    out.Line("storey stiffness z " + GeneralText(b.StiffnessZ));
    out.Line("frequency case " + o.FreqCase);
    out.Line(o.Mass == MassForm::Lumped ? "lumped mass" : "square mass");
    out.Line(o.Spectrum == SpectrumShape::Flat ? "flat spectrum" : "design spectrum");
    out.Line("-");
    out.Line("-");
    out.Line("0");  // metric units
    out.Close();
}

// One 14-byte record per node: the node number, then x, y, z.
void WriteCoordinates(const ExampleOptions& o, const std::string& modelPath) {
    const ShearBuilding& b = o.Building;
    std::vector<unsigned char> block;
    for (int floor = 0; floor <= b.Storeys; ++floor) {
        for (int column = 1; column <= b.NodesPerFloor; ++column) {
            PutI16(block, static_cast<i16>(FloorNode(b, floor, column)));
            PutF32(block, static_cast<f32>((column - 1) * b.Bay));
            PutF32(block, static_cast<f32>(floor * b.StoreyHeight));
            PutF32(block, 0.0f);
        }
    }
    const std::string path = modelPath + ".XYZ";
    RemoveOld(path);
    BinaryFile file(path);
    file.Write(block.data(), block.size());
    file.Close();
}

// The frequency case file through the shared writer, flushed to the file in
// blocks of about kBlockBytes: header and eigenvalues, the shape block mode by
// mode, the mass form and the mass block. The restrained base nodes have no
// equation; every floor node carries its family's sway value in the sway
// freedom of each mode, and every other freedom 0.
void WriteFrequencyCase(const ExampleOptions& o, const std::string& modelPath,
                        const std::vector<BuildingMode>& modes) {
    const ShearBuilding& b = o.Building;
    const std::int64_t equations = EquationCount(b, o.AllFreedoms);
    FrequencyCaseData c;
    c.CaseNodes = NodeCount(b);
    c.NumDof = static_cast<i32>(equations);
    // The load case mass in slot 1; the three translations all move the
    // whole building, the rotations are not filled in.
    const f32 totalMass = static_cast<f32>(b.Storeys * b.StoreyMass);
    c.DirMass = {totalMass, totalMass, totalMass, 0, 0, 0};
    for (const BuildingMode& mode : modes) c.Eigenvalues.push_back(mode.Omega * mode.Omega);
    for (int floor = 0; floor <= b.Storeys; ++floor) {
        for (int column = 1; column <= b.NodesPerFloor; ++column) {
            std::array<std::int32_t, 6> freedoms{};
            for (int freedom = 1; freedom <= 6 && floor > 0; ++freedom)
                freedoms[freedom - 1] =
                    static_cast<i32>(FloorEquation(b, floor, column, freedom, o.AllFreedoms));
            c.NodeDof.push_back(freedoms);
        }
    }
    c.MassForm = o.Mass == MassForm::Lumped ? 1 : 0;
    c.Masses.assign(static_cast<std::size_t>(equations), NodeMass(b));
    // The square form's terms beside the diagonal: a fixed, unsymmetric
    // pattern that must not change any result.
    const double fraction = o.MassNoise, m = NodeMass(b);
    c.OffDiagonalTerm = [fraction, m](std::int64_t i, std::int64_t j) {
        return fraction == 0 ? 0.0 : fraction * m * double((i * 7 + j * 13) % 11 - 5) / 5.0;
    };

    const std::string path = modelPath + ".H" + o.FreqCase;
    RemoveOld(path);
    BinaryFile file(path);
    std::string block;
    const auto flush = [&](bool always) {
        if (!always && block.size() < kBlockBytes) return;
        file.Write(block.data(), block.size());
        block.clear();
    };
    PutCaseHeader(block, c);
    std::vector<f32> shape(static_cast<std::size_t>(equations) + 1, 0.0f);
    for (const BuildingMode& mode : modes) {
        std::fill(shape.begin(), shape.end(), 0.0f);
        for (int floor = 1; floor <= b.Storeys; ++floor) {
            const f32 phi = static_cast<f32>(ShapeValue(b.Storeys, b.StoreyMass, mode.Order, floor));
            for (int column = 1; column <= b.NodesPerFloor; ++column)
                shape[static_cast<std::size_t>(
                    FloorEquation(b, floor, column, SwayFreedom(mode.Family), o.AllFreedoms))] = phi;
        }
        PutShapeBlock(block, c, shape);
        flush(false);
    }
    PutMassForm(block, c);
    if (c.MassForm == 1) {
        PutLumpedMasses(block, c);
    } else {
        for (std::int64_t i = 1; i <= equations; ++i) {
            PutSquareMassRow(block, c, i);
            flush(false);
        }
    }
    flush(true);
    file.Close();
}

struct CurvePoint {
    f32 Period;
    f32 Value;
};

// The curve in g. The flat curve makes the spectral displacement of every
// mode exactly 9.81 A / omega^2; its last point lies beyond the first mode's
// period, though a longer period would take the end value all the same. The
// design curve rises from the zero period acceleration to a plateau of 2.5
// times it between 0.1 and 0.5 s, then falls off as 1/T.
std::vector<CurvePoint> SpectrumPoints(const ExampleOptions& o, const std::vector<BuildingMode>& all) {
    std::vector<CurvePoint> points;
    if (o.Spectrum == SpectrumShape::Flat) {
        const double firstPeriod = all.empty() ? 0.0 : 2.0 * kPi / all.front().Omega;
        const double last = std::max(10.0, std::ceil(2.0 * firstPeriod));
        points.push_back({0.0f, static_cast<f32>(o.FlatValue)});
        points.push_back({static_cast<f32>(last), static_cast<f32>(o.FlatValue)});
        return points;
    }
    const double a0 = o.Zpa;
    const double plateau = 2.5 * a0;
    const double rise = 0.1;
    const double corner = 0.5;
    for (double t : {0.0, 0.05, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.8, 1.0,
                     1.2, 1.5,  2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 8.0, 10.0}) {
        double value = plateau;
        if (t < rise) value = a0 + (plateau - a0) * t / rise;
        if (t > corner) value = plateau * corner / t;
        points.push_back({static_cast<f32>(t), static_cast<f32>(value)});
    }
    return points;
}

void WriteSpectrum(const std::string& path, const std::vector<CurvePoint>& points) {
    PrintFile out(path, TextMode::Output);
    for (const CurvePoint& p : points) out.Line(GeneralText(p.Period) + "," + GeneralText(p.Value));
    out.Line("-1");
    out.Close();
}

// The options of a fresh dialog, with both horizontal directions switched on
// and the curve beside the model; the writer stores it as MODEL.URS1.
void WriteOptions(const ExampleOptions& o, const std::string& modelPath, const std::string& spectrumPath) {
    RunState state;
    state.Model.ModelPath = modelPath;
    state.Model.ModelName = o.Name;
    SetFreshOptions(state.Options);
    state.Options.OptionsNumber = o.OptionsNumber;
    state.Options.OptionsFile = modelPath + ".USM" + o.OptionsNumber;
    state.Options.FreqCase = o.FreqCase;
    state.Options.ResultsCase = o.ResultsCase;
    state.Options.SpectrumFile = spectrumPath;
    for (int d = 1; d <= 6; ++d) state.Options.DirOn(d) = 0;
    for (int d : o.Directions) state.Options.DirOn(d) = 1;
    state.Options.CombMethod = static_cast<i16>(o.CombMethod);
    WriteOptionsFile(state);
}

void WriteNameFile(const ExampleOptions& o, const std::string& modelPath) {
    std::string dir = o.Dir;
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    PrintFile out(dir + "/MODEL.NAM", TextMode::Output);
    out.Line("\"" + modelPath + "\",\"" + o.Name + "\"");
    out.Close();
}

void PrintSummary(const ExampleOptions& o, const std::string& modelPath,
                  const std::vector<BuildingMode>& modes, std::size_t curvePoints) {
    const ShearBuilding& b = o.Building;
    const std::int64_t equations = EquationCount(b, o.AllFreedoms);
    std::cout << "Uniform shear building of " << GeneralText(i32{b.Storeys}) << " storeys, storey mass "
              << GeneralText(b.StoreyMass) << ", stiffness x " << GeneralText(b.StiffnessX) << ", z "
              << GeneralText(b.StiffnessZ) << "\n";
    std::cout << "  " << modelPath << ".XSZ\n";
    std::cout << "  " << modelPath << ".XYZ  " << GeneralText(i32{NodeCount(b)}) << " nodes, "
              << GeneralText(i32{b.NodesPerFloor}) << " a floor\n";
    std::cout << "  " << modelPath << ".H" << o.FreqCase << "  " << GeneralText(i32(modes.size()))
              << " modes, " << GeneralText(f64(equations)) << " equations, "
              << (o.Mass == MassForm::Lumped ? "lumped" : "square") << " mass\n";
    std::cout << "  " << modelPath << ".URS1  " << (o.Spectrum == SpectrumShape::Flat ? "flat" : "design")
              << " spectrum, " << GeneralText(i32(curvePoints)) << " points\n";
    std::cout << "  " << modelPath << ".USM" << o.OptionsNumber << "  frequency case " << o.FreqCase
              << ", results case " << o.ResultsCase << ", directions ";
    for (int d : o.Directions) std::cout << d;
    std::cout << ", combination " << kCombMethods[o.CombMethod] << "\n";
    if (o.NameFile) std::cout << "  MODEL.NAM\n";
    std::cout << "  Mode  Sway      n         Omega (rad/s)        Frequency (Hz)            Period (s)\n";
    for (std::size_t i = 0; i < modes.size(); ++i) {
        const BuildingMode& mode = modes[i];
        std::cout << PadLeft(GeneralText(i32(i + 1)), 6) << "  "
                  << PadRight(mode.Family == Sway::X ? "x" : "z", 4)
                  << PadLeft(GeneralText(i32{mode.Order}), 7) << "  " << PadLeft(GeneralText(mode.Omega), 20)
                  << "  " << PadLeft(GeneralText(mode.Omega / (2.0 * kPi)), 20) << "  "
                  << PadLeft(GeneralText(2.0 * kPi / mode.Omega), 20) << "\n";
    }
}

// The usage under the name the tool was started by: the build calls it
// make_example_model, an install tremodal-example-model.
std::string Usage(const std::string& program) {
    std::string usage = kUsage;
    const std::size_t at = usage.find("%s");
    return usage.replace(at, 2, program);
}

int Run(const std::string& program, const std::vector<std::string>& args) {
    ExampleOptions o;
    try {
        o = ParseArguments(args);
    } catch (const HelpAsked&) {
        std::cout << Usage(program);
        return 0;
    } catch (const UsageError& error) {
        std::cerr << program << ": " << error.Text << "; see " << program << " --help\n";
        return 2;
    }
    try {
        std::filesystem::create_directories(o.Dir);
        const std::string modelPath = ModelPath(o);
        const std::vector<BuildingMode> all = SortedModes(o.Building);
        const std::vector<BuildingMode> modes = SortedModes(o.Building, o.Modes);
        const std::vector<CurvePoint> curve = SpectrumPoints(o, all);
        const std::string spectrumPath = modelPath + ".URS1";

        WriteSizeFile(o, modelPath);
        WriteCoordinates(o, modelPath);
        WriteFrequencyCase(o, modelPath, modes);
        WriteSpectrum(spectrumPath, curve);
        WriteOptions(o, modelPath, spectrumPath);
        if (o.NameFile) WriteNameFile(o, modelPath);
        PrintSummary(o, modelPath, modes, curve.size());
    } catch (const Failure& failure) {
        std::cerr << program << ": failure " << GeneralText(i32{failure.Number()}) << ": " << failure.what()
                  << "\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << program << ": " << error.what() << "\n";
        return 1;
    }
    return 0;
}

}  // namespace
}  // namespace tremodal::example

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    const std::string program =
        argc > 0 ? std::filesystem::path(argv[0]).filename().string() : "make_example_model";
    return tremodal::example::Run(program, args);
}
