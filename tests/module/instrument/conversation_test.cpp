// The conversation seen from both ends: what the instrument sends, and which client gets which
// reply.
#include <gtest/gtest.h>

#include <algorithm>

#include "module/instrument/conversation.h"
#include "tests/module/instrument/instrument_fixture.h"

namespace rvx {
namespace {

int CountOf(const std::vector<std::string>& texts, const std::string& text) {
  return static_cast<int>(std::count(texts.begin(), texts.end(), text));
}

TEST(ConversationTest, TheFirstStatusSendsTheCellToAHarmlessTarget) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.port.WaitForWritten("CTC", 1, 10s));
    ASSERT_TRUE(bench.WaitForStatus(3));
    const std::vector<std::string> commands = bench.controller.commands();
    ASSERT_EQ(commands.size(), 1u);  // once, not with every status
    EXPECT_EQ(commands[0].substr(0, 6), "0CTC00");
    ConfigurationGuard guard(bench.instrument->configuration());
    EXPECT_EQ(bench.instrument->configuration().fields.lastReply, "TC");
  });
}

TEST(ConversationTest, PollsFromSendToSend) {
  RunVirtual([] {
    InstrumentBench bench;
    bench.controller.SetReplyDelay(40ms);
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.port.ClearWritten();
    const int purges = bench.port.purges();
    platform::Sleep(49500ms);
    EXPECT_NEAR(CountOf(bench.port.written(), "/0QST\r"), 100, 1);
    EXPECT_NEAR(bench.port.purges() - purges, 100, 1);  // bytes after an answer are old
  });
}

TEST(ConversationTest, ReportsSilenceOnceAnOutage) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(1));
    for (int outage = 1; outage <= 2; ++outage) {
      bench.controller.SetSilent(true);
      const platform::Microseconds begin = platform::MonotonicTime();
      bench.port.ClearWritten();
      ASSERT_TRUE(bench.host.instruments.WaitForErrors(static_cast<size_t>(outage), 60s));
      const auto silence = platform::MonotonicTime() - begin;
      EXPECT_GE(silence, 19s);
      EXPECT_LE(silence, 23s);
      platform::Sleep(60s);
      // One poll in about two seconds while it is silent.
      EXPECT_NEAR(static_cast<double>(bench.port.written().size()), 40.0, 3.0);
      const std::vector<ActionErrorRecord> errors = bench.host.instruments.errors();
      ASSERT_EQ(errors.size(), static_cast<size_t>(outage));
      EXPECT_EQ(errors.back().message, "Instrument not responding.");
      EXPECT_EQ(errors.back().kind, 1);
      EXPECT_EQ(errors.back().sampleFailure, 1);
      const uint64_t before = bench.instrument->GetStatusSequence();
      bench.controller.SetSilent(false);
      ASSERT_TRUE(bench.WaitForStatus(before + 2));
    }
  });
}

// Unrequested reports end an outage as a reply does.
TEST(ConversationTest, ReportsASecondSilenceWhileReportsComeByThemselves) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.SetByte(13, kSwitchAutoReport);
    for (size_t outage = 1; outage <= 2; ++outage) {
      bench.controller.SendStatus();
      platform::Sleep(1s);
      bench.controller.SetSilent(true);
      ASSERT_TRUE(bench.host.instruments.WaitForErrors(outage, 60s));
      EXPECT_EQ(bench.host.instruments.errors().back().message, "Instrument not responding.");
    }
  });
}

TEST(ConversationTest, SendsQueuedCommandsInOrderEachBehindTheReplyToTheOneBefore) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.port.ClearWritten();
    TagClient client(bench.instrument.get());
    bench.instrument->SetInjection(true, &client);
    bench.instrument->SetTestMotor(true, &client);
    bench.instrument->SetCooling(false, &client);
    ASSERT_TRUE(client.WaitForReplies(3));
    EXPECT_EQ(client.tags(), (std::vector<std::string>{"AI", "AS", "AV"}));
    const std::vector<std::string> written = bench.port.written();
    ASSERT_GE(written.size(), 3u);
    const auto first = std::find(written.begin(), written.end(), "/0CAI01\r");
    ASSERT_LE(first + 3, written.end());
    EXPECT_EQ(*(first + 1), "/0CAS01\r");
    EXPECT_EQ(*(first + 2), "/0CAV00\r");
  });
}

TEST(ConversationTest, ARefusedCommandGoesBehindThoseQueuedMeanwhile) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.Refuse("AI", 0x87, 1);
    bench.port.ClearWritten();
    TagClient client(bench.instrument.get());
    bench.instrument->SetInjection(true, &client);
    bench.instrument->SetTestMotor(true, &client);
    ASSERT_TRUE(client.WaitForReplies(2));
    EXPECT_EQ(client.tags(), (std::vector<std::string>{"AS", "AI"}));
    EXPECT_TRUE(bench.host.instruments.errors().empty());
  });
}

TEST(ConversationTest, ARefusedStartIsNotSentAgainBehindAnAbort) {
  struct Case {
    const char* tag;
    std::function<void(C_RVX&, CommandClient*)> start;
  };
  const std::vector<Case> cases{
      {"ST",
       [](C_RVX& rvx, CommandClient* client) {
         TestRecord test;
         rvx.StartTest(4, 0, test, client);
       }},
      {"MC", [](C_RVX& rvx, CommandClient* client) { rvx.RunMotorCurrent(4, client); }},
      {"PM", [](C_RVX& rvx, CommandClient* client) { rvx.PreconditionMotor(client); }},
      {"MP", [](C_RVX& rvx, CommandClient* client) { rvx.MoveToPosition(4, client); }},
      {"MM", [](C_RVX& rvx, CommandClient* client) { rvx.MoveStepper(8, 942, client); }}};
  for (const Case& c : cases) {
    RunVirtual([&c] {
      InstrumentBench bench;
      ASSERT_TRUE(bench.WaitForStatus(2));
      bench.controller.Refuse(c.tag, 0x87, 1);
      bench.port.ClearWritten();
      TagClient client(bench.instrument.get());
      c.start(*bench.instrument, &client);
      bench.instrument->SendAbort(&client);
      bench.instrument->SetInjection(false, &client);
      ASSERT_TRUE(client.WaitForReplies(2));
      ASSERT_TRUE(bench.WaitForStatus(bench.instrument->GetStatusSequence() + 2));
      EXPECT_EQ(client.tags(), (std::vector<std::string>{"AB", "AI"}));
      const std::vector<std::string> written = bench.port.written();
      const std::string start = std::string("/0C") + c.tag;
      EXPECT_EQ(std::count_if(written.begin(), written.end(),
                              [&](const std::string& text) { return text.starts_with(start); }),
                1)
          << c.tag;
    });
  }
}

// Another frame has ended the wait for the reply, and the thread sleeps until its next poll when
// the refusal comes.
TEST(ConversationTest, ACommandThatIsAskedForAgainDoesNotWaitForThePoll) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.Refuse("AI", 0x87, 1);
    bench.controller.SetReplyDelay(100ms);
    bench.port.ClearWritten();
    platform::Sleep(50ms);  // after the first status and its command
    const platform::Microseconds begin = platform::MonotonicTime();
    bench.port.Reply("-0QXX00\r", 10ms);
    bench.instrument->SetInjection(true, nullptr);
    ASSERT_TRUE(bench.port.WaitForWritten("CAI01", 2, 10s));
    EXPECT_LE(platform::MonotonicTime() - begin, 200ms);
  });
}

// An instrument that sends a command while it reads a frame.
class SlowReader : public ConversationPeer {
 public:
  void SendFrame(std::span<const uint8_t> frame) override {
    if (frame[2] == 'C') sent_.Set();
  }
  void PurgePort() override {}
  platform::Milliseconds GetStatusPeriod() override { return 1h; }
  void InstrumentNotResponding() override {}
  std::optional<StatusRecord> KeepStatus(std::span<const uint8_t> data) override {
    if (!std::exchange(queued_, true)) {
      conversation.Queue("0CAI01", &client);
      EXPECT_TRUE(sent_.Wait(1s));
    }
    return StatusRecord::FromData(data);
  }
  void FollowStatus(const StatusRecord&) override {}
  void KeepIdentity(std::span<const uint8_t>) override {}
  void KeepSelfTest(uint16_t) override {}
  void FrameProcessed() override {}

  Conversation conversation{*this, 0};
  TagClient client{nullptr};

 private:
  platform::Event sent_{"test: command sent"};
  bool queued_ = false;
};

TEST(ConversationTest, AFrameThatIsBeingReadAnswersNoCommandThatIsSentMeanwhile) {
  RunVirtual([] {
    SlowReader peer;
    peer.conversation.Start();
    StatusBytes status{};
    const auto receive = [&](const std::string& tag) {
      std::copy(tag.begin(), tag.end(), status.end() - 2);
      const std::string frame = StatusReply('0', status);
      peer.conversation.Receive({reinterpret_cast<const uint8_t*>(frame.data()), frame.size()});
    };
    receive("TC");
    EXPECT_TRUE(peer.client.tags().empty());
    receive("AI");
    EXPECT_EQ(peer.client.tags(), std::vector<std::string>{"AI"});
    peer.conversation.Stop();
  });
}

TEST(ConversationTest, GivesUpBehind101Resends) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.Refuse("AI", 0x80, -1);
    bench.port.ClearWritten();
    TagClient client(bench.instrument.get());
    for (size_t round = 1; round <= 2; ++round) {  // the count starts again for the next command
      bench.instrument->SetInjection(true, &client);
      ASSERT_TRUE(client.WaitForReplies(round));
      EXPECT_EQ(client.tags().back(), "");
      EXPECT_EQ(CountOf(bench.port.written(), "/0CAI01\r"), 102 * static_cast<int>(round));
    }
  });
}

TEST(ConversationTest, OtherCodesAnswerTheCommandAndAreReported) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    struct Case {
      uint8_t code;
      int32_t kind;
      const char* message;
    };
    for (const Case& c :
         {Case{0x40, 0, "The instrument must be idle to initiate the requested operation."},
          Case{0x83, 1,
               "Thermoelectrics may not be manipulated while temperature control is enabled."},
          Case{0x48, 0, "An invalid error code was received from the instrument (0x48)."},
          Case{0xE1, 1,
               "The instrument self tests failed. Open the Service/Diagnostics screen for "
               "details."}}) {
      const size_t before = bench.host.instruments.errors().size();
      bench.controller.Refuse("AV", c.code, 1);
      TagClient client(bench.instrument.get());
      bench.instrument->SetCooling(true, &client);
      ASSERT_TRUE(bench.host.instruments.WaitForErrors(before + 1, 60s));
      EXPECT_EQ(client.tags(), (std::vector<std::string>{"AV"}));
      const ActionErrorRecord error = bench.host.instruments.errors().back();
      EXPECT_EQ(error.message, c.message);
      EXPECT_EQ(error.kind, c.kind);
      EXPECT_EQ(error.instrumentId, "RVX");
    }
  });
}

TEST(ConversationTest, AnErrorClientSilencesTheReportAndLaterClients) {
  struct Taker : InstrErrorClient {
    explicit Taker(int32_t answer_) : answer(answer_) {}
    int32_t InstrumentError(uint8_t code) override {
      codes.push_back(code);
      return answer;
    }
    int32_t answer;
    std::vector<uint8_t> codes;
  };
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    Taker passes(0), takes(1), neverAsked(1);
    for (Taker* taker : {&passes, &takes, &neverAsked}) bench.instrument->AddErrorClient(taker);
    bench.controller.Refuse("AV", 0x83, 1);
    bench.instrument->SetCooling(true, nullptr);
    ASSERT_TRUE(bench.WaitForStatus(bench.instrument->GetStatusSequence() + 2));
    EXPECT_EQ(passes.codes, std::vector<uint8_t>{0x83});
    EXPECT_EQ(takes.codes, std::vector<uint8_t>{0x83});
    EXPECT_TRUE(neverAsked.codes.empty());
    EXPECT_TRUE(bench.host.instruments.errors().empty());
    for (Taker* taker : {&passes, &takes, &neverAsked}) bench.instrument->RemoveErrorClient(taker);
  });
}

TEST(ConversationTest, AClientMayQueueFromInsideItsReplyAndDieBeforeIt) {
  for (uint64_t seed = 1; seed <= 40; ++seed) {
    RunVirtual(
        [seed] {
          InstrumentBench bench;
          ASSERT_TRUE(bench.WaitForStatus(2));
          bench.controller.SetReplyDelay(platform::Milliseconds(seed % 7));
          TagClient chain(bench.instrument.get());
          C_RVX* instrument = bench.instrument.get();
          chain.onReply = [&chain, instrument] {
            if (chain.tags().size() < 5) instrument->SetTestMotor(true, &chain);
          };
          instrument->SetTestMotor(true, &chain);
          for (int i = 0; i < 5; ++i) {
            // Dies with its command queued, pending or being answered, by chance of the seed.
            TagClient shortLived(instrument);
            instrument->SetInjection(true, &shortLived);
            platform::Sleep(platform::Milliseconds((seed * 3 + static_cast<uint64_t>(i)) % 9));
          }
          EXPECT_TRUE(chain.WaitForReplies(5));
          EXPECT_TRUE(bench.port.WaitForWritten("CAI01", 5, 60s));  // they are still sent
        },
        seed);
  }
}

TEST(ConversationTest, AnUnansweredCommandIsDroppedBehindTwoSeconds) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.SetSilent(true);
    TagClient client(bench.instrument.get());
    bench.instrument->SetInjection(true, &client);
    ASSERT_TRUE(bench.port.WaitForWritten("CAI", 1, 10s));
    platform::Sleep(2100ms);
    const uint64_t before = bench.instrument->GetStatusSequence();
    bench.controller.SetSilent(false);
    ASSERT_TRUE(bench.WaitForStatus(before + 3));
    EXPECT_TRUE(client.tags().empty());
    EXPECT_EQ(CountOf(bench.controller.commands(), "0CAI01"), 1);  // not sent again
  });
}

TEST(ConversationTest, AWithdrawnCommandIsNeitherSentNorAnswered) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.Refuse("AV", 0x87, -1);
    bench.controller.SetReplyDelay(1s);
    TagClient client(bench.instrument.get());
    TagClient other(bench.instrument.get());
    TagClient bystander(bench.instrument.get());
    bench.instrument->SetCooling(true, &client);
    bench.instrument->SetInjection(true, &client);
    bench.instrument->SetTestMotor(true, &other);
    ASSERT_TRUE(bench.port.WaitForWritten("CAV", 1, 10s));
    bench.instrument->WithdrawCommands(&bystander);  // leaves the others' commands
    bench.instrument->WithdrawCommands(&client);
    ASSERT_TRUE(other.WaitForReplies(1));
    platform::Sleep(1min);
    EXPECT_EQ(bench.controller.commands().size(), 3u);  // with the CTC after the first status
    EXPECT_EQ(CountOf(bench.controller.commands(), "0CAV01"), 1);
    EXPECT_TRUE(client.tags().empty());
  });
}

TEST(ConversationTest, AutoReportStopsThePollingAndItsEndResumesIt) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.OnCommand([&](const std::string& tag, const std::string& payload) {
      if (tag == "AR") bench.controller.SetByte(13, payload == "01" ? 0x80 : 0);
    });
    TagClient client(bench.instrument.get());
    bench.instrument->SetAutoReport(true, &client);
    ASSERT_TRUE(client.WaitForReplies(1));
    platform::Sleep(1s);
    bench.port.ClearWritten();
    const uint64_t before = bench.instrument->GetStatusSequence();
    for (int tick = 0; tick < 4; ++tick) {
      platform::Sleep(500ms);
      bench.controller.SendStatus();
    }
    platform::Sleep(100ms);
    EXPECT_EQ(bench.instrument->GetStatusSequence(), before + 4);
    EXPECT_TRUE(bench.port.written().empty());
    bench.controller.SetByte(13, 0);
    bench.controller.SendStatus();  // switched off by itself
    EXPECT_TRUE(bench.port.WaitForWritten("/0QST\r", 2, 5s));
  });
}

// A controller that accepts the command but never reports must be polled again, since nothing else
// would be sent to it.
TEST(ConversationTest, ReportsThatNeverBeginAreAskedFor) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    TagClient client(bench.instrument.get());
    bench.instrument->SetAutoReport(true, &client);
    ASSERT_TRUE(client.WaitForReplies(1));
    bench.port.ClearWritten();
    platform::Sleep(19s);
    EXPECT_TRUE(bench.port.written().empty());
    EXPECT_TRUE(bench.port.WaitForWritten("/0QST\r", 1, 2s));
  });
}

TEST(ConversationTest, ALostReplyToAutoReportDoesNotEndThePolling) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.SetSilent(true);
    bench.instrument->SetAutoReport(true, nullptr);
    ASSERT_TRUE(bench.port.WaitForWritten("CAR01", 1, 10s));
    platform::Sleep(2100ms);
    const uint64_t before = bench.instrument->GetStatusSequence();
    bench.controller.SetSilent(false);
    const platform::Microseconds begin = platform::MonotonicTime();
    EXPECT_TRUE(bench.WaitForStatus(before + 3));
    EXPECT_LE(platform::MonotonicTime() - begin, 10s);
  });
}

TEST(ConversationTest, DamagedAndForeignFramesDoNoHarm) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    const uint16_t count = bench.instrument->GetIntCount();
    for (const char* frame : {"-0QST0011\r", "-0QXX00\r", "-0CST00\r", "-\r", "-0QTR0\r", "-0\r",
                              "-0QSTzz\r", "-5QST0000\r", "-0QMT\r", "-0QMTRVX 2\r"}) {
      bench.port.Reply(frame);
    }
    platform::Sleep(10ms);
    EXPECT_EQ(bench.instrument->GetIntCount(), count);
    bench.controller.SetWord(0, 777);
    ASSERT_TRUE(bench.WaitForStatus(bench.instrument->GetStatusSequence() + 2));
    EXPECT_EQ(bench.instrument->GetIntCount(), 777);
  });
}

TEST(ConversationTest, SelfTestAndIdentityReachTheRecordAndTheirClients) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    bench.controller.SetSelfTestWord(0x0104);
    bench.controller.SetIdentification(
        "RVX 2\x03"
        "02.20NEW-7");
    TagClient client(bench.instrument.get());
    bench.instrument->QuerySelfTest(nullptr);
    bench.instrument->QuerySelfTest(&client);
    bench.instrument->QueryIdentity(&client);
    ASSERT_TRUE(client.WaitForReplies(2));
    EXPECT_EQ(client.tags(), (std::vector<std::string>{"TR", "MT"}));
    EXPECT_EQ(bench.instrument->GetSelfTestWord(), 0x0104);
    EXPECT_DOUBLE_EQ(bench.instrument->GetFirmwareNumber(), 2.20);
    bench.port.Reply("-0QTR0201\r");  // unrequested
    ASSERT_TRUE(bench.WaitForStatus(bench.instrument->GetStatusSequence() + 2));
    EXPECT_EQ(bench.instrument->GetSelfTestWord(), 0x0201);
    ConfigurationGuard guard(bench.instrument->configuration());
    EXPECT_EQ(bench.instrument->configuration().fields.modelCode, '2');
    EXPECT_EQ(bench.instrument->configuration().fields.optionByte, 3);
    EXPECT_EQ(bench.instrument->configuration().fields.serialNumber, "NEW-7");
  });
}

TEST(ConversationTest, AnAddressAboveNineIsHeardWhateverItsReplyLooksLike) {
  for (const char addressCharacter : {'B', 'L'}) {  // 11 as the request writes it, and as "A" + 11
    RunVirtual([addressCharacter] {
      FakeHost host;
      FakePort& port = host.ports.Add("COM1");
      port.SetScript([addressCharacter](FakePort& line, std::span<const uint8_t> bytes) {
        if (bytes.size() > 1 && bytes[1] == 'B') {
          line.Reply(StatusReply(addressCharacter, StatusBytes{}));
        }
      });
      C_RVX instrument("COM1", 11, kModelFour, PlainActions());
      EXPECT_EQ(instrument.GetPortAddressText(), "RVX Bh");
      platform::Sleep(3s);
      EXPECT_GT(instrument.GetStatusSequence(), 3u);
    });
  }
}

}  // namespace
}  // namespace rvx
