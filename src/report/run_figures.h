// The figures of a run that an engineer looks at: the modes on the curve,
// the participation of each direction, and the base shear of each
// translational direction under every combination method. They are taken
// from the run itself, as it goes, so that a summary, its tables and its
// charts show what the run worked out and nothing worked out a second time.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "base/run_state.h"
#include "results/curve_report.h"
#include "results/participation_report.h"

namespace tremodal {

// The five combination methods by CombMethod.
constexpr int kCombMethods = 5;

struct DirectionFigures {
    i16 Direction = 0;
    f32 Factor = 0;                      // DirFactor(d)
    f32 ExcitedMass = 0;                 // as the participation report shows it
    std::vector<f32> Participation;      // modes 1..NumModes from index 0
    std::vector<ParticipationRow> Rows;  // Percent only where HasPercent
    bool HasPercent = false;             // translations, and rotations with an inertia
    // Translations only: the combined shear under CombMethod 0 to 4.
    bool HasShear = false;
    std::array<f32, kCombMethods> Shear{};
    // Translations only: the levels of the storey shears, highest first, and
    // the combined storey shear at each under CombMethod 0 to 4 (empty for a
    // method not worked out).
    std::vector<f32> StoreyHeights;
    std::array<std::vector<f32>, kCombMethods> StoreyShear;
    // The global axis the direction moves along or turns about, as the
    // excitation takes it: (X, Z) in the horizontal plane; directions 2 and 5
    // are the vertical.
    f64 AxisX = 0, AxisZ = 0;

    // The first mode whose cumulative share reaches 90 %, 0 for none; the
    // share the modes leave to the missing mass, in per cent.
    i32 ModesTo90() const;
    f32 MissingPercent() const;
};

struct ModeFigures {
    f32 Omega = 0;
    f32 Hertz = 0;
    f32 Damping = 0;
    ModalPoint Point;  // period and spectral values as the run used them
};

struct RunFigures {
    std::string ModelPath, ModelName, ModelTitle;
    i32 UnitSystem = 0;
    std::string OptionsNumber, FreqCase, SpectrumFile;
    i32 MassForm = 0, MassFormRead = 0;
    i16 SpectrumType = 0, InterpMethod = 0, ZpaHighestMode = 0;
    f32 CurveFactor = 0;
    std::vector<f32> CurvePeriod, CurveValue;  // the curve as the file gives it
    f32 ZpaValue = 0, ZpaPeriod = 0;
    i16 MissMassOn = 0, SingleMode = 0, CombMethod = 0;
    f32 DampingRatio = 0, Duration = 0;
    f64 PrincipalAngle = 0;
    std::vector<ModeFigures> Modes;
    std::vector<DirectionFigures> Directions;
    // Texts the run showed in message boxes, and the notes it gave the
    // person, in order.
    std::vector<std::string> Messages;
    std::vector<std::string> RunNotes;

    // Whether the single-mode guard stopped the run before the directions.
    bool StoppedAtGuard() const;
};

// Records the direction just worked, while its items stand. A translation
// gets its storey shears under the options' method; with everyMethod, the
// base shear and the storey shears of every method, each worked out by the
// run's own combination; the options' method and the direction's BaseShear
// are then as the run left them.
void RecordDirection(RunState& state, i16 d, RunFigures& figures, bool everyMethod);

// Records the model, the options, the curve and the modes of the run that
// has just ended; the directions stay as recorded.
void RecordRun(const RunState& state, RunFigures& figures);

// The curve's value at a mode in the curve's own kind, with the factor in
// it: the displacement, the pseudo-velocity or the pseudo-acceleration.
f32 CurveKindValue(const ModalPoint& point, i16 spectrumType);

}  // namespace tremodal
