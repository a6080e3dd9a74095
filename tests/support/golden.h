// Expected texts that are compared word for word, kept as files beside the tests.

#pragma once

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/text.h"

namespace quorvan::test {

// All of the file `name` in the folder tests/, as "job/golden/failure_texts.txt".
inline std::string GoldenText(const std::string& name) {
  std::ifstream file(std::string(TESTS_FOLDER) + "/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The lines of the file, each cut at its tabs, as UTF-16.
inline std::vector<std::vector<std::u16string>> GoldenRows(const std::string& name) {
  std::vector<std::vector<std::u16string>> rows;
  std::ifstream file(std::string(TESTS_FOLDER) + "/" + name);
  for (std::string line; std::getline(file, line);) {
    std::vector<std::u16string> cells;
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
      end = line.find('\t', start);
      cells.push_back(platform::ToUtf16(line.substr(start, end - start)));
    }
    rows.push_back(cells);
  }
  return rows;
}

}  // namespace quorvan::test
