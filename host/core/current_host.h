// The host whose services the process-wide entry points return. Any thread.
#pragma once

namespace torvell {

class Host;

// Returns false if another host is registered.
bool RegisterHost(Host* host);
void UnregisterHost(Host* host);  // no effect if another host is registered

}  // namespace torvell
