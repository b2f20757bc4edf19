// What this build is.
#pragma once

#include <QString>

namespace torvell {

// The version, as "0.1.0".
QString BuildVersion();
// Kind of build, compiler, source revision if known, and the libraries in use.
QString BuildDescription();

}  // namespace torvell
