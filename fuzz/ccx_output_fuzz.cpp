// The readers of tremodal-ccx: the deck it is given and the files ccx leaves.
// The first byte picks the reader: 0 the .dat file (modal tables and printed
// displacements), 1 the .frd file, 2 the .dof list and the .mas matrix, 3 the
// deck (read from the file FUZZ.inp).
#include "ccx/ccx_files.h"
#include "fuzz_support.h"

using namespace tremodal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Run run(data, size);
    const std::uint8_t reader = run.TakeU8() % 4;
    const std::vector<std::string_view> parts = run.SplitFiles();
    const std::string_view text = parts.empty() ? std::string_view() : parts.front();
    fuzz::Attempt([&] {
        switch (reader) {
            case 0:
                ccx::ReadModalTables(text);
                ccx::ReadPrintedDisplacements(text);
                break;
            case 1:
                ccx::ReadFrdDisplacements(text);
                break;
            case 2:
                ccx::ReadDofList(text);
                ccx::ReadMatrixTerms(text);
                break;
            default:
                run.WriteRest("FUZZ.inp");
                ccx::ReadDeck("FUZZ.inp");
                break;
        }
    });
    return 0;
}
