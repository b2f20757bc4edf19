// Dialogs that ask for a folder or a file.
#pragma once

#include <optional>
#include <string>

class QWidget;

namespace rvx {

// A folder that exists, with its trailing separator; nothing if the user cancelled, or if the
// parent was destroyed and the dialog with it. `initial` is where the dialog starts; empty or
// missing: the working directory. GUI thread.
std::optional<std::string> ChooseFolder(QWidget* parent, const std::string& title,
                                        const std::string& initial);

// A file for reading or, if `mayBeNew`, also a new one. Nothing as above. `filter` as "Text files
// (*.txt)". GUI thread.
std::optional<std::string> ChooseFile(QWidget* parent, const std::string& title,
                                      const std::string& initial, const std::string& filter,
                                      bool mayBeNew);

// A file that is to be written; asks for confirmation if the file exists already. Nothing as above.
// `suffix`, as "pdf", is added to a name without one. GUI thread.
std::optional<std::string> ChooseFileToSave(QWidget* parent, const std::string& title,
                                            const std::string& initial, const std::string& filter,
                                            const std::string& suffix);

}  // namespace rvx
