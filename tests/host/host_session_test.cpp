// vqcam end to end: the program, the real module and the KORVA camera behind each of the
// three serial backends (the in-process simulator, vqcam-sim on a pseudo-terminal, and
// libclservqsim.so), every command in one session, the JSON output parsed back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "host_test_support.h"

namespace {

using hosttest::JsonLines;
using hosttest::Vqcam;
using nlohmann::json;

class EachBackend : public ::testing::TestWithParam<const char*> {
 protected:
  // Options that connect vqcam to the default camera through this backend.
  std::vector<std::string> Link() {
    const std::string backend = GetParam();
    if (backend == "port") {
      simulator_ = hosttest::StartSimulator();
      return {"--port", simulator_->DevicePath(), "--camera", "A2040M"};
    }
    if (backend == "clser")
      return {"--clser", hosttest::ClSerialLibrary() + ":0", "--camera", "A2040M"};
    return {"--simulate"};
  }
  std::map<std::string, std::string> Env() {
    return {{"VQ_CLSER_PROFILES", hosttest::ExampleProfile("korva-area")}};
  }

  std::unique_ptr<vq::test::SimProcess> simulator_;
};

// The result of each command, by command name (the first one of that name).
std::map<std::string, json> ByCommand(const std::vector<json>& lines) {
  std::map<std::string, json> results;
  for (const auto& line : lines) {
    if (line.contains("command")) results.emplace(line["command"].get<std::string>(), line);
  }
  return results;
}

json ValueOf(const json& result, const std::string& name) {
  for (const auto& item : result["values"]) {
    if (item["name"] == name) return item["value"];
  }
  return "missing";
}

TEST_P(EachBackend, EveryCommandInOneSession) {
  const std::string exported = hosttest::TempPath(std::string(GetParam()) + "-export.txt");
  std::vector<std::string> args = Link();
  const std::vector<std::string> commands = {"--json",
                                             "info",
                                             ",",
                                             "list",
                                             ",",
                                             "get",
                                             "Width",
                                             "Pixel Format",
                                             "Reverse X",
                                             ",",
                                             "set",
                                             "Width=1024",
                                             "PixelFormat=Mono10",
                                             "reverse x=true",
                                             ",",
                                             "get",
                                             "#0",
                                             ",",
                                             "press",
                                             "Acquisition Start",
                                             ",",
                                             "categories",
                                             ",",
                                             "describe",
                                             "Width",
                                             ",",
                                             "baud",
                                             "115200",
                                             ",",
                                             "get",
                                             "Height",
                                             ",",
                                             "baud",
                                             ",",
                                             "baud",
                                             "9600",
                                             ",",
                                             "save-config",
                                             ",",
                                             "refresh",
                                             "Width",
                                             ",",
                                             "visible",
                                             "Width",
                                             ",",
                                             "watch",
                                             ",",
                                             "set",
                                             "Binning Horizontal=2",
                                             ",",
                                             "export",
                                             exported};
  args.insert(args.end(), commands.begin(), commands.end());
  const auto run = Vqcam(args, "", Env());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  const auto lines = JsonLines(run.out);
  const auto results = ByCommand(lines);

  const json& info = results.at("info");
  EXPECT_EQ(info["model"], "A2040M");
  EXPECT_EQ(info["vendor"], "KORVA");
  EXPECT_EQ(info["cameraText"], "A2040M");
  EXPECT_EQ(info["helpFile"], "KORVA_A2040M.chm");
  EXPECT_EQ(info["baudRate"], 9600);
  EXPECT_EQ(info["visibility"], "Guru");
  EXPECT_GT(info["visibleFeatures"].get<int>(), 20);
  EXPECT_GT(info["categories"].get<int>(), 5);

  EXPECT_EQ(results.at("list")["features"].size(), info["visibleFeatures"].get<std::size_t>());
  EXPECT_EQ(ValueOf(results.at("set"), "Width"), 1024);
  EXPECT_EQ(ValueOf(results.at("set"), "Pixel Format"), "Mono10");
  EXPECT_EQ(ValueOf(results.at("set"), "Reverse X"), true);
  EXPECT_EQ(results.at("press")["name"], "Acquisition Start");
  EXPECT_GT(results.at("categories")["categories"].size(), 5u);
  // Node names are known where the description is at hand: the in-process simulator.
  EXPECT_EQ(results.at("describe").value("node", ""),
            GetParam() == std::string("simulator") ? "Width" : "");
  EXPECT_EQ(results.at("describe")["description"], "Width of the image in pixels");
  EXPECT_EQ(results.at("save-config")["saved"], true);
  EXPECT_EQ(results.at("refresh")["refreshed"], true);
  EXPECT_EQ(results.at("visible")["visible"], true);
  EXPECT_EQ(results.at("export")["file"], exported);

  // The baud rate went to 115200 for a read and came back to 9600.
  std::vector<json> bauds;
  for (const auto& line : lines) {
    if (line.value("command", "") == "baud") bauds.push_back(line);
  }
  ASSERT_EQ(bauds.size(), 3u);
  EXPECT_EQ(bauds[0]["baudRate"], 115200);
  EXPECT_EQ(bauds[0]["portBaudRate"], 115200);
  EXPECT_EQ(bauds[1]["baudRate"], 115200);
  EXPECT_EQ(bauds[2]["baudRate"], 9600);
  EXPECT_EQ(bauds[2]["portBaudRate"], 9600);

  // Binning changes what Width may be: a change notice names it.
  bool widthNotice = false;
  for (const auto& line : lines)
    widthNotice |= line.value("notice", "") == "changed" && line["name"] == "Width";
  EXPECT_TRUE(widthNotice) << run.out;
}

INSTANTIATE_TEST_SUITE_P(Backends, EachBackend, ::testing::Values("simulator", "port", "clser"),
                         [](const auto& info) { return std::string(info.param); });

// export on one camera, import on a fresh one: every exported value comes back.
TEST(ExportImport, AFreshCameraTakesEveryWritableValue) {
  const std::string first = hosttest::TempPath("first.txt");
  const std::string second = hosttest::TempPath("second.txt");
  const std::string fresh = hosttest::TempPath("fresh.txt");
  ASSERT_EQ(Vqcam({"--simulate", "export", fresh}).exitCode, 0);
  const auto changed =
      Vqcam({"--simulate", "set", "Binning Horizontal=2", "Width=512", "Pixel Format=Mono10",
             "Reverse X=true", "User ID=bench 4", "Exposure Time=2500", ",", "export", first});
  ASSERT_EQ(changed.exitCode, 0) << changed.err;
  const auto imported = Vqcam({"--simulate", "--json", "import", first, ",", "export", second});
  ASSERT_EQ(imported.exitCode, 0) << imported.err;
  const auto results = ByCommand(JsonLines(imported.out));
  EXPECT_TRUE(results.at("import")["refused"].empty());
  const auto body = [](const std::string& text) {
    return text.substr(text.find("\n", text.find("\n") + 1));
  };
  EXPECT_EQ(body(hosttest::ReadFile(second)), body(hosttest::ReadFile(first)));
  EXPECT_NE(body(hosttest::ReadFile(fresh)), body(hosttest::ReadFile(first)));
}

// Commands one per line from standard input, on one camera.
TEST(Script, CommandsFromStandardInputShareOneCamera) {
  const auto run = Vqcam({"--simulate", "run", "-"},
                         "set Width=512   # a comment\nget 'Width'\n\nget \"Pixel Format\"\n");
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.out.find("Width  = 512"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("Pixel Format  = Mono8"), std::string::npos) << run.out;
}

// The text a person reads: aligned columns, values as entry names.
TEST(TextOutput, InfoAndListAreAligned) {
  const auto run = Vqcam({"--simulate", "info", ",", "list", "pixel"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.out.find("Model          A2040M\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("Serial number  KA2040M-00117\n"), std::string::npos) << run.out;
  EXPECT_THAT(run.out, ::testing::ContainsRegex("\n0 +Pixel Format +Mono8 +rw +Mono8[|]Mono10"));
}

}  // namespace

// The second open of a camera takes its description from the user's cache; the camera
// driver's parameter names must work then as after a download.
TEST(DescriptionCache, DriverParameterNamesWorkOnACachedOpen) {
  const std::string cache = hosttest::TempPath("cache");
  std::filesystem::create_directories(cache);
  for (const char* open : {"downloaded", "cached"}) {
    SCOPED_TRACE(open);
    const auto run = Vqcam({"--simulate", "--json", "refresh", "Width", ",", "visible", "Width"},
                           "", {{"XDG_CACHE_HOME", cache}});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const auto results = ByCommand(JsonLines(run.out));
    EXPECT_EQ(results.count("visible") ? results.at("visible")["visible"] : json(), true);
  }
  std::filesystem::remove_all(cache);
}
