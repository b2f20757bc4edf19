#include "module/execution/sample_action_editor.h"

#include <atomic>

namespace rvx {
namespace {

std::atomic<SampleActionEditor*> editorInForce{nullptr};

}  // namespace

SampleActionEditor* GetSampleActionEditor() { return editorInForce.load(); }

void SetSampleActionEditor(SampleActionEditor* editor) { editorInForce.store(editor); }

}  // namespace rvx
