// The frequency case file (.H) with either mass form, read as the driver
// reads it: header, eigenvalues, shape block, mass form, then the square
// matrix or the lumped vector. Two bytes ahead of the file give the model's
// node count.
#include "fuzz_support.h"
#include "input/frequency_case.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    RunState& s = run.State;
    s.Model.NumNodes = run.TakeI16();
    run.WriteRest("FUZZ.H1");
    s.BatchRun = 1;
    s.Options.FreqCase = "1";
    s.Options.DampingRatio = 0.05f;
    fuzz::Attempt([&] {
        ReadFrequencyCase(s);
        if (s.Freq.MassForm == 0) ReadMassMatrix(s);
        if (s.Freq.MassForm == 1) ReadMassVector(s);
    });
    return 0;
}
