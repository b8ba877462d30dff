#include "Output.h"

#include <algorithm>

namespace vq::host {

std::string AlignedTable(const std::vector<Row>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    if (widths.size() < row.size()) widths.resize(row.size(), 0);
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      if (i + 1 < row.size()) line += std::string(widths[i] - row[i].size() + 2, ' ');
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    text += line + "\n";
  }
  return text;
}

void Output::emit(const nlohmann::json& result, const std::string& text) {
  const std::string shown =
      json_ ? result.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n" : text;
  std::fputs(shown.c_str(), out_);
  std::fflush(out_);
}

}  // namespace vq::host
