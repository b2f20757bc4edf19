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

  // A topic as screens name it: "RVX.chm::/RVX/Tray_Settings.htm", with any path before it, or the
  // bare name of a page. An unknown one shows the contents and says so.
  void ShowTopic(const QString& topic);
  QString text() const;

 private:
  QListWidget* contents_;
  QTextBrowser* page_;
};

// The folder of the pages; empty if there is none.
QString HelpFolder();
// "Tray_Settings" of any form of a topic.
QString TopicName(const QString& topic);

}  // namespace torvell
