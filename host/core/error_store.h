// The error archive: every failure that was reported to the user, kept.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "boundary/exceptions.h"
#include "host/core/listener_list.h"
#include "platform/date.h"

namespace rvx {
// What the module passes on without looking into it.
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
  // What it is about; None for the host's own, and for what was reported before codes were kept.
  rvx::MessageCode code = rvx::MessageCode::None;
  int32_t tray = 0;  // as the raiser gave them
  int32_t position = 0;
  std::string sampleId;
  std::string operatorName;
  bool sampleFailure = false;
  bool acknowledged = false;  // somebody has taken notice
  int64_t row = 0;            // in the archive; 0: it could not be kept
  // Only to compare with; null for the host's own failures and in what Last() returns.
  rvx::ViscometerInstrument* instrument = nullptr;
};

class ErrorListener {
 public:
  virtual ~ErrorListener() = default;
  // Called on the thread that reports, with locks of the module possibly held: do not wait there.
  virtual void ErrorReported(const ErrorReport& report) = 0;
};

// Any thread.
class ErrorStore : public rvx::ErrorArchive {
 public:
  explicit ErrorStore(Database& database);

  // Keeps the report and passes it to the listeners, with its row. Never raises: a report that
  // can't be kept goes to the log and to the listeners all the same.
  void Report(ErrorReport report);
  // The latest n, oldest first; n <= 0: all. HostError Database.
  std::vector<ErrorReport> Last(int64_t n);
  // Somebody has taken notice of these rows; unknown ones are passed over. HostError Database, then
  // none of them counts as seen.
  void Acknowledge(const std::vector<int64_t>& rows);

  void AddListener(ErrorListener* listener) { listeners_.Add(listener); }
  // Once it returns the listener is not called any more.
  void RemoveListener(ErrorListener* listener) { listeners_.Remove(listener); }

 private:
  Database& database_;
  ListenerList<ErrorListener> listeners_;
};

}  // namespace torvell
