#include "module/instrument/reply_error.h"

#include "module/instrument/c_rvx.h"
#include "module/protocol/frames.h"
#include "module/protocol/status_record.h"

namespace rvx {

ReplyError::ReplyError(C_RVX& instrument) : instrument_(instrument) {
  instrument_.AddErrorClient(this);
}

ReplyError::~ReplyError() { instrument_.RemoveErrorClient(this); }

uint8_t ReplyError::Take(const std::string& tag) {
  // A status frame has been kept by now; these two replies are no status frames.
  const bool isStatus = tag != kSelfTestTag && tag != kIdentityTag;
  const uint8_t code = isStatus ? instrument_.GetErrorCode() : uint8_t{0};
  const uint8_t error = AsksForResend(code) ? uint8_t{0} : code;
  frame_ = error != 0 ? instrument_.GetStatusSequence() : 0;
  return error;
}

int32_t ReplyError::InstrumentError(uint8_t /*code*/) {
  return frame_ != 0 && frame_ == instrument_.GetStatusSequence() ? 1 : 0;
}

}  // namespace rvx
