// The word of state and the commands that fit it.
#include "host/desktop/instrument_state.h"

#include <gtest/gtest.h>

#include "boundary/instrument_limits.h"

namespace torvell {
namespace {

using platform::Milliseconds;

InstrumentSituation Ready() {
  InstrumentSituation situation;
  situation.silence = Milliseconds(100);
  situation.readings.sequence = 5;
  situation.readings.temperature = 5.0;
  situation.filled = 2;
  situation.level = 10;
  return situation;
}

InstrumentSituation Running() {
  InstrumentSituation situation = Ready();
  situation.running = true;
  situation.position = 7;
  return situation;
}

TEST(StateWordTest, SilenceOutranksErrorAndErrorOutranksTheRun) {
  InstrumentSituation situation = Running();
  EXPECT_EQ(StateText(situation, 30), "Running 7/30");
  situation.position = 0;
  EXPECT_EQ(StateText(situation, 30), "Running");
  situation.paused = true;
  EXPECT_EQ(WordOf(situation), StateWord::Paused);
  situation.readings.errorCode = 0x23;
  EXPECT_EQ(WordOf(situation), StateWord::Error);
  situation.silence = kDisconnectedAfter;
  EXPECT_EQ(WordOf(situation), StateWord::Disconnected);
}

TEST(StateWordTest, SwitchesAndStatusBitsKeepItFromBeingReady) {
  InstrumentSituation situation = Ready();
  situation.readings.errorCode = 0x87;  // a refused command says nothing about the instrument
  EXPECT_EQ(WordOf(situation), StateWord::Ready);
  situation.readings.switchByte = 0x01;
  EXPECT_EQ(WordOf(situation), StateWord::NotReady);
  situation.readings.switchByte = 0;
  situation.readings.machineStatus = 0x06;
  EXPECT_EQ(WordOf(situation), StateWord::NotReady);
}

TEST(StateWordTest, NothingHeardYetIsDisconnectedAndStale) {
  InstrumentSituation situation = Ready();
  situation.silence.reset();
  EXPECT_EQ(WordOf(situation), StateWord::Disconnected);
  EXPECT_TRUE(IsStale(situation));
  situation.silence = rvx::kStaleAfter - Milliseconds(1);
  EXPECT_FALSE(IsStale(situation));
}

TEST(RunOffersTest, AReadyTrayCanOnlyBeStartedAndEdited) {
  const RunOffers offers = OffersOf(Ready());
  EXPECT_TRUE(offers.start.enabled && offers.edit.enabled);
  for (const Offer* offer : {&offers.pauseNow, &offers.pauseAfter, &offers.resume, &offers.abort,
                             &offers.prepare, &offers.newTray}) {
    EXPECT_FALSE(offer->shown);
  }
}

TEST(RunOffersTest, WhatKeepsATrayFromStartingIsSaid) {
  InstrumentSituation situation = Ready();
  situation.filled = 0;
  EXPECT_TRUE(OffersOf(situation).start.why.contains("empty"));
  situation = Ready();
  situation.readings.temperature = 10.0;
  EXPECT_TRUE(OffersOf(situation).start.why.contains("too warm"));
  situation.readings.temperature = std::nan("");
  EXPECT_FALSE(OffersOf(situation).start.enabled);
  situation = Ready();
  situation.level = 0;
  EXPECT_TRUE(OffersOf(situation).start.why.contains("level 10 (operator)"));
  EXPECT_FALSE(OffersOf(situation).edit.enabled);
}

TEST(RunOffersTest, ARunningTrayCanBePausedOrAbortedAndNotEdited) {
  InstrumentSituation situation = Running();
  RunOffers offers = OffersOf(situation);
  EXPECT_TRUE(offers.pauseAfter.enabled && offers.pauseNow.enabled && offers.abort.enabled);
  EXPECT_FALSE(offers.start.shown || offers.resume.shown || offers.edit.enabled);
  // After a request to pause after the sample, an immediate pause is still possible.
  situation.pauseRequested = true;
  offers = OffersOf(situation);
  EXPECT_TRUE(!offers.pauseAfter.enabled && offers.pauseNow.enabled);
  situation.paused = true;
  offers = OffersOf(situation);
  EXPECT_TRUE(offers.resume.enabled && !offers.pauseNow.shown);
  // Not while the instrument does not answer.
  situation.silence = kDisconnectedAfter;
  offers = OffersOf(situation);
  EXPECT_TRUE(!offers.resume.enabled && offers.abort.enabled);
}

TEST(RunOffersTest, ResultsStayUntilANewTrayIsAskedForAndOnlyASimulatedCellIsPrepared) {
  InstrumentSituation situation = Ready();
  situation.summaryOpen = true;
  EXPECT_TRUE(OffersOf(situation).newTray.enabled);
  EXPECT_FALSE(OffersOf(situation).start.shown || OffersOf(situation).edit.enabled);
  situation = Ready();
  situation.readings.temperature = 21.0;
  EXPECT_FALSE(OffersOf(situation).prepare.shown);
  situation.simulated = true;
  EXPECT_TRUE(OffersOf(situation).prepare.enabled);
  situation.preparing = true;
  EXPECT_FALSE(OffersOf(situation).prepare.enabled);
}

}  // namespace
}  // namespace torvell
