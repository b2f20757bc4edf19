// Settings texts and analysis texts, and what the audit trail keeps of their changes.
#include "host/core/text_archives.h"

#include <gtest/gtest.h>

#include "tests/host/core/fake_instrument.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

constexpr char kKey[] = "RVXCOM1:0";

TEST(InstrumentStore, ATextSurvivesAndMissingOnesRaise) {
  TempFolder folder;
  FakeInstrument instrument;
  instrument.text = std::string("RVX\nid\nfield\v1.500000000000000\v\xff", 30);
  {
    const auto host = OpenHost(folder);
    EXPECT_NE(
        ArchiveMessageOf([&] { GetInstrumentArchive()->LoadInstrument(kKey, &instrument, 15); }),
        "");
    GetInstrumentArchive()->StoreInstrument(kKey, &instrument);
  }
  const auto host = OpenHost(folder);
  GetInstrumentArchive()->LoadInstrument(kKey, &instrument, 15);
  EXPECT_EQ(instrument.loaded, instrument.SaveSettingsText());
}

TEST(InstrumentStore, TheTrailHasTheChangedFieldsAndNotTheTray) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  FakeInstrument instrument;
  instrument.text = "RVX\nid\na\vb\vc\t1\t2\t\v";
  host->instrumentTexts().StoreInstrument(kKey, &instrument);
  ASSERT_EQ(host->audit().Last(0).size(), 1u);

  instrument.Fill("oil", 1);
  host->instrumentTexts().StoreInstrument(kKey, &instrument);
  EXPECT_EQ(host->audit().Last(0).size(), 1u) << "the tray is no setting";
  EXPECT_NE(host->instrumentTexts().Read(kKey)->find("oil"), std::string::npos);

  instrument.text = "RVX\nid\na\vB\vc\t1\t3\t\v";
  host->instrumentTexts().StoreInstrument(kKey, &instrument);
  const auto rows = host->audit().Last(0);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[1].object, "instrument RVXCOM1:0 line 3 field 2");
  EXPECT_EQ(rows[1].oldValue + ">" + rows[1].newValue, "b>B");
  EXPECT_EQ(rows[2].oldValue + ">" + rows[2].newValue, "2>3");

  // Added and removed fields and lines are changes too.
  const std::string three = instrument.text;
  instrument.text += "new\v\nline\v";
  host->instrumentTexts().StoreInstrument(kKey, &instrument);
  instrument.text = three;
  host->instrumentTexts().StoreInstrument(kKey, &instrument);
  std::string changes;
  for (const AuditRow& row : host->audit().Last(4)) {
    changes += row.object.substr(row.object.find("line")) + ": " + row.oldValue + ">" +
               row.newValue + "; ";
  }
  EXPECT_EQ(changes,
            "line 3 field 7: >new; line 4 field 1: >line; "
            "line 3 field 7: new>; line 4 field 1: line>; ");
}

// A store that began earlier but reaches the database later must not overwrite the newer text.
TEST(InstrumentStore, TheStoringThatBeganLastStays) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  class Slow : public FakeInstrument {
   public:
    std::string SaveSettingsText() override {
      const std::string old = FakeInstrument::SaveSettingsText();
      if (auto once = std::exchange(during, nullptr)) once();
      return old;
    }
    std::function<void()> during;
  };
  Slow instrument;
  instrument.text = "old";
  instrument.during = [&] {
    instrument.text = "new";
    host->instrumentTexts().StoreInstrument(kKey, &instrument);
  };
  host->instrumentTexts().StoreInstrument(kKey, &instrument);
  EXPECT_EQ(host->instrumentTexts().Read(kKey)->substr(0, 3), "new");

  // But if the newer store fails, the earlier text is kept.
  instrument.during = [&] {
    instrument.text = "refused";
    ExecuteSql(host->database(), "ALTER TABLE AUDIT RENAME TO GONE");
    EXPECT_NE(ArchiveMessageOf([&] { host->instrumentTexts().StoreInstrument(kKey, &instrument); }),
              "");
    ExecuteSql(host->database(), "ALTER TABLE GONE RENAME TO AUDIT");
  };
  instrument.text = "kept";
  host->instrumentTexts().StoreInstrument(kKey, &instrument);
  EXPECT_EQ(host->instrumentTexts().Read(kKey)->substr(0, 4), "kept");
}

// An instrument that could not read its settings goes on with its defaults, which must not replace
// the stored settings.
TEST(InstrumentStore, SettingsThatCouldNotBeReadAreNotOverwritten) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  InstrumentStore& store = host->instrumentTexts();
  FakeInstrument instrument;
  instrument.text = "stored";
  store.StoreInstrument(kKey, &instrument);
  ExecuteSql(host->database(), "ALTER TABLE INSTRUMENTS RENAME TO GONE");
  EXPECT_NE(ArchiveMessageOf([&] { store.LoadInstrument(kKey, &instrument, 15); }), "");
  ExecuteSql(host->database(), "ALTER TABLE GONE RENAME TO INSTRUMENTS");

  instrument.text = "default";
  const std::string message = ArchiveMessageOf([&] { store.StoreInstrument(kKey, &instrument); });
  EXPECT_NE(message.find("are not overwritten"), std::string::npos) << message;
  EXPECT_EQ(store.Read(kKey)->substr(0, 6), "stored");
  store.StoreInstrument("RVXCOM2:0", &instrument);

  store.LoadInstrument(kKey, &instrument, 15);
  EXPECT_EQ(instrument.loaded.substr(0, 6), "stored");
  store.StoreInstrument(kKey, &instrument);
  EXPECT_EQ(store.Read(kKey)->substr(0, 7), "default") << "they have been read by now";
}

TEST(AnalysisStore, ReadsBackAndTellsWhichRowsChanged) {
  TempFolder folder;
  const std::string first = "N100\v- 5\v1000\vL1\v\rN200\v-10\v2000\v\v\r";
  const std::string second = "N200\v-10\v2000\v\v\rN100\v- 5\v1001\vL1\v\r";
  const auto host = OpenHost(folder);
  rvx::AnalysisArchive& archive = *GetAnalysisArchive();
  std::string text = "x";
  archive.ReadAnalysisText("Standards", "Oils", text);
  EXPECT_EQ(text, "");
  archive.WriteAnalysisText("Standards", "Oils", first);
  archive.WriteAnalysisText("Standards", "Oils", second);
  archive.WriteAnalysisText("Standards", "Oils", second);
  archive.ReadAnalysisText("Standards", "Oils", text);
  EXPECT_EQ(text, second);
  archive.ReadAnalysisText("Standards", "Others", text);
  EXPECT_EQ(text, "");
  const auto rows = host->audit().Last(0);
  ASSERT_EQ(rows.size(), 4u) << "two rows came, one went and one came, none for the same text";
  EXPECT_EQ(rows[2].oldValue, "N100 | - 5 | 1000 | L1");
  EXPECT_EQ(rows[3].newValue, "N100 | - 5 | 1001 | L1");
  host->users().Add("sam", 100, "secret");
  host->users().SetActingUser("nobody");
  const std::string refusal =
      ArchiveMessageOf([&] { archive.WriteAnalysisText("Standards", "Oils", first); });
  EXPECT_NE(refusal.find("level 10 is needed"), std::string::npos) << refusal;
  archive.ReadAnalysisText("Standards", "Oils", text);
  EXPECT_EQ(text, second);
}

TEST(FileFolder, IsMadeWhenItIsAskedForAndEndsInItsSeparator) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  EXPECT_FALSE(std::filesystem::exists(folder / "files"));
  std::string name;
  GetArchiveManager()->GetDefaultName(name);
  EXPECT_EQ(name, folder / "files/");
  EXPECT_TRUE(std::filesystem::is_directory(name));
  // Writing there fails later and is reported then.
  std::filesystem::remove(folder / "files");
  std::ofstream(folder / "files") << "x";
  GetArchiveManager()->GetDefaultName(name);
  EXPECT_EQ(name, folder / "files/");
}

}  // namespace
}  // namespace torvell
