// The host that the process-wide entry points answer for.
#pragma once

namespace torvell {

class Host;

// False if there is another one.
bool RegisterHost(Host* host);
void UnregisterHost(Host* host);

}  // namespace torvell
