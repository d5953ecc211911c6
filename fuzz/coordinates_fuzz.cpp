// The node coordinates file (.XYZ). Two bytes ahead of the file give the
// model's node count, which the size file would have set.
#include "fuzz_support.h"
#include "input/node_coordinates.h"

using namespace tremodal;
using namespace tremodal::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ClearFiles();
    std::string_view input = Bytes(data, size);
    Run run;
    run.State.Model.NumNodes = TakeI16(input);
    WriteFile("FUZZ.XYZ", input);
    Attempt([&] { ReadNodeCoordinates(run.State); });
    return 0;
}
