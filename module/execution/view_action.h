// Actions that open a screen, and the thread that watches over one.
#pragma once

#include <string>

#include "module/execution/base_action.h"

namespace rvx {

// Opens the screen of the record's action on the user-interface thread, and ends when the user has
// closed it or the action was stopped, in which case it destroys the screen.
void ViewThread(LaunchRecord& record);

// An action whose class has no screen in this program: starting it reports start and finish.
// A program with a window puts a class with a PerformCreation of its own in its place.
class CScreenAction : public CBaseAction {
 public:
  CScreenAction(C_RVX& instrument, int labelId, std::string classKey);
  ~CScreenAction() override { StopRun(); }
  std::string GetClassName() override { return classKey_; }

 private:
  const std::string classKey_;
};

}  // namespace rvx
