// Questions on a terminal and without one.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "host/cli/console_prompter.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace torvell {
namespace {

using platform::MessageAnswer;
using platform::MessageButtons;
using platform::MessageIcon;

// Redirects standard input and standard error during its lifetime.
class Redirected {
 public:
  explicit Redirected(int descriptor) : input_(dup(0)), error_(dup(2)) {
    dup2(descriptor, 0);
    dup2(descriptor, 2);
  }
  ~Redirected() {
    dup2(input_, 0);
    dup2(error_, 2);
    close(input_);
    close(error_);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;

 private:
  const int input_;
  const int error_;
};

class PrompterTest : public testing::Test {
 protected:
  PrompterTest() : person_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(person_);
    unlockpt(person_);
    terminal_ = open(ptsname(person_), O_RDWR | O_NOCTTY);
    nothing_ = open("/dev/null", O_RDWR);
  }
  ~PrompterTest() override {
    for (const int descriptor : {person_, terminal_, nothing_}) close(descriptor);
  }

  void Type(const std::string& text) {
    ASSERT_EQ(write(person_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  MessageAnswer Ask(MessageButtons buttons) {
    return prompter_.ShowMessage("Well?", buttons, MessageIcon::Question);
  }

  int person_;
  int terminal_ = -1;
  int nothing_ = -1;
  Output output_{false, false};
  ConsolePrompter prompter_{output_};
};

TEST_F(PrompterTest, WithoutATerminalANoticeIsReadAndAQuestionIsDeclined) {
  const Redirected redirected(nothing_);
  EXPECT_EQ(Ask(MessageButtons::Ok), MessageAnswer::Ok);
  EXPECT_EQ(Ask(MessageButtons::YesNo), MessageAnswer::No);
  EXPECT_FALSE(prompter_.Choose("Which?", {"a", "b"}, 0));
  {
    const ConsolePrompter::YesScope yes(prompter_);
    EXPECT_EQ(Ask(MessageButtons::YesNo), MessageAnswer::Yes);
  }
  EXPECT_EQ(Ask(MessageButtons::YesNo), MessageAnswer::No);
}

TEST_F(PrompterTest, ThePersonAnswersAndIsAskedAgainUntilItIsClear) {
  const Redirected redirected(terminal_);
  Type("perhaps\nYes\n");
  EXPECT_EQ(Ask(MessageButtons::YesNo), MessageAnswer::Yes);
  Type("n\n");
  EXPECT_EQ(Ask(MessageButtons::YesNo), MessageAnswer::No);
  Type("3\n2\n");
  EXPECT_EQ(prompter_.Choose("Which?", {"a", "b"}, 0), 1);
  Type("\n");
  EXPECT_EQ(prompter_.Choose("Which?", {"a", "b"}, 0), 0);
}

TEST_F(PrompterTest, AStandingQuestionCanBeTakenAway) {
  const Redirected redirected(terminal_);
  platform::Event stands("question stands");
  int aside = 0;
  prompter_.SetQuestionHook([&](bool before) {
    aside += before ? 1 : -1;
    if (before) stands.Set();
  });
  MessageAnswer answer = MessageAnswer::Yes;
  const auto asker = platform::StartThread("asker", [&] { answer = Ask(MessageButtons::YesNo); });
  stands.Wait();
  EXPECT_TRUE(prompter_.IsAsking());
  prompter_.Dismiss();
  asker->Join();
  EXPECT_EQ(answer, MessageAnswer::No);
  EXPECT_FALSE(prompter_.IsAsking());
  EXPECT_EQ(aside, 0);
}

}  // namespace
}  // namespace torvell
