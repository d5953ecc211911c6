// The batch job extension file (.XBT), looked up and read as the dialog's
// Batch button does before it appends a job.
#include "dialog/commands.h"
#include "fuzz_support.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    run.WriteRest("FUZZ.XBT");
    fuzz::Attempt([&] { BatchJobFile(run.State); });
    return 0;
}
