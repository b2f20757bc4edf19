// A queued command and the one who hears its reply.
#pragma once

#include <string>
#include <string_view>

namespace rvx {

class C_RVX;

// Hears the tag of the reply to a command; the empty tag means that the instrument would not take
// it. Called on the thread that parses replies, so it must be short and must not wait; it may queue
// further commands. A client may die before its reply: its destructor takes it out of the queue of
// the instrument it was made for, and waits out a call that is going on.
class CommandClient {
 public:
  // `instrument`: the one whose commands name this client; must outlive it.
  explicit CommandClient(C_RVX* instrument) : instrument_(instrument) {}
  CommandClient(const CommandClient&) = delete;
  CommandClient& operator=(const CommandClient&) = delete;
  virtual ~CommandClient() { Detach(); }
  virtual void CommandReply(const std::string& tag) = 0;

 protected:
  // Takes the client out of queue and pending command. Call it first in the destructor of a class
  // whose CommandReply touches its own members.
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

// What a command's text says after the address, as "CST"; empty for a text too short for it.
inline std::string_view KindAndTag(std::string_view text) {
  return text.size() < 4 ? std::string_view() : text.substr(1, 3);
}

}  // namespace rvx
