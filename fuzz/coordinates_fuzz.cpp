// The node coordinates file (.XYZ). Two bytes ahead of the file give the
// model's node count, which the size file would have set.
#include "fuzz_support.h"
#include "input/node_coordinates.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    run.State.Model.NumNodes = run.TakeI16();
    run.WriteRest("FUZZ.XYZ");
    fuzz::Attempt([&] { ReadNodeCoordinates(run.State); });
    return 0;
}
