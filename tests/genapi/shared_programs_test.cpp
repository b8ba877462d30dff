// Formulas that differ only in their numeric literals share one compiled
// program with the literals put back per formula. Each knife must still
// compute with its own literals, whatever stands between them in the
// program (constants of ||, &&, spliced expressions) and in either
// arithmetic; a formula that does not compile keeps its own error.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

struct Knife {
  const char* formula;
  const char* declarations;  // elements besides the pVariable P
  double expected;           // with P = 2
};

// One integer (Int) and one float (Flt) knife per row, every row in one
// description, so that rows of a shape meet the program compiled before them.
const std::vector<Knife> kKnives = {
    {"(P=2)?0x10:0x20", "", 16},
    {"(P=2)?0x30:0x40", "", 48},
    {"(P=3)?0x30:0x40", "", 64},
    {"(P=1)||(P=2)?5:6", "", 5},
    {"(P=4)||(P=3)?5:6", "", 6},
    {"(P=2)&&(7=7)?8:9", "", 8},
    {"(P=2)&&(7=6)?8:9", "", 9},
    {"0x12+P", "", 20},
    {"0018+P", "", 20},  // decimal of the same width: a leading zero is no octal
    {"X+P+1", "<Expression Name=\"X\">P*10</Expression>", 23},
    {"X+P+3", "<Expression Name=\"X\">P*10</Expression>", 25},
    {"X+P+3", "<Expression Name=\"X\">P*100</Expression>", 205},
    {"C*2+P", "<Constant Name=\"C\">5</Constant>", 12},
    {"C*3+P", "<Constant Name=\"C\">5</Constant>", 17},
    {"0xFFFFFFFF-P", "", 4294967293.0},
    {"0x00000000-P", "", -2},
};

std::string Knives() {
  std::string xml = "<Integer Name=\"P\"><Value>2</Value></Integer>";
  for (size_t i = 0; i < kKnives.size(); ++i) {
    for (const char* kind : {"IntSwissKnife", "SwissKnife"}) {
      xml += std::string("<") + kind + " Name=\"" + (kind[0] == 'I' ? "Int" : "Flt") +
             std::to_string(i) + "\"><pVariable Name=\"P\">P</pVariable>" +
             kKnives[i].declarations + "<Formula>" + kKnives[i].formula + "</Formula></" +
             kind + ">";
    }
  }
  return xml;
}

TEST(SharedPrograms, EveryKnifeComputesWithItsOwnLiterals) {
  Loaded m(Knives());
  for (size_t i = 0; i < kKnives.size(); ++i) {
    const std::string index = std::to_string(i);
    EXPECT_EQ(m.As<IInteger>(("Int" + index).c_str())->GetValue(),
              static_cast<int64_t>(kKnives[i].expected))
        << kKnives[i].formula;
    EXPECT_DOUBLE_EQ(m.As<IFloat>(("Flt" + index).c_str())->GetValue(), kKnives[i].expected)
        << kKnives[i].formula;
  }
}

TEST(SharedPrograms, ConvertersOfOneShapeKeepTheirOwnLiterals) {
  std::string xml =
      "<Integer Name=\"Raw\"><Value>6</Value><Min>0</Min><Max>100</Max></Integer>";
  for (int factor : {2, 3}) {
    xml += "<IntConverter Name=\"C" + std::to_string(factor) +
           "\"><FormulaTo>FROM/" + std::to_string(factor) + "</FormulaTo><FormulaFrom>TO*" +
           std::to_string(factor) +
           "</FormulaFrom><pValue>Raw</pValue></IntConverter>";
  }
  Loaded m(xml);
  EXPECT_EQ(m.As<IInteger>("C2")->GetValue(), 12);
  EXPECT_EQ(m.As<IInteger>("C3")->GetValue(), 18);
  m.As<IInteger>("C3")->SetValue(9);
  EXPECT_EQ(m.As<IInteger>("Raw")->GetValue(), 3);
}

TEST(SharedPrograms, AFormulaThatDoesNotCompileKeepsItsOwnError) {
  Loaded m(
      "<IntSwissKnife Name=\"A\"><Formula>NOPE+1</Formula></IntSwissKnife>"
      "<IntSwissKnife Name=\"B\"><Formula>NOPE+2</Formula></IntSwissKnife>"
      "<IntSwissKnife Name=\"C\"><Formula>1#2</Formula></IntSwissKnife>"
      "<IntSwissKnife Name=\"D\"><Formula>1+2</Formula></IntSwissKnife>");
  for (const char* name : {"A", "B"}) {
    const std::string outcome =
        genapi_test::Outcome([&] { m.As<IInteger>(name)->GetValue(); });
    EXPECT_NE(outcome.find(std::string("NOPE+") + (name[0] == 'A' ? "1" : "2")),
              std::string::npos)
        << outcome;
  }
  EXPECT_NE(genapi_test::Outcome([&] { m.As<IInteger>("C")->GetValue(); }), "");
  EXPECT_EQ(m.As<IInteger>("D")->GetValue(), 3);
}

}  // namespace
