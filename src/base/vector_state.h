// The state of the processor's vector registers between library code and
// the analysis.
#pragma once

namespace tremodal {

// Library code built for the wider vector instructions (Qt's string and
// settings routines among them) may return with the upper halves of the
// vector registers still in use. On recent x86 processors every scalar
// floating point instruction of the older encoding, which this program is
// built with, then waits on those halves, and the analysis runs two to three
// times slower. Clearing them where control comes back from such code costs
// one instruction. Does nothing where there are no such halves.
void ClearUpperVectorState();

}  // namespace tremodal
