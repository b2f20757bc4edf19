// The calibration standards that an instrument works with.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "module/instrument/configuration_record.h"
#include "platform/lock.h"

namespace rvx {

class CStandardsMap;

// Any thread. A list lives as long as this object, also after a newer one has replaced it: a dialog
// may still use it.
class StandardsInUse {
 public:
  // `configuration` says which temperatures are in use; not owned, must outlive this.
  explicit StandardsInUse(const ConfigurationRecord& configuration);
  ~StandardsInUse();
  StandardsInUse(const StandardsInUse&) = delete;
  StandardsInUse& operator=(const StandardsInUse&) = delete;

  // The list in use, read from the archive if there is none; null if the archive failed.
  CStandardsMap* Get();
  // Reads the list from the archive and puts it into use. Returns false if the archive failed; no
  // list is in use then.
  bool Read();

 private:
  std::unique_ptr<CStandardsMap> ReadList() const;

  const ConfigurationRecord& configuration_;

  platform::PlainLock lock_{"standards", platform::kLeafRank};
  CStandardsMap* inUse_ GUARDED_BY(lock_) = nullptr;  // one of lists_
  // Two threads may read at once: a read that began before that of the list in use is discarded.
  uint64_t begunReads_ GUARDED_BY(lock_) = 0;
  uint64_t readInUse_ GUARDED_BY(lock_) = 0;
  std::vector<std::unique_ptr<CStandardsMap>> lists_ GUARDED_BY(lock_);  // all in use so far
};

}  // namespace rvx
