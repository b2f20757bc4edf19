#include "platform/help.h"

#include <atomic>

namespace platform {
namespace {

std::atomic<HelpViewer*> viewerInForce{nullptr};

}  // namespace

HelpViewer* GetHelpViewer() { return viewerInForce.load(); }

void SetHelpViewer(HelpViewer* viewer) { viewerInForce.store(viewer); }

}  // namespace platform
