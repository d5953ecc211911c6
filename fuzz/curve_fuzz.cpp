// The response spectrum curve. Ahead of the file: the mode count, the
// lowest circular frequency in halves (the modes are its multiples), and the
// options that steer the reading (bit 0 logarithmic interpolation, bits 1-2
// the spectrum type, 3 standing for an unknown one, bit 3 the ZPA from the
// highest mode).
#include "fuzz_support.h"
#include "modal/response_curve.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    RunState& s = run.State;
    s.Freq.NumModes = run.TakeU8();
    const f32 omega = run.TakeU8() * 0.5f;
    const std::uint8_t options = run.TakeU8();
    run.WriteRest("FUZZ.URS1");
    s.Options.InterpMethod = options & 1;
    s.Options.SpectrumType = (options >> 1) & 3;
    s.Options.ZpaHighestMode = (options >> 3) & 1;
    s.Options.CurveFactor = 9.81f;
    s.Options.SpectrumFile = "FUZZ.URS1";
    fuzz::Attempt([&] {
        AllocateRunArrays(s);
        for (i32 m = 1; m <= s.Freq.NumModes; ++m) s.Freq.Omega(m) = omega * static_cast<f32>(m);
        ReadSpectrumCurve(s);
    });
    return 0;
}
