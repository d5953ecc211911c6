// "TreModal --report N [--model PATH] [--csv DIR] [--plots DIR]": the
// summary of an analysis run in memory on standard output, its tables and
// its charts, and nothing written beside the model or in Files1.
#pragma once

namespace tremodal {

// The windows program: the dialog, message boxes on a screen and the
// charts. TreModal itself loads no window system, so that a batch run
// starts at once; it starts this program in its place when those are
// wanted. It lies beside TreModal, or installed in ../libexec/TreModal.
inline constexpr const char* kViewProgram = "tremodal-view";

// argv[1] is "--report". Returns the exit status: 0 done, 1 a failure (one
// line on standard error, no file written), 2 a usage error.
int RunReportCommand(int argc, char** argv);

}  // namespace tremodal
