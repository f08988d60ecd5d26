// The files that scenarios and what is expected of them stand in.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace callmonitor::scenarios {

// The names, in order, of the files of one extension, each without it.
inline std::vector<std::string> namesOf(const std::string& extension) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(SCENARIO_DIRECTORY)) {
    if (entry.path().extension() == extension) names.push_back(entry.path().stem().string());
  }
  std::ranges::sort(names);
  return names;
}

inline std::filesystem::path fileOf(const std::string& name, const std::string& extension) {
  return std::filesystem::path(SCENARIO_DIRECTORY) / (name + extension);
}

// All that a file holds; nothing where it cannot be read.
inline std::string contentOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// Lines as they stand in a file.
inline std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

}  // namespace callmonitor::scenarios
