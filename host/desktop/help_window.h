// The plain help viewer: one page for a topic.
#pragma once

#include <QDialog>

class QListWidget;
class QTextBrowser;

namespace torvell {

// The pages of docs/help, found beside the program or where it was installed.
class HelpWindow : public QDialog {
  Q_OBJECT

 public:
  explicit HelpWindow(QWidget* parent = nullptr);

  // Shows a topic in the form of the screens, "RVX.chm::/RVX/Tray_Settings.htm", with any path
  // before it, or by the bare name of a page. For an unknown topic shows the contents with a
  // remark.
  void ShowTopic(const QString& topic);
  QString text() const;

 private:
  QListWidget* contents_;
  QTextBrowser* page_;
};

// Returns the folder of the pages; empty if there is none.
QString HelpFolder();
// Returns the bare name of a topic in any form: "Tray_Settings".
QString TopicName(const QString& topic);

}  // namespace torvell
