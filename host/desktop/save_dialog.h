// Asks for the name of a CSV file to write.
#pragma once

#include <QString>

class QWidget;

namespace torvell {

// Returns the kinds of file that a dialog offers: "Tray files (*.csv);;All files (*)".
QString CsvFilter(const QString& kind);

// Asks for the name of a file to write and adds ".csv" to a name without an ending. Asks again
// before an existing file is replaced. Returns an empty name if the user cancels. The window's
// thread only.
QString AskForCsvName(QWidget* parent, const QString& title, const QString& kind);

}  // namespace torvell
