#include "platform/key_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

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
  std::string Text() const {
    std::ifstream file(Path(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
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
}

TEST_F(KeyStoreTest, WritingKeepsEverythingElse) {
  EXPECT_EQ(std::nullopt, ReadKeyValue(kKey, "Simulate"));
  EXPECT_TRUE(WriteKeyValue(kKey, "Simulate", 1));
  EXPECT_EQ("[" + std::string(kKey) + "]\n\"Simulate\"=dword:00000001\n", Text());
  Put("# by hand\n[A]\n\"x\"=\"text\"\n\n[" + std::string(kKey) +
      "]\n\"Other\"=dword:5\n\n[B]\n\"Simulate\"=dword:7");
  EXPECT_TRUE(WriteKeyValue(kKey, "Simulate", 0xFFFFFFFF));
  EXPECT_TRUE(WriteKeyValue(kKey, "Other", 6));
  EXPECT_TRUE(WriteKeyValue("C", "New", 8));
  EXPECT_EQ("# by hand\n[A]\n\"x\"=\"text\"\n\n[" + std::string(kKey) +
                "]\n\"Other\"=dword:00000006\n\"Simulate\"=dword:ffffffff\n\n"
                "[B]\n\"Simulate\"=dword:7\n\n[C]\n\"New\"=dword:00000008\n",
            Text());
  EXPECT_EQ(0xFFFFFFFFu, ReadKeyValue(kKey, "Simulate"));
  EXPECT_EQ(7u, ReadKeyValue("b", "Simulate"));
}

TEST_F(KeyStoreTest, AFileThatCannotBeWrittenIsSaid) {
  SetKeyStoreFile((folder_ / "missing folder" / "keys.txt").string());
  EXPECT_FALSE(WriteKeyValue(kKey, "Simulate", 1));
  SetKeyStoreFile(folder_.string());  // there, and no file
  EXPECT_FALSE(WriteKeyValue(kKey, "Simulate", 1));
  EXPECT_EQ(std::nullopt, ReadKeyValue(kKey, "Simulate"));
  SetKeyStoreFile("");
  EXPECT_FALSE(WriteKeyValue(kKey, "Simulate", 1));
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
