// Builds one-file ZIP archives in memory (stored or deflated) for load tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace genapi_test {

std::vector<uint8_t> MakeZip(const std::string& fileName, const std::string& content, bool deflate);

}  // namespace genapi_test
