// Asking where to a CSV file goes.
#pragma once

#include <QString>

class QWidget;

namespace torvell {

// The kinds of file that a dialog offers: "Tray files (*.csv);;All files (*)".
QString CsvFilter(const QString& kind);

// Asks for the name of a file to write, with ".csv" added to a name without an ending; before an
// existing one is replaced, that is asked too. Empty if the person gives up. GUI thread.
QString AskForCsvName(QWidget* parent, const QString& title, const QString& kind);

}  // namespace torvell
