// The solved missing mass case (.R) of a second pass. Ahead of the file: the
// model's node count (each node's freedoms are its own six equations) and the
// period of the curve's first point, in tenths of a second.
#include "fuzz_support.h"
#include "missmass/case_exchange.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    RunState& s = run.State;
    const i32 nodes = run.TakeU8();
    const f32 period = run.TakeU8() * 0.1f;
    run.WriteRest("FUZZ.R10");
    s.Model.NumNodes = static_cast<f32>(nodes);
    s.Freq.NumModes = 2;
    s.Freq.NumDof = 6 * nodes;
    s.MissMassCase = "10";
    fuzz::Attempt([&] {
        AllocateRunArrays(s);
        for (i32 n = 1; n <= nodes; ++n) {
            for (int k = 1; k <= 6; ++k) s.Freq.NodeDof(n, k) = 6 * (n - 1) + k;
        }
        s.ModalDamping(1) = 0.05f;
        s.Curve.CurvePeriod(1) = period;
        ReadMissMassResults(s);
    });
    return 0;
}
