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

// A sample with what the host knows of it beside its record.
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
  // Behind the commit, on the thread that stored it, with locks of the module held: do not wait
  // there.
  virtual void SampleStored(const rvx::Sample& sample, const SampleOrigin& origin) = 0;
};

// What somebody wants to see of the archive. Empty fields do not count.
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

  // Whether it leaves anything out.
  bool IsFiltered() const {
    return !instrument.empty() || !sampleId.empty() || !fromDay.empty() || !toDay.empty() ||
           verified.has_value();
  }
};

// Any thread. What is stored stays as it is: there is no operation that changes or deletes a
// sample.
class SampleStore : public rvx::SampleArchive {
 public:
  SampleStore(Database& database, TrayJournal& journal, const std::string& spoolFile);

  // What the last start left in the spool goes into the archive. Returns texts for people, one for
  // each thing that happened; none if there was no spool.
  std::vector<std::string> TakeInSpool();

  int64_t Count();
  // The latest n by timestamp, oldest first; n <= 0: all.
  std::vector<StoredSample> Last(int64_t n);
  std::vector<StoredSample> All() { return Last(0); }
  // Oldest first, in pages, without a lock held while `visit` runs; ends when it answers false.
  void ForEach(const std::function<bool(const StoredSample&)>& visit);
  // Whether the sample of this id came from a simulated instrument; false for one that is not
  // there.
  bool IsSimulated(const platform::Guid& id);

  // From here on samples that belong to no run of a tray count as simulated, or don't.
  void SetSimulated(bool simulated) { simulated_ = simulated; }

  // The row numbers of what matches, in the order asked for: a list of 100,000 takes less than a
  // megabyte, so that a screen can fetch the rows that it shows.
  std::vector<int64_t> FindRows(const SampleQuery& wanted);
  // The samples of these rows, in their order; a row that does not exist is left out.
  std::vector<StoredSample> ReadRows(const std::vector<int64_t>& rows);

  void AddListener(SampleStoredListener* listener) { listeners_.Add(listener); }
  // Once it returns the listener is not called any more.
  void RemoveListener(SampleStoredListener* listener) { listeners_.Remove(listener); }

  // rvx::SampleArchive
  // Without a filter: all.
  void QuerySamples(rvx::ArrayOfSamples& out, rvx::SampleArchiveFilter* filter) override;
  // A sample that can't be stored goes to the spool; the ArchiveException says so. A sample whose
  // id is there already raises too, and is not spooled.
  void StoreSample(const rvx::Sample& sample) override;

 private:
  // Those that are not in the archive yet, all or none of them: how many. SQLite::Exception.
  int StoreWaiting(const std::vector<SpooledSample>& samples);

  Database& database_;
  TrayJournal& journal_;
  SampleSpool spool_;
  ListenerList<SampleStoredListener> listeners_;
  std::atomic<bool> simulated_{false};
};

// The statements that read, for whoever looks at their plans. The one gives the latest samples,
// latest first, with the count as its parameter; the other a page of matching samples in order,
// from the start or behind a timestamp and row number, with the query's parameters first.
struct TranslatedQuery;
std::string NewestSamplesText();
std::string SamplePageText(const TranslatedQuery& query, bool behind);

}  // namespace torvell
