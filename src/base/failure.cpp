#include "base/failure.h"

namespace tremodal {

void Fail(int number, const std::string& what) { throw Failure(number, what); }

}  // namespace tremodal
