// An instrument module that was built for the next version of the boundary, or that exports no
// version.
#include <cstdlib>

#include "boundary/version.h"

extern "C" {
#ifdef SAYS_ITS_VERSION
const int32_t RvxBoundaryVersion = rvx::kBoundaryVersion + 1;
#endif
// The loader only needs an entry of this name; it must not call it.
void CreateInstruments(void** /*array*/) { std::abort(); }
}
