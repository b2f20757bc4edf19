// The windows that the module brings along, in a process that has a QApplication.
#include "module/entry/screens.h"

#include "module/execution/sample_action_editor.h"
#include "module/execution/screen_maker.h"
#include "module/instrument/status_window.h"
#include "tests/support/gui.h"

namespace rvx {
namespace {

TEST(InstallScreensTest, ThePrompterOfTheHostStays) {
  {
    BeepCounter own;
    InstallScreens();
    EXPECT_EQ(&platform::GetPrompter(), &own);
  }
  EXPECT_NE(GetSampleActionEditor(), nullptr);
  EXPECT_NE(GetStatusWindowMaker(), nullptr);
  EXPECT_TRUE(GetScreenMaker(kCurrentCellCalsAction));
  EXPECT_FALSE(platform::HasPrompter());
  InstallScreens();
  EXPECT_TRUE(platform::HasPrompter());
}

}  // namespace
}  // namespace rvx
