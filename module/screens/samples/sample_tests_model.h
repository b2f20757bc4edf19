// What the editor of a sample action shows and what its OK button writes, without the window.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "module/toolkit/editlist/available_data.h"

namespace rvx {

class C_RVXViscAction;

// Texts of cells have the user's decimal sign. GUI thread.
class SampleTestsModel {
 public:
  struct Column {
    tagCICELTYPE type;
    std::string heading;
  };
  // The contents of the dialog when OK is pressed, without the add row.
  struct Entries {
    std::vector<std::vector<std::string>> rows;
    bool hasInjectionTime = true;
    bool hasCoolDownTime = true;
    int32_t injectionTime = 0;  // s
    int32_t coolDownTime = 0;   // s
  };
  enum class Refusal {
    None,
    NoTest,           // not one row
    EmptyCell,        // in row `row`
    NoInjectionTime,  // the field is empty
    NoCoolDownTime,
    Started,    // the action was started meanwhile
    NotAllowed  // the user may not change times any more, and has changed one
  };
  struct Outcome {
    Refusal refusal = Refusal::None;
    int row = -1;
    int column = -1;
  };

  // `action` must outlive it.
  SampleTestsModel(C_RVXViscAction& action, bool withKnownViscosity);

  // Whether the present user may change the rotor times and the two times of the sample. Determined
  // when the dialog opens; OK checks again.
  bool MayChangeTimes() const { return mayChangeTimes_; }
  std::vector<Column> GetColumns() const;
  std::vector<std::vector<std::string>> GetRows() const;
  int32_t GetInjectionTime() const;  // s
  int32_t GetCoolDownTime() const;   // s

  // Gives the tests to the action: all of them, or none if the outcome is a refusal.
  Outcome Accept(const Entries& entries);

 private:
  Outcome Check(const Entries& entries) const;
  bool ChangesTimes(const Entries& entries) const;
  size_t RotorTimeColumn() const { return withKnownViscosity_ ? 2 : 1; }

  C_RVXViscAction& action_;
  const bool withKnownViscosity_;
  const bool mayChangeTimes_;
};

}  // namespace rvx
