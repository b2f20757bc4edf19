// Two arrows beside a number field.
#pragma once

#include <QWidget>

namespace rvx {

class CNumEdit;

// Steps the whole number of its field up and down: by its arrows, held down to repeat, and by the
// field's arrow keys. GUI thread.
class CSpinButtons final : public QWidget {
 public:
  explicit CSpinButtons(QWidget* parent = nullptr);

  // `field` must outlive it.
  void SetBuddy(CNumEdit* field);
  void SetRange(int minimum, int maximum);
  // Shows the number in the field, cut to the range.
  void SetPosition(int position);
  // The number in the field, cut to the range; the last position if the field is empty.
  int GetPosition() const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Step(int by);

  CNumEdit* field_ = nullptr;
  int minimum_ = 0;
  int maximum_ = 100;
  int position_ = 0;
};

}  // namespace rvx
