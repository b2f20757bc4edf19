// What was built.
#pragma once

#include <QString>

namespace torvell {

// "0.1.0"
QString BuildVersion();
// Kind of build, compiler, source revision if known, and the libraries in use.
QString BuildDescription();

}  // namespace torvell
