// The solved missing mass case (.R) of a second pass. Ahead of the file: the
// model's node count (each node's freedoms are its own six equations) and the
// period of the curve's first point, in tenths of a second.
#include "fuzz_support.h"
#include "missmass/case_exchange.h"

using namespace tremodal;
using namespace tremodal::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ClearFiles();
    std::string_view input = Bytes(data, size);
    Run run;
    RunState& s = run.State;
    const i32 nodes = TakeU8(input);
    const f32 period = TakeU8(input) * 0.1f;
    s.Model.NumNodes = static_cast<f32>(nodes);
    s.Freq.NumModes = 2;
    s.Freq.NumDof = 6 * nodes;
    s.MissMassCase = "10";
    WriteFile("FUZZ.R10", input);
    Attempt([&] {
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
