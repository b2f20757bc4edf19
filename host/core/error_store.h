// The error archive: keeps every failure that was reported to the user.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "boundary/exceptions.h"
#include "host/core/listener_list.h"
#include "platform/date.h"

namespace rvx {
// The module only passes a pointer to this on.
class ErrorArchive {
 public:
  virtual ~ErrorArchive() = default;
};
}  // namespace rvx

namespace torvell {

class Database;

// One reported failure.
struct ErrorReport {
  platform::Date time;  // local time
  int32_t kind = 0;     // 1: a computer or instrument failure, 0: a message
  std::string source;   // "COM1 RVX" for an instrument, "host", "port COM1"
  std::string message;  // complete text
  // What the report is about; None for the host's own failures, and for reports from before codes
  // were kept.
  rvx::MessageCode code = rvx::MessageCode::None;
  int32_t tray = 0;  // this and the next four: as the source of the failure gave them
  int32_t position = 0;
  std::string sampleId;
  std::string operatorName;
  bool sampleFailure = false;
  bool acknowledged = false;  // a user has taken notice
  int64_t row = 0;            // in the archive; 0: it could not be kept
  // Only for comparison, never dereferenced; null for the host's own failures and in what Last()
  // returns.
  rvx::ViscometerInstrument* instrument = nullptr;
};

class ErrorListener {
 public:
  virtual ~ErrorListener() = default;
  // Called on the thread that reports, which may hold locks of the module: must not wait.
  virtual void ErrorReported(const ErrorReport& report) = 0;
};

// The reports of a data folder. Any thread.
class ErrorStore : public rvx::ErrorArchive {
 public:
  explicit ErrorStore(Database& database);

  // Keeps the report and passes it to the listeners, with its row. Never throws: a report that
  // can't be kept is logged and still passed to the listeners.
  void Report(ErrorReport report);
  // Returns the latest n, oldest first; all if n <= 0. HostError Database.
  std::vector<ErrorReport> Last(int64_t n);
  // Marks these rows as acknowledged; unknown ones are skipped. HostError Database, then none of
  // them is marked.
  void Acknowledge(const std::vector<int64_t>& rows);

  void AddListener(ErrorListener* listener) { listeners_.Add(listener); }
  // Once it returns the listener is not called any more.
  void RemoveListener(ErrorListener* listener) { listeners_.Remove(listener); }

 private:
  Database& database_;
  ListenerList<ErrorListener> listeners_;
};

}  // namespace torvell
