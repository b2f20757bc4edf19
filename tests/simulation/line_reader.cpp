#include "tests/simulation/line_reader.h"

#include <algorithm>
#include <map>

namespace rvx::soak {
namespace {

constexpr size_t kMaxBytes = 25;
constexpr size_t kPlainBytes = 3;  // kind and tag

int DigitValue(uint8_t c) {
  if (c >= '0' && c <= '9') return c - '0';
  // The six characters between "9" and "A" count as 10 to 15 too, as for a reader that subtracts
  // the code of "0".
  if (c > '9' && c < '@') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<SeenReply> ReplyWatcher::Feed(uint8_t c) {
  switch (state_) {
    case State::Waiting:
      if (c == '-') state_ = State::Address;
      return std::nullopt;
    case State::Address:
      bytes_.clear();
      half_ = -1;
      // Address 0 may also be written as "A".
      state_ = c == '0' || c == 'A' ? State::Data : State::Waiting;
      return std::nullopt;
    case State::Data:
      break;
  }
  if (c == '\r') {
    state_ = State::Waiting;
    SeenReply reply;
    if (bytes_.size() >= kPlainBytes && bytes_[0] == 'Q') {
      reply.tag.assign(bytes_.begin() + 1, bytes_.begin() + 3);
      reply.data.assign(bytes_.begin() + 3, bytes_.end());
    }
    return reply;
  }
  if (bytes_.size() >= kMaxBytes) {
    state_ = State::Waiting;
  } else if (bytes_.size() < kPlainBytes || bytes_[1] == 'M') {
    bytes_.push_back(c);
  } else if (const int value = DigitValue(c); value < 0) {
    state_ = State::Waiting;
  } else if (half_ < 0) {
    half_ = value;
  } else {
    bytes_.push_back(static_cast<uint8_t>(half_ << 4 | value));
    half_ = -1;
  }
  return std::nullopt;
}

SeenStatus::SeenStatus(const std::vector<uint8_t>& data) {
  std::copy_n(data.begin(), std::min(data.size(), bytes.size()), bytes.begin());
}

std::string SeenStatus::tag() const {
  if (bytes[17] == 0 && bytes[18] == 0) return std::string();
  return {static_cast<char>(bytes[17]), static_cast<char>(bytes[18])};
}

std::optional<std::vector<uint8_t>> FromHex(std::string_view text) {
  std::vector<uint8_t> bytes;
  if (text.size() % 2 != 0) return std::nullopt;
  for (size_t i = 0; i < text.size(); i += 2) {
    const int high = DigitValue(static_cast<uint8_t>(text[i]));
    const int low = DigitValue(static_cast<uint8_t>(text[i + 1]));
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<uint8_t>(high << 4 | low));
  }
  return bytes;
}

std::string WhyNoRequest(std::string_view frame) {
  static const std::map<std::string_view, size_t> kPayloads = {
      {"CAB", 0},  {"CAI", 1}, {"CAR", 1}, {"CAS", 1}, {"CAV", 1},  {"CHO", 0},
      {"CMC", 15}, {"CMM", 3}, {"CMP", 1}, {"CPM", 3}, {"CSN", 16}, {"CST", 15},
      {"CTC", 3},  {"CUA", 0}, {"QMT", 0}, {"QST", 0}, {"QTR", 0}};
  if (frame.size() < 6 || frame.front() != '/' || frame.back() != '\r') return "no frame";
  if (frame[1] != '0') return "foreign address";
  const auto known = kPayloads.find(frame.substr(2, 3));
  if (known == kPayloads.end()) return "unknown request";
  const std::string_view payload = frame.substr(5, frame.size() - 6);
  if (payload.size() != 2 * known->second) return "wrong length";
  if (payload.find_first_not_of("0123456789ABCDEF") != std::string_view::npos) return "no hex";
  return std::string();
}

}  // namespace rvx::soak
