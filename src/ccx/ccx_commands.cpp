#include "ccx/ccx_commands.h"

#include <sys/wait.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <vector>

#include "base/binary_files.h"
#include "base/checked_math.h"
#include "base/number_text.h"
#include "base/text_files.h"
#include "ccx/ccx_files.h"
#include "frequency_case_writer.h"

namespace tremodal::ccx {

namespace fs = std::filesystem;

namespace {

// The node set of the deck's own nodes, which the added steps print.
constexpr const char* kNodeSet = "TREMODALNODES";
// A freedom moves when some mode moves it by more than this share of the
// largest displacement of all the modes: restrained freedoms print as 0 or as
// noise of the order of 1e-20.
constexpr f64 kMoving = 1e-10;
// The mass matrix counts as diagonal over the equations when no term beside
// the diagonal reaches this share of the equation's own mass: far below the
// 7 digits that ccx prints.
constexpr f64 kDiagonal = 1e-9;
constexpr f64 kPi = 3.14159265358979323846;

// ccx failed, or left no results: what failed and ccx's last lines.
struct CcxFailed {
    std::string What;
};

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) Fail(kPathAccessError, path + ": cannot be written");
}

std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// The last few lines of ccx's output that say something.
std::string LastLines(const std::string& text, std::size_t count) {
    std::vector<std::string> lines;
    std::stringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!Trim(line).empty()) lines.push_back("  " + RTrim(line));
    }
    if (lines.size() > count) lines.erase(lines.begin(), lines.end() - std::ptrdiff_t(count));
    std::string last;
    for (const std::string& line : lines) last += line + "\n";
    return last.empty() ? "  (none)\n" : last;
}

// The folder ccx works in: under $TMPDIR, removed when the run went well.
class Scratch {
public:
    explicit Scratch(std::string& keptIn) {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/tremodal-ccx-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) Fail(kPathAccessError, pattern + ": cannot be made");
        path_ = pattern;
        keptIn = path_;
    }
    ~Scratch() {
        if (done_) {
            std::error_code ignored;
            fs::remove_all(path_, ignored);
        }
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    std::string File(const std::string& name) const { return path_ + "/" + name; }
    void Done() { done_ = true; }

    // Runs ccx on job.inp; its output goes to job.out.
    void Run(const std::string& job, const std::string& what) const {
        const char* named = std::getenv("CCX");
        const std::string ccx = named && *named ? named : "ccx";
        const std::string command = "cd " + Quoted(path_) + " && exec " + Quoted(ccx) + " " + job + " > " +
                                    job + ".out 2>&1 < /dev/null";
        const int status = std::system(command.c_str());
        std::string failed;
        if (status == -1) {
            failed = "could not be started";
        } else if (WIFSIGNALED(status)) {
            failed = "ended on signal " + GeneralText(i32(WTERMSIG(status)));
        } else if (WEXITSTATUS(status) == 127) {
            failed = "was not found (" + ccx + "; put ccx on PATH or name it in $CCX)";
        } else if (WEXITSTATUS(status) != 0) {
            failed = "failed with exit status " + GeneralText(i32(WEXITSTATUS(status)));
        }
        if (!failed.empty()) {
            throw CcxFailed{"ccx " + failed + " on " + what + "; its last lines:\n" +
                            LastLines(ReadText(File(job + ".out")), 6)};
        }
    }

private:
    std::string path_;
    bool done_ = false;
};

// The deck as given, with the set of its nodes, ready for steps.
std::string JobDeck(const std::string& deckText, const Deck& deck) {
    std::string job = deckText;
    if (!job.empty() && job.back() != '\n') job += "\n";
    job += "*NSET, NSET=" + std::string(kNodeSet) + "\n";
    for (std::size_t i = 0; i < deck.Nodes.size(); ++i) {
        job += GeneralText(deck.Nodes[i].Number) + (i % 10 == 9 || i + 1 == deck.Nodes.size() ? "\n" : ", ");
    }
    return job;
}

// Files written under temporary names beside the model, renamed together at
// the end, removed when anything fails before.
class PendingFiles {
public:
    ~PendingFiles() {
        for (const auto& [temporary, final] : files_) {
            std::error_code ignored;
            fs::remove(temporary, ignored);
        }
    }
    std::string Add(const std::string& path) {
        const std::string temporary = path + ".tremodal-ccx";
        if (fs::exists(temporary)) fs::remove(temporary);
        files_.emplace_back(temporary, path);
        return temporary;
    }
    void Commit() {
        for (const auto& [temporary, final] : files_) fs::rename(temporary, final);
        files_.clear();
    }

private:
    std::vector<std::pair<std::string, std::string>> files_;
};

void WriteBinary(const std::string& path, const std::vector<unsigned char>& bytes) {
    BinaryFile file(path);
    file.Write(bytes.data(), bytes.size());
    file.Close();
}

// Field 2 of the size file may hold no comma or quote.
std::string FieldText(std::string text) {
    for (char& c : text) {
        if (c == ',' || c == '"' || c == '\r' || c == '\n') c = ' ';
    }
    text = Trim(text);
    return text.empty() ? "-" : text;
}

// The summary's number: 7 digits.
std::string Figure(f64 value) { return GeneralText(f32(value)); }

// One equation of the frequency case: a moving translation of a deck node.
struct Equation {
    i32 Node = 0;
    int Axis = 0;  // suite axis 0..2
    i32 Ccx = 0;   // ccx's equation, 0 when it has none
    f64 Mass = 0;  // lumped: the sum of its row over the equations of its axis
    f64 Diagonal = 0;
};

// The deck's nodes by number.
std::vector<const DeckNode*> NodesByNumber(const Deck& deck) {
    std::vector<const DeckNode*> byNumber(std::size_t(deck.LastNode) + 1, nullptr);
    for (const DeckNode& node : deck.Nodes) byNumber[std::size_t(node.Number)] = &node;
    return byNumber;
}

int Report(std::ostream& err, const std::string& what, const std::string& keptIn) {
    err << "tremodal-ccx: " << what;
    if (what.empty() || what.back() != '\n') err << "\n";
    if (!keptIn.empty()) err << "  ccx's files are kept in " << keptIn << "\n";
    return 1;
}

// Runs a command's body: whatever it fails with is told on err, with the
// folder where ccx's files are kept, and ends it with status 1.
int Guarded(std::ostream& err, const std::function<int(std::string& keptIn)>& body) {
    std::string keptIn;
    try {
        return body(keptIn);
    } catch (const CcxFailed& failed) {
        return Report(err, failed.What, keptIn);
    } catch (const Failure& failure) {
        return Report(err, failure.what(), keptIn);
    } catch (const std::exception& error) {
        return Report(err, error.what(), keptIn);
    }
}

// The mode shapes ccx printed, on the suite's axes.
struct SuiteShapes {
    const std::vector<NodeValues>& Blocks;
    AxisMap Axes;
    f64 operator()(std::size_t mode, i32 node, int axis) const {
        const auto at = Blocks[mode].find(node);
        if (at == Blocks[mode].end()) return 0.0;
        return Axes.DeckSign[axis] * at->second[std::size_t(Axes.DeckAxis[axis])];
    }
};

// The equations: the translations of the deck's nodes that some mode moves,
// node by node, x, y, z; each with ccx's equation of the freedom, the first
// of the .dof list that names it. The equation map of every node.
std::vector<Equation> MovingTranslations(const Deck& deck, const SuiteShapes& shape, std::size_t first,
                                         std::size_t modes, const std::vector<Freedom>& dofs,
                                         std::vector<std::array<std::int32_t, 6>>& nodeDof) {
    std::map<std::pair<i32, i32>, i32> ccxEquation;
    for (std::size_t i = 0; i < dofs.size(); ++i) {
        if (dofs[i].Number >= 1 && dofs[i].Number <= 3)
            ccxEquation.emplace(std::make_pair(dofs[i].Node, dofs[i].Number), i32(i + 1));
    }
    f64 largest = 0;
    for (std::size_t m = first; m < modes; ++m) {
        for (const auto& [node, values] : shape.Blocks[m]) {
            for (const f64 v : values) largest = std::max(largest, std::fabs(v));
        }
    }
    std::vector<Equation> equations;
    nodeDof.assign(std::size_t(deck.LastNode), {0, 0, 0, 0, 0, 0});
    for (const DeckNode& node : deck.Nodes) {
        for (int axis = 0; axis < 3; ++axis) {
            bool moves = false;
            for (std::size_t m = first; m < modes && !moves; ++m)
                moves = std::fabs(shape(m, node.Number, axis)) > kMoving * largest;
            if (!moves) continue;
            Equation e;
            e.Node = node.Number;
            e.Axis = axis;
            const auto found = ccxEquation.find({node.Number, shape.Axes.DeckAxis[axis] + 1});
            if (found != ccxEquation.end()) e.Ccx = found->second;
            equations.push_back(e);
            nodeDof[std::size_t(node.Number - 1)][std::size_t(axis)] =
                NarrowI32(std::int64_t(equations.size()));
        }
    }
    return equations;
}

// Each equation's mass: its row of ccx's mass matrix summed over the
// equations of its axis, which keeps each direction's participation of a
// consistent mass. True when the matrix is diagonal over the equations: no
// term beside the diagonal reaches kDiagonal of the equation's own mass.
bool LumpByRows(std::vector<Equation>& equations, const std::vector<MatrixTerm>& terms) {
    i32 highest = 0;
    for (const MatrixTerm& t : terms) highest = std::max({highest, t.Row, t.Column});
    std::vector<Equation*> ofCcx(std::size_t(highest) + 1, nullptr);
    for (Equation& e : equations) {
        if (e.Ccx > 0 && e.Ccx <= highest) ofCcx[std::size_t(e.Ccx)] = &e;
    }
    for (const MatrixTerm& t : terms) {
        if (t.Row == t.Column && ofCcx[std::size_t(t.Row)]) ofCcx[std::size_t(t.Row)]->Diagonal += t.Value;
    }
    bool diagonal = true;
    for (const MatrixTerm& t : terms) {
        Equation* row = ofCcx[std::size_t(t.Row)];
        Equation* column = ofCcx[std::size_t(t.Column)];
        if (t.Row == t.Column) {
            if (row) row->Mass += t.Value;
            continue;
        }
        for (const Equation* e : {row, column}) {
            if (e && std::fabs(t.Value) > kDiagonal * std::fabs(e->Diagonal)) diagonal = false;
        }
        if (row && column && row->Axis == column->Axis) {
            row->Mass += t.Value;
            column->Mass += t.Value;
        }
    }
    return diagonal;
}

// The size file: an unused text, the model's name and title, three texts
// on how it was made, the size figures (no elements; the nodes up to the
// highest number), seven texts and the unit flag 0.
void WriteSizeFile(const std::string& path, const ModesRequest& request, const Deck& deck, i32 equations,
                   std::size_t modes, bool diagonal) {
    const std::string deckName = fs::path(request.Deck).filename().string();
    PrintFile size(path, TextMode::Output);
    size.Line("CALCULIX MODEL");
    size.Line(FieldText(fs::path(request.Model).filename().string()));
    size.Line(FieldText(deck.Title.empty() ? deckName : deck.Title));
    size.Line("deck " + FieldText(deckName));
    size.Line(std::string("vertical ") + (request.Up == Vertical::Z ? "z" : "y"));
    size.Line("written by tremodal-ccx");
    size.Line("0,0," + GeneralText(deck.LastNode) + ",0");
    size.Line("equations " + GeneralText(equations));
    size.Line("modes " + GeneralText(i32(modes)));
    size.Line("frequency case " + request.Case);
    size.Line(diagonal ? "lumped mass" : "consistent mass lumped by rows");
    for (int k = 0; k < 3; ++k) size.Line("-");
    size.Line("0");
    size.Close();
}

// The coordinate records of nodes 1 to the highest, on the suite's axes;
// numbers the deck does not use get zeros.
std::vector<unsigned char> CoordinateRecords(const Deck& deck, const AxisMap& axes) {
    std::vector<unsigned char> records;
    const std::vector<const DeckNode*> byNumber = NodesByNumber(deck);
    for (i32 n = 1; n <= deck.LastNode; ++n) {
        const DeckNode* node = byNumber[std::size_t(n)];
        PutI16(records, NarrowI16(n));
        for (int axis = 0; axis < 3; ++axis) {
            const f64 at = node ? axes.DeckSign[axis] * node->At[std::size_t(axes.DeckAxis[axis])] : 0.0;
            PutF32(records, StoreF32(at));
        }
    }
    return records;
}

}  // namespace

AxisMap AxesFor(Vertical vertical) {
    if (vertical == Vertical::Z) return AxisMap{{0, 2, 1}, {1, 1, -1}};
    return AxisMap{{0, 1, 2}, {1, 1, 1}};
}

int RunModes(const ModesRequest& request, std::ostream& out, std::ostream& err) {
    return Guarded(err, [&](std::string& keptIn) {
        const Deck deck = ReadDeck(request.Deck);
        if (deck.Nodes.empty()) Fail(kTypeMismatch, request.Deck + ": no *NODE lines");
        Scratch scratch(keptIn);
        const std::string job = JobDeck(ReadText(request.Deck), deck);
        const std::string modes = GeneralText(request.Modes);
        WriteText(scratch.File("modes.inp"), job + "*STEP\n*FREQUENCY\n" + modes +
                                                 "\n*NODE PRINT, NSET=" + kNodeSet + "\nU\n*END STEP\n");
        WriteText(scratch.File("mass.inp"),
                  job + "*STEP\n*FREQUENCY, SOLVER=MATRIXSTORAGE\n" + modes + "\n*END STEP\n");
        scratch.Run("modes", "the eigen-solution");
        scratch.Run("mass", "the mass matrix");

        const std::string dat = ReadText(scratch.File("modes.dat"));
        const ModalTables tables = ReadModalTables(dat);
        const std::vector<NodeValues> blocks = ReadPrintedDisplacements(dat);
        const std::size_t modeCount = tables.Eigenvalues.size();
        if (modeCount == 0 || blocks.size() < modeCount || tables.EffectiveMass.size() < modeCount) {
            throw CcxFailed{"ccx left no modes in modes.dat (eigenvalues, shapes and effective masses)"};
        }
        // ccx lists the modes by ascending eigenvalue; those of 0 or below
        // (rigid body motion, or spurious ones of near massless members)
        // have no frequency and are left out.
        std::size_t first = 0;
        while (first < modeCount && !(tables.Eigenvalues[first] > 0)) ++first;
        if (first == modeCount) throw CcxFailed{"ccx found no mode with an eigenvalue above 0"};
        const std::vector<Freedom> dofs = ReadDofList(ReadText(scratch.File("mass.dof")));
        const std::vector<MatrixTerm> terms = ReadMatrixTerms(ReadText(scratch.File("mass.mas")));
        if (dofs.empty() || terms.empty()) throw CcxFailed{"ccx left no mass matrix (mass.dof, mass.mas)"};

        const AxisMap axes = AxesFor(request.Up);
        const SuiteShapes shape{blocks, axes};
        std::vector<std::array<std::int32_t, 6>> nodeDof;
        std::vector<Equation> equations = MovingTranslations(deck, shape, first, modeCount, dofs, nodeDof);
        if (equations.empty()) throw CcxFailed{"no node of the deck moves in the modes ccx found"};
        const bool diagonal = LumpByRows(equations, terms);

        // What TreModal will report against what ccx printed: the mass of
        // each direction, and each mode's effective mass (the square of
        // the sum of mass times shape) as a share of ccx's total.
        std::array<f64, 3> caseTotal{}, ccxTotal{}, worst{};
        for (const Equation& e : equations) caseTotal[std::size_t(e.Axis)] += e.Mass;
        for (int axis = 0; axis < 3; ++axis) {
            const std::size_t deckAxis = std::size_t(axes.DeckAxis[axis]);
            ccxTotal[std::size_t(axis)] = tables.TotalMass[deckAxis];
            for (std::size_t m = first; m < modeCount && ccxTotal[std::size_t(axis)] > 0; ++m) {
                f64 gamma = 0;
                for (const Equation& e : equations) {
                    if (e.Axis == axis) gamma += e.Mass * shape(m, e.Node, axis);
                }
                const f64 share = std::fabs(gamma * gamma - tables.EffectiveMass[m][deckAxis]) /
                                  ccxTotal[std::size_t(axis)];
                worst[std::size_t(axis)] = std::max(worst[std::size_t(axis)], share);
            }
        }

        example::FrequencyCaseData c;
        c.CaseNodes = deck.LastNode;
        c.NumDof = NarrowI32(std::int64_t(equations.size()));
        c.DirMass = {StoreF32(caseTotal[0]), StoreF32(caseTotal[1]), StoreF32(caseTotal[2]), 0, 0, 0};
        c.Eigenvalues.assign(tables.Eigenvalues.begin() + std::ptrdiff_t(first), tables.Eigenvalues.end());
        c.NodeDof = nodeDof;
        for (std::size_t m = first; m < modeCount; ++m) {
            std::vector<f32> values(equations.size() + 1, 0.0f);
            for (std::size_t e = 0; e < equations.size(); ++e)
                values[e + 1] = StoreF32(shape(m, equations[e].Node, equations[e].Axis));
            c.Shapes.push_back(std::move(values));
        }
        c.MassForm = 1;
        for (const Equation& e : equations) c.Masses.push_back(e.Mass);

        PendingFiles pending;
        WriteSizeFile(pending.Add(request.Model + ".XSZ"), request, deck, c.NumDof, modeCount - first,
                      diagonal);
        WriteBinary(pending.Add(request.Model + ".XYZ"), CoordinateRecords(deck, axes));
        const std::string caseBytes = example::FrequencyCaseBytes(c);
        WriteBinary(pending.Add(request.Model + ".H" + request.Case),
                    std::vector<unsigned char>(caseBytes.begin(), caseBytes.end()));
        pending.Commit();
        scratch.Done();

        const f64 low = std::sqrt(tables.Eigenvalues[first]);
        const f64 high = std::sqrt(std::max(0.0, tables.Eigenvalues.back()));
        out << "tremodal-ccx modes: " << request.Deck << "\n";
        out << "  nodes " << GeneralText(i32(deck.Nodes.size())) << " (numbered up to "
            << GeneralText(deck.LastNode) << "), equations " << GeneralText(c.NumDof) << ", modes "
            << GeneralText(i32(modeCount - first)) << "\n";
        if (first > 0) {
            out << "  ccx's modes 1 to " << GeneralText(i32(first))
                << " have an eigenvalue of 0 or below and are left out: mode 1 of the frequency case is "
                   "ccx's "
                   "mode "
                << GeneralText(i32(first + 1)) << "\n";
        }
        out << "  frequencies " << Figure(low / (2 * kPi)) << " to " << Figure(high / (2 * kPi)) << " Hz ("
            << Figure(low) << " to " << Figure(high) << " rad/s)\n";
        out << "  total mass x " << Figure(caseTotal[0]) << ", y " << Figure(caseTotal[1]) << ", z "
            << Figure(caseTotal[2]) << "; CalculiX's x " << Figure(ccxTotal[0]) << ", y "
            << Figure(ccxTotal[1]) << ", z " << Figure(ccxTotal[2]) << " (y is vertical)\n";
        if (diagonal) {
            out << "  mass: diagonal over the equations: the frequency case is exact\n";
        } else {
            out << "  mass: consistent, not diagonal: written lumped, each equation's mass the sum of its "
                   "row\n"
                   "  over the equations of its direction, which keeps each direction's participation;\n"
                   "  the missing mass, worked out equation by equation, and the rotational directions\n"
                   "  follow these lumped masses, not the consistent matrix\n";
        }
        const f64 worstAll = std::max({worst[0], worst[1], worst[2]});
        out << "  effective masses TreModal will report differ from CalculiX's by at most "
            << Figure(100 * worstAll) << " % of the total mass (x " << Figure(100 * worst[0]) << " %, y "
            << Figure(100 * worst[1]) << " %, z " << Figure(100 * worst[2]) << " %)\n";
        out << "  wrote " << request.Model << ".XSZ, .XYZ and .H" << request.Case << "\n";
        return 0;
    });
}

namespace {

// The node count of the model's size file: field 9 of 18.
i32 SizeFileNodes(const std::string& path) {
    TextInput in(path);
    for (int k = 0; k < 6; ++k) in.ReadTextField();
    in.ReadSingleField();
    in.ReadSingleField();
    const f64 nodes = in.ReadSingleField();
    if (!(nodes >= 0 && nodes <= kMaxNode)) Fail(kSubscriptOutOfRange, path + ": node count out of range");
    return i32(nodes);
}

// The cases of the run comb: the count, then a case and a flag for each.
std::vector<std::string> RunCombCases(const std::string& path) {
    TextInput in(path);
    const f64 count = in.ReadNumberField();
    if (!(count >= 0 && count <= kMaxNode)) Fail(kSubscriptOutOfRange, path + ": case count out of range");
    std::vector<std::string> cases;
    for (i32 k = 0; k < i32(count); ++k) {
        cases.push_back(GeneralText(RoundToI32(in.ReadNumberField())));
        in.ReadNumberField();
    }
    return cases;
}

// The node loads of a load case file: "NF,node,Fx,Fy,Fz", an empty column
// being no load; the sum where a node comes twice. Suite axes.
std::map<i32, std::array<f64, 3>> NodeLoads(const std::string& path,
                                            const std::vector<const DeckNode*>& nodes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) Fail(kFileNotFound, path + ": no such file");
    std::map<i32, std::array<f64, 3>> loads;
    i32 lineNumber = 0;
    for (std::string line; std::getline(in, line);) {
        ++lineNumber;
        if (line.rfind("NF,", 0) != 0) continue;
        std::vector<std::string> fields;
        std::stringstream split(line);
        for (std::string field; std::getline(split, field, ',');) fields.push_back(Trim(field));
        const f64 node = Val(fields.size() > 1 ? fields[1] : "");
        if (node < 1 || node >= f64(nodes.size()) || !nodes[std::size_t(node)]) {
            Fail(kSubscriptOutOfRange, path + " line " + GeneralText(lineNumber) + ": node " +
                                           (fields.size() > 1 ? fields[1] : "") + " is not in the deck");
        }
        std::array<f64, 3>& load = loads[i32(node)];
        for (std::size_t k = 0; k < 3; ++k) {
            if (k + 2 < fields.size()) load[k] += Val(fields[k + 2]);
        }
    }
    return loads;
}

}  // namespace

int RunSolve(const SolveRequest& request, std::ostream& out, std::ostream& err) {
    return Guarded(err, [&](std::string& keptIn) {
        const Deck deck = ReadDeck(request.Deck);
        if (deck.Nodes.empty()) Fail(kTypeMismatch, request.Deck + ": no *NODE lines");
        const i32 nodeCount = SizeFileNodes(request.Model + ".XSZ");
        const std::vector<std::string> cases = RunCombCases(request.Model + ".C0");
        const std::vector<const DeckNode*> byNumber = NodesByNumber(deck);
        const AxisMap axes = AxesFor(request.Up);
        std::string steps;
        for (const std::string& c : cases) {
            steps += "*STEP\n*STATIC\n*CLOAD, OP=NEW\n";
            // A zero load keeps the keyword's data from being empty.
            steps += GeneralText(deck.Nodes.front().Number) + ", 1, 0\n";
            for (const auto& [node, load] : NodeLoads(request.Model + ".L" + c, byNumber)) {
                std::array<f64, 3> deckLoad{};
                for (int axis = 0; axis < 3; ++axis)
                    deckLoad[std::size_t(axes.DeckAxis[axis])] +=
                        axes.DeckSign[axis] * load[std::size_t(axis)];
                for (std::size_t k = 0; k < 3; ++k) {
                    if (deckLoad[k] != 0)
                        steps += GeneralText(node) + ", " + GeneralText(i32(k + 1)) + ", " +
                                 DeckNumber(deckLoad[k]) + "\n";
                }
            }
            steps += "*NODE PRINT, NSET=" + std::string(kNodeSet) + "\nU\n*END STEP\n";
        }
        if (cases.empty()) {
            out << "tremodal-ccx solve: the run comb " << request.Model
                << ".C0 names no case; nothing to solve\n";
            return 0;
        }
        Scratch scratch(keptIn);
        WriteText(scratch.File("solve.inp"), JobDeck(ReadText(request.Deck), deck) + steps);
        scratch.Run("solve", "the static cases");
        const std::vector<NodeValues> solved = ReadPrintedDisplacements(ReadText(scratch.File("solve.dat")));
        if (solved.size() != cases.size()) {
            throw CcxFailed{"ccx left " + GeneralText(i32(solved.size())) +
                            " solved cases in solve.dat for " + GeneralText(i32(cases.size())) + " steps"};
        }
        PendingFiles pending;
        f64 largest = 0;
        for (std::size_t k = 0; k < cases.size(); ++k) {
            std::vector<unsigned char> bytes(24, 0);
            for (i32 n = 1; n <= nodeCount; ++n) {
                const auto at = solved[k].find(n);
                for (int axis = 0; axis < 6; ++axis) {
                    f64 value = 0;
                    if (axis < 3 && at != solved[k].end())
                        value = axes.DeckSign[axis] * at->second[std::size_t(axes.DeckAxis[axis])];
                    largest = std::max(largest, std::fabs(value));
                    PutF32(bytes, StoreF32(value));
                }
            }
            WriteBinary(pending.Add(request.Model + ".R" + cases[k]), bytes);
        }
        pending.Commit();
        scratch.Done();
        out << "tremodal-ccx solve: " << request.Deck << "\n  solved cases";
        for (const std::string& c : cases) out << " " << c;
        out << " (" << GeneralText(nodeCount) << " nodes; largest displacement " << Figure(largest) << ")\n";
        out << "  wrote";
        for (const std::string& c : cases) out << " " << request.Model << ".R" << c;
        out << "\n";
        return 0;
    });
}

}  // namespace tremodal::ccx
