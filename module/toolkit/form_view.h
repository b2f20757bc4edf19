// The base of the module's screens: a form in a frame, or in a window of the host.
#pragma once

#include <QWidget>
#include <cstdint>
#include <string>

namespace rvx {

// GUI thread. A derived class sets up its form in the constructor. Its action may be stopped, and
// the view destroyed, whenever events are handled: after a modal dialog a view checks by a QPointer
// to itself whether it still exists before it touches any member.
class CFormView : public QWidget {
 public:
  explicit CFormView(QWidget* parent = nullptr);

  // Called when the frame is to close: 0 lets it close, anything else keeps it open. A view that
  // refuses tells its user why.
  virtual int32_t QueryClose() { return 0; }
  // Why QueryClose would refuse, as a sentence for the user, which this call does not show; empty
  // if the frame may close.
  virtual std::string GetCloseRefusal() { return std::string(); }
  // The help topic that the help key opens, "RVX.chm::/RVX/....htm"; empty for none.
  virtual std::string GetHelpTopic() const { return std::string(); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace rvx
