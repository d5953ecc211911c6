// The options file (.USM), read as a batch run reads it; what was read is
// then written back and read again, as the dialog's Save and Open do.
#include "fuzz_support.h"
#include "input/options_file.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    run.WriteRest("FUZZ.USM1");
    run.State.Options.OptionsNumber = "1";
    run.State.Options.OptionsFile = "FUZZ.USM1";
    fuzz::Attempt([&] {
        ReadOptions(run.State);
        WriteOptionsFile(run.State);
        ReadOptions(run.State);
    });
    return 0;
}
