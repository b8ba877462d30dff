// One connection to one camera for the life of a vqcam process: the serial backend, the
// loaded module with the camera opened, the feature catalogue, and the commands run in
// order against it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "Failure.h"
#include "FeatureNames.h"
#include "ModuleHost.h"
#include "Options.h"
#include "Output.h"
#include "Progress.h"
#include "backend/SerialBackend.h"

namespace vq::host {

// The module's spelling of a visibility level given in any letter case; a usage Failure for
// anything else.
std::string VisibilityLevelName(const std::string& name);

class Session {
 public:
  // Connects and opens the camera. Throws Failure (exit code 2) when it cannot.
  explicit Session(const Options& options);
  ~Session();

  // Runs one command (its name and arguments). Throws Failure when it fails.
  void run(const std::vector<std::string>& words);

  // --- used by the commands ---
  VQ_Ext& extension() { return host_->extension(); }
  ModuleHost& host() { return *host_; }
  Catalogue& catalogue() { return *catalogue_; }
  const FeatureNames& names() const { return *names_; }
  Output& output() { return output_; }
  const Options& options() const { return options_; }

  // The feature's value text from the camera; a Failure when the camera stopped answering.
  std::string readValue(const Feature& feature);
  // Writes a module value text; a Failure when the camera refused or stopped answering.
  void writeValue(const Feature& feature, const std::string& moduleText,
                  const std::string& shownValue);
  // Change notices (code 9) received since the last call, without repeats.
  std::vector<std::uint32_t> takeNotices();
  void setWatching(bool watching) { watching_ = watching; }

  // Failure for a refused operation, naming the camera's own message when there is one;
  // a connection Failure instead when the camera stopped answering.
  Failure refusal(const std::string& what) const;
  // Visibility level name and the baud-rate bits the module reports.
  std::string visibilityLevel();
  void setVisibilityLevel(const std::string& level);
  std::uint32_t currentBaudBit();
  std::uint32_t maxBaudBit();
  void setBaudBit(std::uint32_t bit);

 private:
  void connect();
  void printNotices();

  Options options_;
  Output output_;
  Progress progress_;
  std::unique_ptr<SerialBackend> backend_;
  std::unique_ptr<ModuleHost> host_;
  std::unique_ptr<Catalogue> catalogue_;
  DescriptionNames descriptionNames_;
  std::unique_ptr<FeatureNames> names_;
  std::vector<std::uint32_t> notices_;
  bool watching_ = false;
};

}  // namespace vq::host
