// A whole batch run, from the settings to the launch of casepost, on a model
// whose files come from the input. "@@FILE@@" lines split the input into the
// command line and the files FUZZ.XSZ, .XYZ, .USM1, .H1, .URS1, .USD1 and
// .R10, in that order; a part left out is a file that is not there. The name
// file always names FUZZ.
#include "base/arrays.h"
#include "fuzz_support.h"
#include "run/startup.h"

using namespace tremodal;

namespace {

const char* const kFiles[] = {"FUZZ.XSZ",  "FUZZ.XYZ",  "FUZZ.USM1", "FUZZ.H1",
                              "FUZZ.URS1", "FUZZ.USD1", "FUZZ.R10"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The run writes every equation of every mode to its response files, so
    // its time grows with the arrays a header asks for. Within 16 MiB a run
    // stays well inside the time limit, and headers of half a million
    // equations still pass.
    SetMemoryBudget(16 << 20);
    fuzz::Run run(data, size);
    const auto parts = run.SplitFiles();
    std::string commandLine(parts[0]);
    while (!commandLine.empty() && (commandLine.back() == '\n' || commandLine.back() == '\r'))
        commandLine.pop_back();
    // An empty command line would open the dialog.
    if (commandLine.empty()) commandLine = "1/20/";
    fuzz::WriteFile("MODEL.NAM", "\"FUZZ\",\"FUZZ\"\r\n");
    for (std::size_t k = 1; k < parts.size() && k <= std::size(kFiles); ++k)
        fuzz::WriteFile(kFiles[k - 1], parts[k]);
    Main(run.State, commandLine);
    return 0;
}
