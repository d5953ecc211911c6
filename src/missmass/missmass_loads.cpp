#include "missmass/missmass_loads.h"

#include "base/checked_math.h"
#include "base/file_system.h"
#include "base/number_text.h"
#include "base/text_files.h"
#include "results/case_list.h"

namespace tremodal {

namespace {

// The load line of a node: the translational load L in the columns Fx, Fy,
// Fz. A lumped mass model takes a vertical load in Fy and splits a
// horizontal one over Fx and Fz by the principal angle; the square mass form
// puts direction 1 unsplit in Fx and direction 2 in the Fz column.
std::string LoadLine(const RunState& s, i16 d, i16 node, f32 load) {
    const std::string head = "NF," + GeneralText(node) + ",";
    const std::string alone = GeneralText(load);
    // The split loads are doubles and print with up to 15 digits.
    const std::string split =
        GeneralText(f64(load) * s.CosAngle) + ",," + GeneralText(f64(load) * s.SinAngle);
    if (s.Freq.MassForm == 1) return head + (d == 2 ? "," + alone : split);
    if (d == 1) return head + alone;
    if (d == 2) return head + ",," + alone;
    return head + split;
}

}  // namespace

void WriteMissMassCase(RunState& s, i16 d) {
    const ResponseOptions& o = s.Options;
    const std::string description =
        "SpectResp " + Trim(o.OptionsNumber) + ":FrqCase " + o.FreqCase + " Missing Mass";
    ResetCase(s, s.MissMassCase);

    PrintFile out(s.Model.ModelPath + ".L" + LTrim(s.MissMassCase), TextMode::Output);
    // Every direction's file names the first case of the set on its LCASE
    // line; the solver files the results under the case of the file.
    WriteReformatHead(s, out, o.MissMassStartCase, description);
    out.Line("ACOM,");
    out.Line("ACOM, Seismic Response Spectrum Analysis");
    out.Line("ACOM, Missing Mass Case");

    // The load of a node comes from the last of its translational freedoms
    // that the direction moves; nothing is summed over the freedoms. A
    // freedom without an equation reads slot 0, whose residual mass is 0.
    Array1<f32> load(3);
    const i16 nodes = RoundToI16(s.Model.NumNodes);
    for (i32 n = 1; n <= nodes; ++n) {
        bool active = false;
        for (int k = 1; k <= 3; ++k) {
            const i32 e = s.Freq.NodeDof(n, k);
            if (s.Excitation(e) == 0) continue;
            active = true;
            load(d) = StoreF32(f64(s.MissMassFactor) * s.ResidualMass(e) * s.Curve.ZpaValue * o.DirFactor(d));
        }
        if (active && load(d) != 0) out.Line(LoadLine(s, d, i16(n), load(d)));
    }
    out.Close();

    // The case enters the load case list as a load case to be solved.
    const i16 caseNumber = RoundToI16(StrictNumber(s.MissMassCase));
    NslRecord record = ReadNslRecord(s, caseNumber);
    record.Flag[1] = 1;
    record.Flag[2] = 0;
    record.Flag[3] = 0;
    record.Description = description;
    record.Stamp = DateTimeText(CurrentTime());
    WriteNslRecord(s, caseNumber, record);
}

}  // namespace tremodal
