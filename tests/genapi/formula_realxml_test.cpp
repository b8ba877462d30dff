// Every formula shipped in the real camera descriptions must compile, and must
// evaluate against all-zero variables without anything but a FormulaError.
// The knives are cut out of the XML text directly so this suite needs no XML
// library; the full loader is tested with the node map.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "../../genicam/genapi/formula/Formula.h"
#include "ZeroVariables.h"

namespace {

using GenApi::formula::Arithmetic;
using GenApi::formula::Formula;
using GenApi::formula::FormulaDeclarations;
using GenApi::formula::FormulaError;

std::string Decode(std::string text) {
  const auto cdata = text.find("<![CDATA[");
  if (cdata != std::string::npos) {
    const auto end = text.find("]]>", cdata);
    return text.substr(cdata + 9, end == std::string::npos ? std::string::npos : end - cdata - 9);
  }
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    static const std::pair<const char*, char> kEntities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}};
    bool replaced = false;
    for (const auto& [entity, character] : kEntities) {
      if (text.compare(i, std::char_traits<char>::length(entity), entity) == 0) {
        out += character;
        i += std::char_traits<char>::length(entity) - 1;
        replaced = true;
        break;
      }
    }
    if (!replaced) out += text[i];
  }
  return out;
}

// Contents of each <tag ...>...</tag> in `block`, with its Name attribute.
std::vector<std::pair<std::string, std::string>> Elements(const std::string& block,
                                                          const std::string& tag) {
  std::vector<std::pair<std::string, std::string>> found;
  const std::string open = "<" + tag;
  const std::string close = "</" + tag + ">";
  for (auto at = block.find(open); at != std::string::npos; at = block.find(open, at + 1)) {
    const char after = block[at + open.size()];
    if (after != ' ' && after != '>') continue;
    const auto tagEnd = block.find('>', at);
    const auto contentEnd = block.find(close, tagEnd);
    if (tagEnd == std::string::npos || contentEnd == std::string::npos) continue;
    const std::string header = block.substr(at, tagEnd - at);
    std::string name;
    const auto nameAt = header.find("Name=\"");
    if (nameAt != std::string::npos) {
      name = header.substr(nameAt + 6, header.find('"', nameAt + 6) - nameAt - 6);
    }
    found.emplace_back(name, Decode(block.substr(tagEnd + 1, contentEnd - tagEnd - 1)));
  }
  return found;
}

struct Knife {
  std::string file;
  std::string name;
  std::string formula;
  FormulaDeclarations declarations;
  Arithmetic arithmetic;
};

void CollectKnives(const std::string& file, const std::string& text, const std::string& kind,
                   std::vector<Knife>& knives) {
  const std::string open = "<" + kind + " ";
  const std::string close = "</" + kind + ">";
  const Arithmetic arithmetic = kind.rfind("Int", 0) == 0 ? Arithmetic::Integer : Arithmetic::Float;
  for (auto at = text.find(open); at != std::string::npos; at = text.find(open, at + 1)) {
    const auto end = text.find(close, at);
    if (end == std::string::npos) break;
    const std::string block = text.substr(at, end - at);
    const auto nameAt = block.find("Name=\"");
    const std::string name = block.substr(nameAt + 6, block.find('"', nameAt + 6) - nameAt - 6);
    FormulaDeclarations declarations;
    for (const auto& variable : Elements(block, "pVariable")) {
      declarations.variables.push_back(variable.first);
    }
    declarations.constants = Elements(block, "Constant");
    declarations.expressions = Elements(block, "Expression");
    const std::pair<const char*, const char*> kFormulas[] = {
        {"Formula", nullptr}, {"FormulaTo", "FROM"}, {"FormulaFrom", "TO"}};
    for (const auto& [element, implicitVariable] : kFormulas) {
      for (const auto& formula : Elements(block, element)) {
        Knife knife{file, name, formula.second, declarations, arithmetic};
        if (implicitVariable != nullptr) knife.declarations.variables.push_back(implicitVariable);
        knives.push_back(std::move(knife));
      }
    }
  }
}

std::string WithoutComments(const std::string& text) {
  std::string out;
  std::size_t at = 0;
  for (auto open = text.find("<!--"); open != std::string::npos; open = text.find("<!--", at)) {
    out.append(text, at, open - at);
    const auto close = text.find("-->", open + 4);
    if (close == std::string::npos) return out;
    at = close + 3;
  }
  out.append(text, at, std::string::npos);
  return out;
}

std::vector<Knife> LoadKnives(const std::string& folder) {
  std::vector<Knife> knives;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".xml") continue;
    std::ifstream in(entry.path());
    std::stringstream text;
    text << in.rdbuf();
    const std::string content = WithoutComments(text.str());
    for (const char* kind : {"SwissKnife", "IntSwissKnife", "Converter", "IntConverter"}) {
      CollectKnives(entry.path().filename().string(), content, kind, knives);
    }
  }
  return knives;
}

TEST(FormulaRealDescriptions, EveryShippedFormulaCompilesAndRuns) {
#ifndef VQ_GENICAM_XML_DIR
  GTEST_SKIP() << "VQ_GENICAM_XML_DIR not defined";
#else
  const std::vector<Knife> knives = LoadKnives(VQ_GENICAM_XML_DIR);
  if (knives.empty()) GTEST_SKIP() << "no descriptions found in " << VQ_GENICAM_XML_DIR;
  EXPECT_GT(knives.size(), 5000U);
  genapi_test::ZeroVariables zeros;
  int failures = 0;
  for (const Knife& knife : knives) {
    try {
      const Formula formula = Formula::Compile(knife.formula, knife.declarations, knife.arithmetic);
      try {
        formula.EvaluateFloat(zeros);
        formula.EvaluateInteger(zeros);
      } catch (const FormulaError&) {
        // Division by zero on an all-zero register image is expected.
      }
    } catch (const FormulaError& error) {
      if (++failures <= 10) {
        ADD_FAILURE() << knife.file << " " << knife.name << ": " << error.what();
      }
    }
  }
  EXPECT_EQ(failures, 0);
#endif
}

}  // namespace
