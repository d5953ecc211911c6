#include "run/analysis_driver.h"

#include "base/checked_math.h"
#include "base/host.h"
#include "base/number_text.h"
#include "base/text_files.h"
#include "base/vector_state.h"
#include "input/frequency_case.h"
#include "missmass/case_exchange.h"
#include "missmass/missmass_loads.h"
#include "modal/base_shear.h"
#include "modal/excitation.h"
#include "modal/modal_response.h"
#include "modal/participation.h"
#include "modal/response_curve.h"
#include "results/case_list.h"
#include "results/closing_report.h"
#include "results/curve_report.h"
#include "results/participation_report.h"
#include "results/result_case_files.h"

namespace tremodal {

namespace {

constexpr const char* kMessageTitle = "TREMODAL";

// One direction pass: excitation, participation and its report, the solved
// missing mass case in a second pass, the modal response, the base shear,
// and the missing mass load case in a first pass.
void RunDirection(RunState& s, i16 d) {
    ResponseOptions& o = s.Options;
    BuildExcitation(s, d);
    if (s.Freq.MassForm == 0) ComputeParticipationSquare(s);
    if (s.Freq.MassForm == 1) ComputeParticipationLumped(s);
    if (s.ExcitedMass == 0) s.ExcitedMass = s.Freq.DirMass(1);
    ReportParticipation(s, d);

    // The loop over modes counts in 16 bits in every file of the suite.
    NarrowI16(s.Freq.NumModes);

    s.MissMassCase = GeneralText(Val(o.MissMassStartCase) + d - 1);
    s.MissMassRead = 0;
    if (o.MissMassOn == 1 && s.RunPhase == 2) ReadMissMassResults(s);
    // While the first pass writes its responses, the participation sums of
    // the passes to come are worked out beside it, in one go.
    if (!s.Ahead) {
        std::vector<i16> later;
        for (i16 next = d + 1; next <= 6; ++next) {
            if (o.DirOn(next) != 0) later.push_back(next);
        }
        StartParticipationAhead(s, later);
    }
    ComputeModalResponse(s, d);
    CombineBaseShear(s, d);
    s.MissMassLoad(d) = StoreF32(f64(s.MissMassBase) * s.Options.DirFactor(d));
    // Rotations get no missing mass case.
    if (o.MissMassOn == 1 && s.RunPhase == 1 && d < 4 && s.WriteFiles) WriteMissMassCase(s, d);
    if (s.DirectionDone) s.DirectionDone(s, d);
}

}  // namespace

void AnalyzeResponse(RunState& s) {
    // A run starts from the settings reader or the dialog's event loop.
    ClearUpperVectorState();
    // Sums worked out ahead never outlive the run, whichever way it ends.
    struct AheadDropper {
        RunState& s;
        ~AheadDropper() { DropParticipationAhead(s); }
    } aheadDropper{s};
    ResponseOptions& o = s.Options;
    ReadFrequencyCase(s);
    if (s.Freq.MassForm == 0) ReadMassMatrix(s);
    if (s.Freq.MassForm == 1) ReadMassVector(s);
    if (s.Freq.Stream) {
        s.Freq.Stream->Close();
        s.Freq.Stream.reset();
    }
    ReadSpectrumCurve(s);
    for (int i = 1; i <= 3; ++i) {
        s.BaseShear(i) = 0;
        s.MissMassLoad(i) = 0;
    }

    if (o.SingleMode > 0 && s.Freq.NumModes < o.SingleMode) {
        s.Ui->ShowMessage("Only " + GeneralText(s.Freq.NumModes) + " modes exist", kMessageTitle);
        return;
    }

    for (i16 d = 1; d <= 6; ++d) {
        // The spectrum report comes first, whether or not direction 1 is on.
        if (d == 1) ReportSpectrum(s);
        if (o.DirOn(d) == 0) continue;
        RunDirection(s, d);
    }

    if (o.MissMassOn == 1) {
        if (s.RunPhase == 1 && s.WriteFiles) WriteMissMassComb(s);
        AddMissingMassBlock(s);
    }
    if (o.ShowModalShear == 1) AddBaseShearBlock(s);
    if (s.RunDone) s.RunDone(s);
    // A first pass of a missing mass analysis stops short of the results: the
    // suite's solver has the load cases to solve first.
    if (s.RunPhase == 1 || !s.WriteFiles) return;

    SetLoadCaseTitle(s);
    ResetCase(s, o.ResultsCase);
    WriteCaseHeader(s, o.ResultsCase);
    WriteForceFiles(s, o.ResultsCase);
    WriteCaseIndexFiles(s, o.ResultsCase);
    WriteResponseCount(s);
}

void SetLoadCaseTitle(RunState& s) {
    const ResponseOptions& o = s.Options;
    const std::string tail = o.SingleMode == 0 ? Trim(o.CombName) : "Mode " + GeneralText(o.SingleMode);
    s.Model.LoadCaseTitle = "SpectResp " + Trim(o.OptionsNumber) + ":FrqCase " + o.FreqCase + ":Dir'n " +
                            GeneralText(o.PrincipalAngle) + " Deg: " + tail;
}

}  // namespace tremodal
