// The frequency case writer of the tools, under the names the tests use.
#pragma once

#include "tools/frequency_case_writer.h"

namespace tremodal::testing {
using example::FrequencyCaseBytes;
using example::FrequencyCaseData;
}  // namespace tremodal::testing
