#include "module/instrument/command.h"

#include "module/instrument/c_rvx.h"

namespace rvx {

void CommandClient::Detach() {
  if (instrument_ != nullptr) instrument_->ForgetClient(this);
  instrument_ = nullptr;
}

}  // namespace rvx
