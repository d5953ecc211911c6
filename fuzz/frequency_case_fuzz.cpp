// The frequency case file (.H) with either mass form, read as the driver
// reads it: header, eigenvalues, shape block, mass form, then the square
// matrix or the lumped vector. Two bytes ahead of the file give the model's
// node count.
#include "fuzz_support.h"
#include "input/frequency_case.h"

using namespace tremodal;
using namespace tremodal::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ClearFiles();
    std::string_view input = Bytes(data, size);
    Run run;
    RunState& s = run.State;
    s.Model.NumNodes = TakeI16(input);
    s.BatchRun = 1;
    s.Options.FreqCase = "1";
    s.Options.DampingRatio = 0.05f;
    WriteFile("FUZZ.H1", input);
    Attempt([&] {
        ReadFrequencyCase(s);
        if (s.Freq.MassForm == 0) ReadMassMatrix(s);
        if (s.Freq.MassForm == 1) ReadMassVector(s);
    });
    s.Freq.Stream.reset();
    return 0;
}
