// The one process-wide state of a run. Every operation reads and writes it
// directly; the only other things passed between operations are a direction
// number and a case number text. The scalars outlive a run (the dialog can
// run again in the same process); the run arrays are allocated anew each run.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/arrays.h"
#include "base/binary_files.h"
#include "base/failure.h"

namespace tremodal {

class Host;

// The model in hand, fixed at start-up but for LoadCaseTitle.
struct ModelContext {
    std::string FilesDir;    // holds MODEL.NAM and response.cnt
    std::string ProgramDir;  // holds the suite's programs and help file
    std::string HelpFile;
    std::string ModelPath;  // path and base name; every model file is ModelPath + suffix
    std::string ModelName;
    std::string ModelTitle;
    std::string LoadCaseTitle;
    f32 NumElements = 0;  // held as a single, converted where it is used
    f32 NumNodes = 0;
    i32 UnitSystem = 0;               // 1 selects inch headings
    Array1<f32> NodeX, NodeY, NodeZ;  // 0..NumNodes
};

// Everything the user decides.
struct ResponseOptions {
    std::string OptionsNumber;
    std::string OptionsFile;
    std::string FreqCase;
    std::string ResultsCase;
    i16 SingleMode = 0;
    std::string SpectrumFile;
    i16 SpectrumType = 0;  // 0 displacement, 1 velocity, 2 acceleration
    f32 CurveFactor = 0;
    i16 InterpMethod = 0;      // 0 linear, 1 logarithmic
    f64 PrincipalAngle = 0;    // degrees
    Array1<f32> DirFactor{6};  // slots 1..6
    Array1<i16> DirOn{6};      // slots 1..6, non-zero is on
    f32 ShearWaveVelocity = 0;
    f32 GroundX = 0, GroundY = 0, GroundZ = 0;
    i16 CombMethod = 0;  // 0 SRSS, 1 QCQ, 2 10% Group, 3 DSM, 4 ABS Sum
    std::string CombName;
    f32 Duration = 0;
    f32 DampingRatio = 0;
    i16 ForceSignMode = 0;
    i16 MissMassOn = 0;
    std::string MissMassStartCase;
    i16 ZpaHighestMode = 0;
    i16 ShowModalShear = 0;   // dialog only
    i16 CreateAccelFile = 0;  // dialog only
};

// The eigen-solution of the frequency case.
struct FrequencyCase {
    i32 NumModes = 0;
    i32 NumDof = 0;
    i32 MassForm = 0;        // 0 square matrix, 1 lumped vector
    i32 MassFormRead = 0;    // as the file gives it; a 2 is read as a 1
    Array1<f32> Eigenvalue;  // 0..NumModes
    Array1<f32> Omega;       // 0..NumModes+1; the last slot is the pseudo-mode's
    Array2<f32> ModeShape;   // (0..NumDof, 0..NumModes)
    // The largest magnitude in each mode's block of the file (0..NumModes):
    // no ModeShape value of the mode is larger.
    Array1<f32> ShapePeak;
    Array2<i32> NodeDof;     // (0..NumNodes, 0..6)
    Array1<f32> DirMass{6};  // slots 1..6
    // The mass of each equation, M(i). The lumped form holds 0..MassCount; of
    // the square form only the diagonal is kept, 0..NumDof, since the terms
    // off the diagonal never enter a result.
    Array1<f32> MassTerms;
    i32 MassCount = 0;
    // The frequency case file stays open from the header read to the end of
    // the mass block; the driver closes it.
    std::unique_ptr<BinaryFile> Stream;
};

// The response spectrum curve and what comes of it.
struct SpectrumCurve {
    i16 CurvePoints = 0;
    Array1<f32> CurvePeriod{100};
    Array1<f32> CurveValue{100};
    Array1<f32> ModalSpectrum;  // 0..NumModes
    f32 ZpaValue = 0;
    f32 ZpaPeriod = 0;
};

struct ParticipationAhead;

struct RunState {
    ModelContext Model;
    ResponseOptions Options;
    FrequencyCase Freq;
    SpectrumCurve Curve;

    Array1<f32> ModalDamping;  // 0..NumModes+1

    // Run control.
    std::vector<std::string> List1;  // the report of the run
    i16 BatchRun = 0;
    i16 RunPhase = 0;  // 0 plain run, 1 first missing mass pass, 2 second
    bool Timer1Enabled = false;
    Host* Ui = nullptr;  // the machine's settings, messages and children
    // A run in memory works out all that a run does and writes no file: no
    // response file, missing mass case, results case or response.cnt.
    bool WriteFiles = true;
    // Called at the end of each direction pass, while the direction's working
    // items stand: a summary of the run collects them here. Empty in a plain
    // run.
    std::function<void(RunState&, i16)> DirectionDone;
    // Called once the direction passes and the report's closing blocks are
    // done, before any results case is written.
    std::function<void(RunState&)> RunDone;

    // Per-direction working items.
    Array1<f32> Excitation;  // 0..NumDof
    f64 CosAngle = 0, SinAngle = 0;
    Array1<f32> Participation;  // 0..NumModes
    // The participation sums of the passes to come, worked out ahead.
    std::shared_ptr<ParticipationAhead> Ahead;
    f32 ExcitedMass = 0;
    Array1<f32> ResidualMass;  // 0..NumDof
    Array1<f32> ResidualWork;  // 0..NumDof
    f32 MissMassFactor = 0;
    f32 MissMassBase = 0;
    std::string MissMassCase;
    i16 MissMassRead = 0;
    Array2<f32> MissMassNodal;  // (0..NumNodes, 0..6)
    Array1<f32> MissMassDof;    // 0..NumDof
    // The accelerations of every equation in every mode, filled only for the
    // accelerations file. The displacements are not held whole: each mode's
    // go straight into its block of the modal response file.
    Array2<f32> ModalAccel;  // (0..NumDof, 0..NumModes)

    // Whole-run accumulators, slots 1..3 zeroed at the start of a run.
    Array1<f32> BaseShear{6};
    Array1<f32> MissMassLoad{6};
};

// Allocates the arrays of a run, zero-filled, discarding earlier contents.
// Called by the frequency case reader once the header has set NumModes and
// NumDof; NumNodes stands by then.
void AllocateRunArrays(RunState& state);

}  // namespace tremodal
