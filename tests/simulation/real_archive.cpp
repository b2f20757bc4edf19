#include "tests/simulation/real_archive.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <memory>

#include "host/core/sample_columns.h"
#include "platform/guid.h"
#include "tests/support/unseen_guard.h"

namespace rvx::soak {
namespace {

std::string Emptied(const std::string& folder) {
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  return folder;
}

bool IsSame(const torvell::ColumnValue& a, const torvell::ColumnValue& b) {
  const auto* one = std::get_if<double>(&a);
  const auto* other = std::get_if<double>(&b);
  if (one != nullptr && other != nullptr && std::isnan(*one)) return std::isnan(*other);
  return a == b;
}

bool IsSame(const Sample& a, const Sample& b) {
  const auto one = torvell::StoredSampleValues(a);
  const auto other = torvell::StoredSampleValues(b);
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](const auto& x, const auto& y) { return IsSame(x, y); });
}

}  // namespace

RealArchive::RealArchive(const std::string& folder)
    : database_(":memory:"),
      journal_(database_, Emptied(folder) + "/trays.lock"),
      store_(database_, journal_, folder + "/samples.spool") {}

std::string RealArchive::FolderOf(int process) {
  return (std::filesystem::temp_directory_path() / fmt::format("torvell-soak.{}", process))
      .string();
}

void RealArchive::RemoveFolderOf(int process) {
  std::error_code ignored;
  std::filesystem::remove_all(FolderOf(process), ignored);
}

void RealArchive::SetReadOnly(bool isReadOnly) {
  platform::PlainGuard guard(database_.lock());
  database_.connection().exec(fmt::format("PRAGMA query_only = {}", isReadOnly ? 1 : 0));
}

std::optional<std::string> RealArchive::Store(const Sample& sample) {
  bool isReadOnly = false;
  {
    const UnseenGuard guard(lock_);
    given_.push_back(sample);
    isReadOnly = platform::MonotonicTime() < readOnlyUntil_;
  }
  SetReadOnly(isReadOnly);
  try {
    store_.StoreSample(sample);
    return std::nullopt;
  } catch (ArchiveException* raised) {
    const std::unique_ptr<ArchiveException> owned(raised);
    return owned->GetRecord().message;
  }
}

void RealArchive::BeReadOnlyUntil(platform::Microseconds moment) {
  const UnseenGuard guard(lock_);
  readOnlyUntil_ = moment;
}

std::string RealArchive::Check() {
  SetReadOnly(false);
  store_.TakeInSpool();
  std::map<std::string, std::vector<torvell::StoredSample>> rows;
  for (const torvell::StoredSample& row : store_.All()) {
    rows[platform::FormatGuid(row.id)].push_back(row);
  }
  const UnseenGuard guard(lock_);
  for (const Sample& sample : given_) {
    const auto& found = rows[platform::FormatGuid(sample.id)];
    if (found.size() != 1) {
      return fmt::format("{} stands in the archive {} times", sample.sampleId, found.size());
    }
    if (!IsSame(sample, found.front())) return sample.sampleId + " was changed in the archive";
  }
  if (rows.size() != given_.size()) return "the archive holds samples that nobody stored";
  return std::string();
}

}  // namespace rvx::soak
