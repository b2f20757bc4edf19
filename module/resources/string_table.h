// The module's texts by their ids. Loaded on the user-interface thread only, so that a later
// translation can follow that thread's language.
#pragma once

#include <string>

namespace rvx {

// The text of an id, or the empty text for an id without one.
std::string LoadResourceString(int id);

}  // namespace rvx
