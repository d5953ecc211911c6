// The batch job extension file (.XBT), looked up and read as the dialog's
// Batch button does before it appends a job.
#include "dialog/commands.h"
#include "fuzz_support.h"

using namespace tremodal;
using namespace tremodal::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ClearFiles();
    WriteFile("FUZZ.XBT", Bytes(data, size));
    Run run;
    Attempt([&] { BatchJobFile(run.State); });
    return 0;
}
