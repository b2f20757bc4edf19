// Failures that cross the boundary between host and module, in both directions. All are thrown by
// pointer as heap objects; the catcher deletes them. An exception that is thrown on one side and
// caught on the other is always one of these, so that both sides can read and delete it.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "boundary/message_code.h"
#include "platform/date.h"
#include "platform/exception.h"
#include "platform/time_base.h"

namespace rvx {

class ViscometerInstrument;

// What a failure says to the host and its user.
struct ActionErrorRecord {
  ViscometerInstrument* source = nullptr;  // the instrument; not owned
  std::string message;                     // complete, for the user; names no command or menu
  MessageCode code = MessageCode::None;    // what the message is about
  int32_t kind = 0;                        // 1: a computer or instrument failure
  platform::Date time = platform::LocalNow();
  std::string typeName;
  std::string instrumentId;
  int32_t tray = 0;
  int32_t position = 0;
  int32_t reserved = 0;
  std::string sampleId;
  std::string operatorName;
  int32_t reserved2 = 0;
  int32_t sampleFailure = 0;  // 1 in failures of sample actions and their sequencers
};

class CViscoException : public platform::CException {
 public:
  CViscoException() = default;
  explicit CViscoException(ActionErrorRecord record) : record_(std::move(record)) {}

  // The same text for every subclass: 1, or 0 for a null buffer or a size below 17.
  int GetErrorMessage(char* buffer, uint32_t size, uint32_t* helpContext) override {
    static constexpr char kText[] = "CViscoException";
    if (helpContext != nullptr) *helpContext = 0;
    if (buffer == nullptr || size < 17) return 0;
    std::memcpy(buffer, kText, sizeof(kText));
    return 1;
  }
  virtual const ActionErrorRecord& GetRecord() const { return record_; }

 private:
  ActionErrorRecord record_;
};

// The host library or an entry of it is missing; or an operation was given an index, a kind or a
// text that it does not know. From a standards lookup it is the ordinary end of a list.
class InvalidException : public CViscoException {
 public:
  using CViscoException::CViscoException;
};

// An action or a tray could not start or has failed; carries a filled record.
class ActionException : public CViscoException {
 public:
  using CViscoException::CViscoException;
};

// A stored text or sample can't be read or written. The host puts its reason into the message.
class ArchiveException : public CViscoException {
 public:
  using CViscoException::CViscoException;
};

}  // namespace rvx
