// English texts of the Camera Link serial and CLProtocol status codes, used when a driver has
// no text of its own for a code.
#pragma once

#include <CLProtocol/CLProtocol.h>

namespace CLProtocol {

// Text of a standard code, or nullptr when the code is not a standard one.
const char* StandardErrorText(CLINT32 code);

}  // namespace CLProtocol
