#include "module/instrument/error_clients.h"

namespace rvx {

void ErrorClients::Add(InstrErrorClient* client) {
  platform::RecursiveGuard guard(lock_);
  clients_.push_back(client);
}

void ErrorClients::Remove(InstrErrorClient* client) {
  platform::RecursiveGuard guard(lock_);
  std::erase(clients_, client);
}

bool ErrorClients::TakeCareOf(uint8_t code) {
  platform::RecursiveGuard guard(lock_);
  for (InstrErrorClient* client : clients_) {
    if (client->InstrumentError(code) != 0) return true;
  }
  return false;
}

}  // namespace rvx
