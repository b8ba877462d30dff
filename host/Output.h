// What commands print: each command's result is one JSON object; with --json it is printed
// as one line, otherwise rendered as aligned text.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "nlohmann/json.hpp"

namespace vq::host {

using Row = std::vector<std::string>;

// Rows with columns padded to their widest cell (the last column is not padded).
std::string AlignedTable(const std::vector<Row>& rows);

class Output {
 public:
  explicit Output(bool json, std::FILE* out = stdout) : json_(json), out_(out) {}
  bool json() const { return json_; }
  // Prints `result` as JSON, or `text` (already rendered) in text mode.
  void emit(const nlohmann::json& result, const std::string& text);

 private:
  bool json_;
  std::FILE* out_;
};

}  // namespace vq::host
