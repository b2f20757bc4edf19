#include "host/desktop/tray_editor.h"

#include <utility>

#include "host/tray/csv.h"
#include "host/tray/tray_file.h"

namespace torvell {
namespace {

constexpr size_t kMaxUndo = 50;

}  // namespace

void TrayEditor::Change(EditMaker make) {
  jobs_.WhenIdle([this, make = std::move(make)] {
    if (IsTrayOpen(run_.phase())) Apply(make(jobs_.tray().cells));
  });
}

void TrayEditor::Apply(const TrayEdit& edit) {
  if (edit.empty()) return;
  auto before = std::make_shared<TrayEdit>();
  jobs_.Do([this, edit, before] { *before = store_.Apply(edit); },
           [this, before] { Remember(std::move(*before)); });
}

void TrayEditor::Remember(TrayEdit before) {
  undo_.push_back(std::move(before));
  if (undo_.size() > kMaxUndo) undo_.erase(undo_.begin());
  jobs_.Read();
}

void TrayEditor::Undo() {
  jobs_.WhenIdle([this] {
    if (undo_.empty() || !IsTrayOpen(run_.phase())) return;
    const TrayEdit edit = undo_.back();
    jobs_.Do([this, edit] { store_.Apply(edit); },
             [this] {
               undo_.pop_back();
               jobs_.Read();
             });
  });
}

void TrayEditor::Load(const QString& path) {
  auto before = std::make_shared<TrayEdit>();
  jobs_.Do([this, path, before] { *before = store_.Load(path.toStdString()); },
           [this, before, path] {
             Q_EMIT Notice(QStringLiteral("The tray was loaded from %1.").arg(path));
             Remember(std::move(*before));
           });
}

void TrayEditor::Save(const QString& path, const std::vector<TrayPosition>& tray) {
  jobs_.Do([path, tray] { WriteWholeFile(path.toStdString(), FormatTrayFile(TrayFileOf(tray))); },
           [this, path] { Q_EMIT Notice(QStringLiteral("The tray was saved to %1.").arg(path)); });
}

void TrayEditor::KeepRest() {
  auto notices = std::make_shared<std::vector<std::string>>();
  jobs_.Do([this, notices] { *notices = store_.KeepRest(); },
           [this, notices] {
             for (const std::string& text : *notices) Q_EMIT Notice(QString::fromStdString(text));
             jobs_.Read();
           });
}

void TrayEditor::DropInterrupted() {
  jobs_.Do([this] { store_.DropInterrupted(); }, [this] { jobs_.Read(); });
}

}  // namespace torvell
