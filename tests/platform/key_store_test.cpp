#include "platform/key_store.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace platform {
namespace {

constexpr char kKey[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Some\\Program";

class KeyStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = std::filesystem::path(testing::TempDir()) / ("key_store_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder_);
    SetKeyStoreFile(Path());
  }
  void TearDown() override {
    SetKeyStoreFile("");
    std::filesystem::remove_all(folder_);
  }
  std::string Path() const { return (folder_ / "keys.txt").string(); }
  void Put(const std::string& text) { std::ofstream(Path(), std::ios::binary) << text; }
  std::filesystem::path folder_;
};

TEST_F(KeyStoreTest, ReadsWhatAPersonHasWritten) {
  Put("stray line\r\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Some]\r\n\"Simulate\"=dword:00000009\r\n"
      "[hkey_local_machine\\software\\some\\PROGRAM]\r\n"
      " \"Simulate\" = dword:0000001F \r\n\"Text\"=\"1\"\r\n\"Long\"=dword:123456789\r\n"
      "\"None\"=dword:\r\n\"Bad\"=dword:12x\r\nSimulate=dword:2");
  EXPECT_EQ(0x1Fu, ReadKeyValue(kKey, "Simulate"));
  for (const char* name : {"Text", "Long", "None", "Bad", "Missing", ""}) {
    EXPECT_EQ(std::nullopt, ReadKeyValue(kKey, name)) << name;
  }
  EXPECT_EQ(std::nullopt, ReadKeyValue("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other", "Simulate"));
  Put("[" + std::string(kKey) + "]\n\"Simulate\"=dword:0\n\"Simulate\"=dword:3\n");
  EXPECT_EQ(3u, ReadKeyValue(kKey, "Simulate"))
      << "the last one counts, and the file is read afresh";
  SetKeyStoreFile(folder_.string());  // exists, but is not a file
  EXPECT_EQ(std::nullopt, ReadKeyValue(kKey, "Simulate"));
}

TEST_F(KeyStoreTest, OverridesComeBeforeTheFile) {
  Put("[" + std::string(kKey) + "]\n\"Here\"=dword:1\n\"Gone\"=dword:1\n");
  OverrideKeyValue(kKey, "Here", 2);
  OverrideKeyValue(kKey, "Gone", std::nullopt);
  EXPECT_EQ(2u, ReadKeyValue(kKey, "Here"));
  EXPECT_EQ(std::nullopt, ReadKeyValue(kKey, "Gone"));
  OverrideKeyValue(kKey, "Here", 3);
  SetKeyStoreFile("");
  EXPECT_EQ(3u, ReadKeyValue(kKey, "here"));
}

}  // namespace
}  // namespace platform
