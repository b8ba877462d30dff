// The real camera descriptions of ../shared/genicam-xml, and parameter names
// for tests generated from texts. Header-only: the formula suite uses it too.
#pragma once

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

namespace genapi_test {

// The .xml files of VQ_GENICAM_XML_DIR, sorted; none when the folder is absent.
inline std::vector<std::string> CorpusFiles() {
  std::vector<std::string> files;
  std::error_code ec;
  for (const auto& e : std::filesystem::directory_iterator(VQ_GENICAM_XML_DIR, ec))
    if (e.path().extension() == ".xml") files.push_back(e.path().string());
  std::sort(files.begin(), files.end());
  return files;
}

// A text as a test name: letters and digits are kept, the rest become '_'.
inline std::string TestName(std::string text) {
  for (char& ch : text)
    if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
  return text;
}

}  // namespace genapi_test
