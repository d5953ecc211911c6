// MODEL.NAM and the model's size file, read as start-up reads them. The
// input is the name file, then the size file: "@@FILE@@" lines split them.
// The name file of the seeds names the model FUZZ in the working directory.
#include "fuzz_support.h"
#include "runcontrol/startup.h"

using namespace tremodal;
using namespace tremodal::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ClearFiles();
    const auto files = SplitFiles(Bytes(data, size));
    WriteFile("MODEL.NAM", files[0]);
    if (files.size() > 1) WriteFile("FUZZ.XSZ", files[1]);
    Run run;
    Attempt([&] {
        ReadModelName(run.State);
        ReadModelSize(run.State);
    });
    return 0;
}
