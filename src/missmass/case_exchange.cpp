#include "missmass/case_exchange.h"

#include <vector>

#include "base/binary_files.h"
#include "base/checked_math.h"
#include "base/host.h"
#include "base/number_text.h"
#include "base/text_files.h"

namespace tremodal {

namespace {

// The solver's results file opens with a header of its own, which nothing
// here looks at; the node results follow, six singles a node.
constexpr std::int64_t kResultsHeaderBytes = 24;
constexpr std::int64_t kNodeResultBytes = 6 * 4;

// The pseudo-mode takes the frequency of the curve's first point. The suite
// has always used this seven-digit 2 pi here.
constexpr f64 kPseudoModeTwoPi = 6.283185;

void ReadSolvedCase(RunState& s, BinaryFile& file) {
    const i16 nodes = RoundToI16(s.Model.NumNodes);
    // A file that ends inside the node results was not finished by the
    // solver: take it as invalid rather than fill the missing nodes with 0.
    const std::int64_t needed = kResultsHeaderBytes + std::int64_t{nodes} * kNodeResultBytes;
    if (file.Size() < needed) Fail(62, "solved missing mass case ends early");
    file.Seek(kResultsHeaderBytes + 1);
    std::vector<unsigned char> block(static_cast<std::size_t>(nodes) * kNodeResultBytes);
    if (!block.empty()) file.Read(block.data(), block.size());
    const unsigned char* at = block.data();
    for (i32 n = 1; n <= nodes; ++n) {
        for (int k = 1; k <= 6; ++k, at += 4) {
            // A NaN or infinite value from a damaged file must not reach the
            // response file: StoreF32 refuses it.
            s.MissMassNodal(n, k) = StoreF32(GetF32(at));
        }
    }
}

}  // namespace

void WriteMissMassComb(RunState& s) {
    const ResponseOptions& o = s.Options;
    const f64 startCase = Val(o.MissMassStartCase);
    // Only directions switched on with exactly 1 go to the solver.
    i16 cases[4] = {0, 0, 0, 0};
    i16 count = 0;
    for (int d = 1; d <= 3; ++d) {
        if (o.DirOn(d) != 1) continue;
        count = AddI16(count, 1);
        cases[count] = RoundToI16(startCase + d - 1);
    }

    PrintFile out(s.Model.ModelPath + ".C0", TextMode::Output);
    out.Line(PrintItem(count));
    for (int k = 1; k <= count; ++k) {
        out.Item(GeneralText(cases[k])).NextZone().Item(PrintItem(i16{1})).EndLine();
    }
    out.Line("Missing Mass Run Comb");
    out.Close();
}

void ReadMissMassResults(RunState& s) {
    const std::string caseNo = Trim(s.MissMassCase);
    const std::string path = s.Model.ModelPath + ".R" + caseNo;
    std::unique_ptr<BinaryFile> file;
    try {
        // The binary open would create a missing file; the text open is what
        // finds that the solver left none.
        TextInput(path).Close();
        file = std::make_unique<BinaryFile>(path);
        ReadSolvedCase(s, *file);
        file->Close();
        file.reset();
        s.MissMassRead = 1;

        const i32 pseudo = AddI32(s.Freq.NumModes, 1);
        s.Freq.Omega(pseudo) = StoreF32(Div(kPseudoModeTwoPi, s.Curve.CurvePeriod(1)));
        s.ModalDamping(pseudo) = s.ModalDamping(1);
        // By equation: a freedom without an equation lands in slot 0, and
        // where two freedoms share an equation the later one stands.
        const i16 nodes = RoundToI16(s.Model.NumNodes);
        for (i32 n = 1; n <= nodes; ++n) {
            for (int k = 1; k <= 6; ++k) s.MissMassDof(s.Freq.NodeDof(n, k)) = s.MissMassNodal(n, k);
        }
    } catch (const Failure&) {
        file.reset();
        s.MissMassRead = 0;
        s.Ui->ShowMessage("Missing Mass Case " + caseNo + " Results not found or invalid", "TREMODAL");
    }
}

}  // namespace tremodal
