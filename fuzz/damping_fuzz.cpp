// The damping by mode file (.USD). One byte ahead of the file gives the
// frequency case's mode count.
#include "fuzz_support.h"
#include "input/modal_damping.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    RunState& s = run.State;
    s.Freq.NumModes = run.TakeU8();
    run.WriteRest("FUZZ.USD1");
    s.Options.FreqCase = "1";
    s.Options.DampingRatio = 0.05f;
    fuzz::Attempt([&] {
        AllocateRunArrays(s);
        ReadModalDamping(s);
    });
    return 0;
}
