#include "module/execution/screen_maker.h"

#include <array>
#include <utility>

#include "platform/lock.h"

namespace rvx {
namespace {

struct Makers {
  platform::PlainLock lock{"screen makers", platform::kLeafRank};
  std::array<ScreenMaker, kActionCount> screens GUARDED_BY(lock);
  std::array<ActionEditor, kActionCount> editors GUARDED_BY(lock);
};

// Never destroyed: screens may be started while the process ends.
Makers& GetMakers() {
  static auto* const makers = new Makers;
  return *makers;
}

}  // namespace

void SetScreenMaker(ActionIndex index, ScreenMaker maker) {
  Makers& makers = GetMakers();
  platform::PlainGuard guard(makers.lock);
  makers.screens.at(index) = std::move(maker);
}

void SetActionEditor(ActionIndex index, ActionEditor editor) {
  Makers& makers = GetMakers();
  platform::PlainGuard guard(makers.lock);
  makers.editors.at(index) = std::move(editor);
}

ScreenMaker GetScreenMaker(ActionIndex index) {
  Makers& makers = GetMakers();
  platform::PlainGuard guard(makers.lock);
  return makers.screens.at(index);
}

ActionEditor GetActionEditor(ActionIndex index) {
  Makers& makers = GetMakers();
  platform::PlainGuard guard(makers.lock);
  return makers.editors.at(index);
}

bool HasScreens() {
  Makers& makers = GetMakers();
  platform::PlainGuard guard(makers.lock);
  for (int index = 0; index < kActionCount; ++index) {
    if (makers.screens.at(index) || makers.editors.at(index)) return true;
  }
  return false;
}

}  // namespace rvx
