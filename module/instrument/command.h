// A queued command and the client that gets its reply.
#pragma once

#include <string>
#include <string_view>

namespace rvx {

class C_RVX;

// Gets the tag of the reply to a command; an empty tag means that the instrument did not accept the
// command. Called on the thread that parses replies, so it must be short and must not wait; it may
// queue further commands. A client may be destroyed before its reply: its destructor removes it
// from the queue of its instrument, and waits for a call in progress.
class CommandClient {
 public:
  // `instrument`: the one that the commands of this client go to; must outlive the client.
  explicit CommandClient(C_RVX* instrument) : instrument_(instrument) {}
  CommandClient(const CommandClient&) = delete;
  CommandClient& operator=(const CommandClient&) = delete;
  virtual ~CommandClient() { Detach(); }
  virtual void CommandReply(const std::string& tag) = 0;

 protected:
  // Removes the client from the queue and from the pending command. Call it first in the destructor
  // of a class whose CommandReply touches its own members.
  void Detach();

 private:
  C_RVX* instrument_;
};

// text: address character, kind, tag and hex payload, without "/" and CR.
struct Command {
  std::string text;
  CommandClient* client = nullptr;  // not owned
  int resends = 0;                  // so far, because the instrument asked for it
};

// The kind and tag of a command's text, which come after the address, as "CST"; empty for a text
// that is too short.
inline std::string_view KindAndTag(std::string_view text) {
  return text.size() < 4 ? std::string_view() : text.substr(1, 3);
}

}  // namespace rvx
