#include "module/printing/pdf_renderer.h"

#include <atomic>

namespace rvx {
namespace {

std::atomic<PdfRenderer> rendererInForce{nullptr};

}  // namespace

PdfRenderer GetPdfRenderer() { return rendererInForce.load(); }

void SetPdfRenderer(PdfRenderer renderer) { rendererInForce.store(renderer); }

}  // namespace rvx
