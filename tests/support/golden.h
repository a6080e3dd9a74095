// Expected texts that are compared word for word, kept as files beside the tests.

#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "platform/text.h"
#include "support/temp_folder.h"

namespace quorvan::test {

// All of the file `name` in the folder tests/, as "job/golden/failure_texts.txt".
inline std::string GoldenText(const std::string& name) {
  const auto bytes = ReadAll(std::filesystem::path(TESTS_FOLDER) / name);
  return {bytes.begin(), bytes.end()};
}

// The lines of the file, each cut at its tabs, as UTF-16.
inline std::vector<std::vector<std::u16string>> GoldenRows(const std::string& name) {
  std::vector<std::vector<std::u16string>> rows;
  std::istringstream file(GoldenText(name));
  for (std::string line; std::getline(file, line);) {
    std::vector<std::u16string>& cells = rows.emplace_back();
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
      end = line.find('\t', start);
      cells.push_back(platform::ToUtf16(line.substr(start, end - start)));
    }
  }
  return rows;
}

// Calls `expect` with the cells of each line, which are parted by blanks and must all be read.
template <typename Expect>
void ForEachGoldenLine(const std::string& name, const Expect& expect) {
  std::istringstream file(GoldenText(name));
  for (std::string line; std::getline(file, line);) {
    SCOPED_TRACE(line);
    std::istringstream cells(line);
    expect(cells);
    EXPECT_TRUE(cells.eof()) << "ill formed";
  }
}

// The bytes of the remaining cells, which are hexadecimal.
inline std::vector<std::uint8_t> HexBytes(std::istream& cells) {
  std::vector<std::uint8_t> bytes;
  for (unsigned byte = 0; cells >> std::hex >> byte;)
    bytes.push_back(static_cast<std::uint8_t>(byte));
  return bytes;
}

}  // namespace quorvan::test
