#include "module/instrument/status_window.h"

#include <atomic>

namespace rvx {
namespace {

std::atomic<StatusWindowMaker> makerInForce{nullptr};

}  // namespace

StatusWindowMaker GetStatusWindowMaker() { return makerInForce.load(); }

void SetStatusWindowMaker(StatusWindowMaker maker) { makerInForce.store(maker); }

}  // namespace rvx
