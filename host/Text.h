// Small text helpers of the host.
#pragma once

#include <string>
#include <vector>

namespace vq::host {

std::string Lower(const std::string& text);
std::string Trim(const std::string& text);
// Letters and digits only, lower case: "Exposure Time" and "ExposureTime" both give
// "exposuretime".
std::string Normalise(const std::string& text);
bool EqualsIgnoreCase(const std::string& a, const std::string& b);
// Case-insensitive; '*' and '?' are wildcards; a pattern without wildcards matches when it
// occurs anywhere in the text.
bool PatternMatches(const std::string& pattern, const std::string& text);
// Shell-like words of one script line: blanks separate, quotes group, '#' starts a comment.
// False (with `error`) for an unterminated quote.
bool SplitWords(const std::string& line, std::vector<std::string>& words, std::string& error);
// A number as the user wrote it (decimal, 0x hexadecimal, with fraction or exponent).
bool ParseNumber(const std::string& text, double& value);
// Shortest text that reads back as the same double.
std::string FormatNumber(double value);

}  // namespace vq::host
