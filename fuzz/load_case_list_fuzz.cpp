// The load case list (.NSL): a record read, written back in place and read
// again, which must give the same record; then the reset of the case. Two
// bytes ahead of the file give the case number.
#include <cstdlib>
#include <cstring>

#include "base/number_text.h"
#include "fuzz_support.h"
#include "results/case_list.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    const i16 caseNumber = run.TakeI16();
    run.WriteRest("FUZZ.NSL");
    fuzz::Attempt([&] {
        const NslRecord first = ReadNslRecord(run.State, caseNumber);
        WriteNslRecord(run.State, caseNumber, first);
        const NslRecord again = ReadNslRecord(run.State, caseNumber);
        // A record goes back exactly as it was read.
        if (std::memcmp(first.Flag, again.Flag, sizeof first.Flag) != 0 ||
            first.Description != again.Description || first.Stamp != again.Stamp) {
            std::abort();
        }
        std::string caseNo = GeneralText(caseNumber);
        ResetCase(run.State, caseNo);
    });
    return 0;
}
