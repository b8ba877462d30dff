// vqcam: configure a Camera Link camera from the command line through the GenICam camera
// extension module, over a serial port, a Camera Link serial library or the built-in
// simulated camera.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "Commands.h"
#include "Failure.h"
#include "Script.h"
#include "Session.h"
#include "vq/platform/shared_library.h"

namespace {

using namespace vq::host;

// What CLI11 stores for a bare --simulate.
constexpr char kDefaultProfile[] = "true";

const char kFooter[] = R"(
Several commands run on one camera when separated by a lone ",":
  vqcam --simulate info , set Width=1024 , get Width
or one per line from a file or standard input (lines may quote words, # comments):
  vqcam --port /dev/ttyUSB0 --camera A2040M run -

Features are named by flat index ("12" or "#12"), by display name (exactly, then in any
letter case), by the description's node name when the description is at hand (the
simulated cameras), or by letters and digits alone ("exposure-time" finds "Exposure Time").
Values are written as numbers, entry names (or their integer values) and true/false.
refresh and visible take the camera driver's parameter names (node names such as Width).

Exit status: 0 success, 1 the camera refused, 2 usage or connection error.
)";

void Configure(CLI::App& app, Options& options) {
  app.prefix_command();
  auto* simulate = app.add_flag("--simulate", options.simulateProfile,
                                "use the built-in simulated camera (default); PROFILE is a "
                                "profile folder or an example name (korva-area, korva-line)");
  simulate->option_text("[=PROFILE]");
  auto* port = app.add_option("--port", options.portPath, "serial device of the camera");
  auto* clser =
      app.add_option("--clser", options.clserArgument, "Camera Link serial library and port index")
          ->type_name("LIB[:INDEX]");
  simulate->excludes(port, clser);
  port->excludes(clser);
  app.add_option("--camera", options.cameraText,
                 "camera text the host reports (the model, e.g. A2040M); chooses the "
                 "description without the selector");
  app.add_flag("--select", options.alwaysShowSelector,
               "always show the module's Camera XML Selector");
  app.add_option("--baud", options.baud, "switch the baud rate after opening")
      ->type_name("max|RATE");
  app.add_option("--visibility", options.visibility,
                 "features shown: beginner, expert, guru (default) or invisible");
  app.add_flag("--json", options.json, "print each command's result as one line of JSON");
  app.add_option("--module", options.modulePath,
                 "camera module (default: ../lib/libVQGenericCamera.so next to vqcam)");
  app.add_flag("-v,--verbose", options.verbose, "tell more about the connection");
  app.footer("Commands:\n" + CommandHelp() + kFooter);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app{"vqcam: read and write the GenICam features of a Camera Link camera", "vqcam"};
  Configure(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& help) {
    return app.exit(help);
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "vqcam: %s; run 'vqcam --help' for the options\n", error.what());
    return kExitUsage;
  }
  if (!options.portPath.empty()) {
    options.link = Options::Link::Port;
  } else if (!options.clserArgument.empty()) {
    options.link = Options::Link::ClSerial;
  }
  if (options.simulateProfile == kDefaultProfile) options.simulateProfile.clear();
  options.programPath = vq::platform::GetExecutablePath();

  const auto commands = SplitCommands(app.remaining());
  if (commands.empty()) {
    std::fprintf(stderr, "vqcam: no command given; run 'vqcam --help' for the commands\n");
    return kExitUsage;
  }
  const Output output(options.json);
  try {
    for (const auto& command : commands) CheckCommand(command);
    Session session(options);
    return RunCommands(session, commands);
  } catch (const Failure& failure) {
    ReportFailure(output, commands.front().front(), failure);
    return failure.exitCode();
  } catch (const std::exception& error) {
    ReportFailure(output, commands.front().front(),
                  Failure(kExitUsage, std::string("unexpected failure: ") + error.what()));
    return kExitUsage;
  } catch (...) {
    ReportFailure(output, commands.front().front(),
                  Failure(kExitUsage, "unexpected failure in the camera module"));
    return kExitUsage;
  }
}
