// MODEL.NAM and the model's size file, read as start-up reads them. The
// input is the name file, then the size file: "@@FILE@@" lines split them.
// The name file of the seeds names the model FUZZ in the working directory.
#include "fuzz_support.h"
#include "run/startup.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    const auto files = run.SplitFiles();
    fuzz::WriteFile("MODEL.NAM", files[0]);
    if (files.size() > 1) fuzz::WriteFile("FUZZ.XSZ", files[1]);
    fuzz::Attempt([&] {
        ReadModelName(run.State);
        ReadModelSize(run.State);
    });
    return 0;
}
