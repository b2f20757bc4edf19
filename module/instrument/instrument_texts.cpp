#include "module/instrument/instrument_texts.h"

#include <functional>

#include "boundary/host.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"
#include "platform/text.h"

namespace rvx {
namespace {

// Calls `load` on the user-interface thread.
class ResourceLoader : public UserInterfaceClient {
 public:
  explicit ResourceLoader(const std::function<void()>& load) : load_(load) {}
  FrameWindow* PerformCreation() override { return nullptr; }
  int32_t LoadResources() override {
    load_();
    return 0;
  }

 private:
  const std::function<void()>& load_;
};

// `text` with its first `format` replaced by `value`.
std::string Fill(std::string text, const std::string& format, const std::string& value) {
  const size_t place = text.find(format);
  if (place != std::string::npos) text.replace(place, format.size(), value);
  return text;
}

}  // namespace

void InstrumentTexts::Load() {
  const std::function<void()> load = [this] {
    for (const int id : {kTextPortAddress, kTextNotReady, kTextInitializeSteppers,
                         kTextStopRunningSamples, kTextNotResponding, kTextTrayInUse, kTextNoThread,
                         kTextCheckStandardDue, kTextCheckStandardNeverRun, kTextCellTooWarm}) {
      texts_[id] = LoadResourceString(id);
    }
    status_ = StatusTexts::Load();
  };
  ResourceLoader loader(load);
  ExecuteLoadResources(&loader);
}

const std::string& InstrumentTexts::Get(int stringId) const {
  static const std::string kNone;
  const auto found = texts_.find(stringId);
  return found != texts_.end() ? found->second : kNone;
}

std::string InstrumentTexts::FormatCheckStandardDue(int32_t samples) const {
  return Fill(Get(kTextCheckStandardDue), "%d", std::to_string(samples));
}

std::string InstrumentTexts::FormatPortAddress(uint8_t address) const {
  return Fill(Get(kTextPortAddress), "%X", platform::FormatText("%X", address));
}

}  // namespace rvx
