// A sheet that is filled downwards and continued on the next page.
#pragma once

#include <functional>

#include "module/printing/page.h"

namespace rvx {

class PageFlow {
 public:
  // Fills each page from `top` to `bottom`. `foot` draws the bottom of every page; it may be null.
  // The page must outlive it.
  PageFlow(PrintPage& page, double top, double bottom, std::function<void(PrintPage&)> foot);

  PrintPage& page() { return page_; }
  // Where the next item is drawn.
  double y() const { return y_; }
  void Skip(double height) { y_ += height; }
  // Begins a new page if `height` does not fit into the rest of this one; returns true then. Stays
  // on a page on which nothing has been drawn yet, since no other page is taller.
  bool MakeRoom(double height);
  // Draws the foot of the last page; the last call on this object.
  void Finish();

 private:
  PrintPage& page_;
  const double top_;
  const double bottom_;
  const std::function<void(PrintPage&)> foot_;
  double y_;
};

}  // namespace rvx
