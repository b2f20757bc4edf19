#include "module/instrument/standards_in_use.h"

#include <string>
#include <utility>

#include "boundary/host.h"
#include "boundary/standards_text.h"
#include "module/calibration/standards_map.h"

namespace rvx {

StandardsInUse::StandardsInUse(const ConfigurationRecord& configuration)
    : configuration_(configuration) {}

StandardsInUse::~StandardsInUse() = default;

CStandardsMap* StandardsInUse::Get() {
  {
    platform::PlainGuard guard(lock_);
    if (inUse_ != nullptr) return inUse_;
  }
  Read();
  platform::PlainGuard guard(lock_);
  return inUse_;
}

bool StandardsInUse::Read() {
  uint64_t read = 0;
  {
    platform::PlainGuard guard(lock_);
    read = ++begunReads_;
  }
  std::unique_ptr<CStandardsMap> list = ReadList();
  const bool isRead = list != nullptr;
  platform::PlainGuard guard(lock_);
  if (read < readInUse_) return isRead;
  readInUse_ = read;
  inUse_ = list.get();
  if (isRead) lists_.push_back(std::move(list));
  return isRead;
}

// Null if the archive failed. Called without the lock, since the archive may take long.
std::unique_ptr<CStandardsMap> StandardsInUse::ReadList() const {
  const bool lowTemperature = configuration_.GetSlotCount() == kCalibrationSlots;
  try {
    std::string text;
    GetAnalysisArchive()->ReadAnalysisText(kStandardsArchiveName, kStandardsSection, text);
    auto list = std::make_unique<CStandardsMap>(lowTemperature);
    list->LoadFromText(text);
    return list;
  } catch (ArchiveException* failure) {
    delete failure;
    return nullptr;
  }
}

}  // namespace rvx
