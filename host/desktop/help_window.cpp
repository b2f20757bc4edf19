#include "host/desktop/help_window.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QSplitter>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "host/desktop/theme.h"

namespace torvell {
namespace {

constexpr char kContentsPage[] = "Contents";

// Returns the page's first heading, for the list.
QString TitleOf(const QString& file) {
  QFile page(file);
  if (!page.open(QIODevice::ReadOnly)) return {};
  const QString line = QString::fromUtf8(page.readLine(200)).trimmed();
  return line.startsWith(QLatin1String("# ")) ? line.mid(2) : line;
}

}  // namespace

QString HelpFolder() {
  const QString program = QCoreApplication::applicationDirPath();
  for (const QString& place :
       {program + QStringLiteral("/../share/torvell/help"),
        program + QStringLiteral("/../../../docs/help"), QStringLiteral(TORVELL_HELP_FOLDER)}) {
    if (QDir(place).exists()) return QDir(place).canonicalPath();
  }
  return {};
}

QString TopicName(const QString& topic) {
  QString name = topic.section(QLatin1Char('/'), -1).section(QLatin1Char('\\'), -1);
  const int point = static_cast<int>(name.lastIndexOf(QLatin1Char('.')));
  return point > 0 ? name.left(point) : name;
}

HelpWindow::HelpWindow(QWidget* parent)
    : QDialog(parent), contents_(new QListWidget(this)), page_(new QTextBrowser(this)) {
  setWindowTitle(QStringLiteral("Help"));
  resize(820, 560);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kGap, kGap, kGap, kGap);
  auto* splitter = new QSplitter(this);
  splitter->addWidget(contents_);
  splitter->addWidget(page_);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({240, 560});
  layout->addWidget(splitter);
  contents_->setAccessibleName(QStringLiteral("Topics"));
  page_->setAccessibleName(QStringLiteral("Help page"));
  page_->setOpenLinks(false);
  page_->document()->setDocumentMargin(12);
  connect(page_, &QTextBrowser::anchorClicked, this,
          [this](const QUrl& url) { ShowTopic(url.fileName()); });
  const QDir folder(HelpFolder());
  for (const QString& file : folder.entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name)) {
    auto* item = new QListWidgetItem(TitleOf(folder.filePath(file)));
    item->setData(Qt::UserRole, TopicName(file));
    if (TopicName(file) == QLatin1String(kContentsPage)) {
      contents_->insertItem(0, item);
    } else {
      contents_->addItem(item);
    }
  }
  connect(contents_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
    if (item != nullptr) ShowTopic(item->data(Qt::UserRole).toString());
  });
}

void HelpWindow::ShowTopic(const QString& topic) {
  const QString name = TopicName(topic);
  QFile page(HelpFolder() + QLatin1Char('/') + name + QStringLiteral(".md"));
  const QSignalBlocker blocker(contents_);
  if (HelpFolder().isEmpty() || !page.open(QIODevice::ReadOnly)) {
    page_->setPlainText(
        QStringLiteral("There is no help page \"%1\". The program's help files are missing or of "
                       "another version. Choose a topic from the list, or install the program "
                       "again.")
            .arg(name));
    return;
  }
  page_->setMarkdown(QString::fromUtf8(page.readAll()));
  for (int i = 0; i < contents_->count(); ++i) {
    if (contents_->item(i)->data(Qt::UserRole).toString() == name) contents_->setCurrentRow(i);
  }
}

QString HelpWindow::text() const { return page_->toPlainText(); }

}  // namespace torvell
