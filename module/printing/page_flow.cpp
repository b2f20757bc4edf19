#include "module/printing/page_flow.h"

#include <utility>

namespace rvx {

PageFlow::PageFlow(PrintPage& page, double top, double bottom, std::function<void(PrintPage&)> foot)
    : page_(page), top_(top), bottom_(bottom), foot_(std::move(foot)), y_(top) {}

bool PageFlow::MakeRoom(double height) {
  if (y_ + height <= bottom_ || y_ == top_) return false;
  Finish();
  page_.NewPage();
  y_ = top_;
  return true;
}

void PageFlow::Finish() {
  if (foot_) foot_(page_);
}

}  // namespace rvx
