// Every formula shipped in the real camera descriptions must compile, and must
// evaluate against all-zero variables without anything but a FormulaError.
// Knives behind an unimplemented guard are never read by the node-map walk of
// the corpus suite, so their formulas are taken from the XML here.
#include <gtest/gtest.h>

#include <cstring>
#include <pugixml.hpp>
#include <string>

#include "Corpus.h"
#include "FakeVariables.h"

namespace {

using GenApi::formula::Arithmetic;
using GenApi::formula::Formula;
using GenApi::formula::FormulaDeclarations;
using GenApi::formula::FormulaError;

// An element's text, however comments split it.
std::string Text(pugi::xml_node element) {
  std::string text;
  for (pugi::xml_node part : element.children())
    if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata) text += part.value();
  return text;
}

TEST(FormulaRealDescriptions, EveryShippedFormulaCompilesAndRuns) {
  genapi_test::FakeVariables zeros(true);
  int knives = 0, failures = 0;
  for (const std::string& path : genapi_test::CorpusFiles()) {
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_file(path.c_str())) << path;
    for (const pugi::xpath_node& found :
         doc.select_nodes("//SwissKnife|//IntSwissKnife|//Converter|//IntConverter")) {
      const pugi::xml_node knife = found.node();
      FormulaDeclarations declared;
      for (pugi::xml_node child : knife.children()) {
        const std::string name = child.attribute("Name").value();
        if (!std::strcmp(child.name(), "pVariable")) declared.variables.push_back(name);
        if (!std::strcmp(child.name(), "Constant"))
          declared.constants.push_back({name, Text(child)});
        if (!std::strcmp(child.name(), "Expression"))
          declared.expressions.push_back({name, Text(child)});
      }
      const Arithmetic arithmetic =
          !std::strncmp(knife.name(), "Int", 3) ? Arithmetic::Integer : Arithmetic::Float;
      for (const auto& [element, implicit] :
           {std::pair<const char*, const char*>{"Formula", nullptr},
            {"FormulaTo", "FROM"},
            {"FormulaFrom", "TO"}}) {
        if (!knife.child(element)) continue;
        ++knives;
        FormulaDeclarations withImplicit = declared;
        if (implicit) withImplicit.variables.push_back(implicit);
        try {
          const Formula formula =
              Formula::Compile(Text(knife.child(element)), withImplicit, arithmetic);
          try {
            formula.EvaluateFloat(zeros);
            formula.EvaluateInteger(zeros);
          } catch (const FormulaError&) {  // division by zero on an all-zero image
          }
        } catch (const FormulaError& e) {
          if (++failures <= 10)
            ADD_FAILURE() << path << " " << knife.attribute("Name").value() << ": " << e.what();
        }
      }
    }
  }
  if (knives == 0) GTEST_SKIP() << "no descriptions in " << VQ_GENICAM_XML_DIR;
  EXPECT_GT(knives, 5000);
  EXPECT_EQ(failures, 0);
}

}  // namespace
