#include "module/calibration/standard_group_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace rvx {
namespace {

constexpr size_t kMaxBytes = 1024 * 1024;
constexpr size_t kMaxPieceLength = 63;
constexpr size_t kFieldCount = 3;
constexpr char kNoTemperature[] = "777";

// Takes the next piece off the front: up to and including a newline, or the longest piece of a
// line.
std::string_view TakePiece(std::string_view& bytes) {
  std::string_view piece = bytes.substr(0, kMaxPieceLength);
  const size_t newline = piece.find('\n');
  if (newline != std::string_view::npos) piece = piece.substr(0, newline + 1);
  bytes.remove_prefix(piece.size());
  return piece;
}

// The first fields of a piece; how many there are.
size_t TakeFields(std::string_view piece, std::array<std::string_view, kFieldCount>& fields) {
  piece = piece.substr(0, piece.find('\0'));
  size_t count = 0;
  while (count < kFieldCount) {
    const size_t begin = piece.find_first_not_of(',');
    if (begin == std::string_view::npos) break;
    piece.remove_prefix(begin);
    fields[count] = piece.substr(0, piece.find(','));
    piece.remove_prefix(fields[count].size());
    ++count;
  }
  return count;
}

std::string WithoutCarriageReturns(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') continue;
    text += bytes[i];
  }
  return text;
}

}  // namespace

std::vector<StandardGroupRow> ParseStandardGroups(std::string_view bytes) {
  const std::string text = WithoutCarriageReturns(bytes);
  std::string_view rest = text;
  TakePiece(rest);
  std::vector<StandardGroupRow> rows;
  while (!rest.empty()) {
    std::array<std::string_view, kFieldCount> fields;
    const std::string_view piece = TakePiece(rest);
    const size_t count = TakeFields(piece, fields);
    const bool onlyCommas = piece.front() == ',' && fields[0] == "\n";
    if (count == 0 || onlyCommas) continue;
    StandardGroupRow row;
    row.name = fields[0];
    row.temperature = count > 1 ? std::string(fields[1]) : kNoTemperature;
    if (count > 2) row.group = fields[2].substr(0, fields[2].size() - 1);
    rows.push_back(std::move(row));
  }
  return rows;
}

std::string StandardGroupPath(const std::string& defaultFolder) {
  return defaultFolder + "StandardGroups.txt";
}

std::vector<StandardGroupRow> ReadStandardGroups(const std::string& path) {
  // Reading from a pipe or a device of that name would block.
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return {};
  std::ifstream file(path, std::ios::binary);
  if (!file) return {};
  std::string bytes(kMaxBytes, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return ParseStandardGroups(bytes);
}

}  // namespace rvx
