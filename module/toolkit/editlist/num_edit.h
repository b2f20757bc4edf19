// A number field on a form.
#pragma once

#include <QLineEdit>
#include <cstdint>
#include <optional>

#include "module/toolkit/editlist/number_filter.h"

namespace rvx {

// Checks what is typed; a refused key changes nothing. An empty field is always allowed, and so is
// any number that the program sets. GUI thread.
class CNumEdit : public QLineEdit {
 public:
  explicit CNumEdit(QWidget* parent = nullptr);
  // Both limits lie outside of what is allowed: a field for 1 to 100 is given 0 and 101.
  CNumEdit(uint8_t integerDigits, uint8_t decimalDigits, double minimum, double maximum,
           QWidget* parent = nullptr);
  // The same at any time later.
  void SetRules(uint8_t integerDigits, uint8_t decimalDigits, double minimum, double maximum);

  // The number in the field; nothing if it is empty.
  std::optional<double> GetNumber() const;
  // With the user's decimal sign.
  void SetNumber(double value);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  NumEditRules GetRules() const;
  void TypeCharacter(const QString& typed);
  void Backspace();
  void Delete();
  void Apply(const QString& text, int caret);
  void CheckText(const QString& now);

  uint8_t integerDigits_ = 0;
  uint8_t decimalDigits_ = 0;
  double maximum_ = 0.0;
  double minimum_ = 0.0;
  QString acceptedText_;
};

}  // namespace rvx
