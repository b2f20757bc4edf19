// An instrument module that was built for the next version of the boundary, or that says none.
#include <cstdlib>

#include "boundary/version.h"

extern "C" {
#ifdef SAYS_ITS_VERSION
const int32_t RvxBoundaryVersion = rvx::kBoundaryVersion + 1;
#endif
// Only the type of a pointer matters to whoever looks for the entry; nobody may call it.
void CreateInstruments(void** /*array*/) { std::abort(); }
}
