// Help of screens and dialogs.
#pragma once

#include <string>

namespace rvx {

// Opens a topic, "RVX.chm::/RVX/Sample_action_options.htm", of the help file in the working
// directory. Beeps where the program has no help viewer. GUI thread.
void ShowHelp(const std::string& topic);

}  // namespace rvx
