#include "host/desktop/welcome_dialog.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "host/desktop/demo_folder.h"
#include "host/desktop/instrument_state.h"
#include "host/desktop/theme.h"

namespace torvell {

WelcomeDialog::WelcomeDialog(QWidget* parent) : QDialog(parent) {
  setWindowTitle(QStringLiteral("Demonstration"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(2 * kGap, 2 * kGap, 2 * kGap, 2 * kGap);
  layout->setSpacing(2 * kGap);
  auto* intro = new QLabel(
      QStringLiteral("This is a demonstration on a simulated instrument, with made-up cell "
                     "constants and standards. Nothing here is a measurement.\n\nWho do you want "
                     "to be? Each user's password is the name."),
      this);
  intro->setWordWrap(true);
  layout->addWidget(intro);
  auto* grid = new QGridLayout();
  grid->setHorizontalSpacing(2 * kGap);
  grid->setVerticalSpacing(kGap);
  grid->setColumnStretch(1, 1);
  int row = 0;
  for (const DemoUser& user : DemoUsers()) {
    const QString name = QString::fromLatin1(user.name);
    auto* button = new QPushButton(name, this);
    button->setDefault(row == 0);
    connect(button, &QPushButton::clicked, this, [this, name] {
      Q_EMIT Chosen(name);
      accept();
    });
    auto* what = new QLabel(QStringLiteral("Level %1 (%2): may %3.")
                                .arg(user.level)
                                .arg(LevelName(user.level), QString::fromLatin1(user.may)),
                            this);
    what->setWordWrap(true);
    what->setMinimumWidth(360);
    grid->addWidget(button, row, 0);
    grid->addWidget(what, row, 1);
    ++row;
  }
  layout->addLayout(grid);
}

}  // namespace torvell
