// The damping by mode file (.USD). One byte ahead of the file gives the
// frequency case's mode count.
#include "fuzz_support.h"
#include "input/modal_damping.h"

using namespace tremodal;
using namespace tremodal::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ClearFiles();
    std::string_view input = Bytes(data, size);
    Run run;
    RunState& s = run.State;
    s.Freq.NumModes = TakeU8(input);
    s.Options.FreqCase = "1";
    s.Options.DampingRatio = 0.05f;
    WriteFile("FUZZ.USD1", input);
    Attempt([&] {
        AllocateRunArrays(s);
        ReadModalDamping(s);
    });
    return 0;
}
