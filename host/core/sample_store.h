// The sample archive.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "host/core/listener_list.h"
#include "host/core/sample_columns.h"
#include "host/core/sample_spool.h"

namespace torvell {

class Database;
class TrayJournal;

// A sample with what the host knows of it in addition to its record.
struct StoredSample : rvx::Sample {
  bool simulated = false;  // measured by a simulated instrument
};

// Which run of a tray a sample came from.
struct SampleOrigin {
  int64_t run = 0;        // number of the run in the journal; 0: none
  int32_t position = -1;  // from 0
  int32_t attempt = 0;    // how often the position was started, from 1
  rvx::ViscometerInstrument* instrument = nullptr;
  bool simulated = false;
};

class SampleStoredListener {
 public:
  virtual ~SampleStoredListener() = default;
  // Called after the commit, on the thread that stored the sample, which may hold locks of the
  // module: must not wait.
  virtual void SampleStored(const rvx::Sample& sample, const SampleOrigin& origin) = 0;
};

// A search of the archive. Empty fields do not count.
struct SampleQuery {
  enum class Order {
    Time,
    Instrument,
    Position,
    SampleId,
    Temperature,
    Average,
    Speed,
    Viscosity,
    Known,
    Operator,
    Origin
  };
  std::string instrument;        // part of the instrument's id, letter case is free
  std::string sampleId;          // part of the sample id, letter case is free
  std::string fromDay;           // "2026-01-31", local time, that day included
  std::string toDay;             // likewise
  std::optional<bool> verified;  // true: oils of known viscosity only; false: the others
  Order order = Order::Time;
  bool descending = true;

  // Returns whether it leaves anything out.
  bool IsFiltered() const {
    return !instrument.empty() || !sampleId.empty() || !fromDay.empty() || !toDay.empty() ||
           verified.has_value();
  }
};

// The samples of a data folder. Any thread. What is stored stays as it is: there is no operation
// that changes or deletes a sample. Operations that read throw HostError Database on failure.
class SampleStore : public rvx::SampleArchive {
 public:
  SampleStore(Database& database, TrayJournal& journal, const std::string& spoolFile);

  // Stores in the archive what earlier starts left in the spool. Returns texts for people, one for
  // each thing that happened; none if there was no spool.
  std::vector<std::string> TakeInSpool();

  int64_t Count();
  // Returns the latest n by timestamp, oldest first; all if n <= 0.
  std::vector<StoredSample> Last(int64_t n);
  std::vector<StoredSample> All() { return Last(0); }
  // Calls `visit` with each sample, oldest first, without a lock held; ends when it returns false.
  void ForEach(const std::function<bool(const StoredSample&)>& visit);
  // Returns whether the sample of this id came from a simulated instrument; false if there is none
  // of this id.
  bool IsSimulated(const platform::Guid& id);

  // Decides whether samples that are stored from now on and belong to no run of a tray count as
  // simulated.
  void SetSimulated(bool simulated) { simulated_ = simulated; }

  // Returns the row numbers of the matching samples, in the order asked for. 100,000 of them take
  // less than a megabyte, so a screen can keep the numbers and fetch the rows that it shows.
  std::vector<int64_t> FindRows(const SampleQuery& wanted);
  // Returns the samples of these rows, in their order; a row that does not exist is left out.
  std::vector<StoredSample> ReadRows(const std::vector<int64_t>& rows);

  void AddListener(SampleStoredListener* listener) { listeners_.Add(listener); }
  // Once it returns the listener is not called any more.
  void RemoveListener(SampleStoredListener* listener) { listeners_.Remove(listener); }

  // rvx::SampleArchive
  // Without a filter it returns all samples. ArchiveException on failure.
  void QuerySamples(rvx::ArrayOfSamples& out, rvx::SampleArchiveFilter* filter) override;
  // A sample that can't be stored is kept in the spool; the ArchiveException says so. A sample
  // whose id is in the archive already is refused with an ArchiveException too, and not spooled.
  void StoreSample(const rvx::Sample& sample) override;

 private:
  // Stores the samples that are not in the archive yet, all or none of them, and returns how many.
  // SQLite::Exception.
  int StoreWaiting(const std::vector<SpooledSample>& samples);

  Database& database_;
  TrayJournal& journal_;
  SampleSpool spool_;
  ListenerList<SampleStoredListener> listeners_;
  std::atomic<bool> simulated_{false};
};

// The two statements that read samples, public so that tests can look at their query plans. The
// first gives the latest samples, latest first, with the count as its parameter. The second gives a
// page of matching samples in order, from the start or, if `behind`, after a timestamp and row
// number; its first parameters are those of the query.
struct TranslatedQuery;
std::string NewestSamplesText();
std::string SamplePageText(const TranslatedQuery& query, bool behind);

}  // namespace torvell
