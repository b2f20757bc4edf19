// Runs a fuzz target over the files of a folder: the corpus as a plain test.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/require.h"

int main(int count, char** words) {
  if (count != 2) {
    std::fprintf(stderr, "Usage: %s FOLDER\n", words[0]);
    return 2;
  }
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(words[1])) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const std::filesystem::path& path : files) {
    std::fprintf(stderr, "%s\n", path.filename().c_str());
    std::ifstream file(path, std::ios::binary);
    const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  // An empty folder would be a test that can't fail.
  return files.empty() ? 1 : 0;
}
