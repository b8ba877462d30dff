// export and import: every writable feature's value in a text file of "NAME = VALUE" lines,
// and its re-application in an order the camera accepts.
#include <cctype>
#include <cmath>
#include <fstream>
#include <set>
#include <sstream>

#include "Commands.h"
#include "Failure.h"
#include "Session.h"
#include "Text.h"

namespace vq::host {

namespace {

using nlohmann::json;

// The serial link's rate belongs to the connection, not to the configuration.
bool IsLinkRate(const Feature& feature) {
  if (feature.entries.empty()) return false;
  for (const auto& entry : feature.entries) {
    if (entry.label.rfind("Baud", 0) != 0) return false;
  }
  return true;
}

bool Exportable(const Feature& feature) {
  return feature.writable && !feature.isButton() && !IsLinkRate(feature) &&
         feature.kind <= VALUE_KIND_LIST;
}

// The name written to the file: the display name when it finds this feature again.
std::string FileName(Session& session, const Feature& feature) {
  try {
    if (&session.names().resolve(feature.name) == &feature) return feature.name;
  } catch (const Failure&) {
  }
  return "#" + std::to_string(feature.index);
}

// A feature listed a second time, in another category: exported once.
bool ListedBefore(Session& session, const Feature& feature) {
  for (const auto& other : session.catalogue().features()) {
    if (other.index >= feature.index) return false;
    if (other.sameAs(feature)) return true;
  }
  return false;
}

// Two value texts of the module that mean the same value.
bool SameValue(const Feature& feature, const std::string& a, const std::string& b) {
  if (feature.kind == VALUE_KIND_TEXT) return a == b;
  double x = 0;
  double y = 0;
  if (!ParseNumber(a, x) || !ParseNumber(b, y)) return a == b;
  return std::fabs(x - y) <= 0.0005 * std::max(1.0, std::fabs(x));
}

struct Assignment {
  const Feature* feature = nullptr;
  std::string name;
  std::string value;       // as written in the file
  std::string moduleText;  // as the module takes it
  std::string reason;      // why it was refused
};

std::vector<Assignment> ReadFile(Session& session, const std::string& path,
                                 std::vector<Assignment>& refused) {
  std::ifstream file(path);
  if (!file) throw UsageError("cannot read " + path + "; check the file name");
  std::vector<Assignment> assignments;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    const std::string trimmed = Trim(line);
    // "# text" is a comment; "#12 = ..." names a feature by its flat index.
    const bool comment =
        !trimmed.empty() && trimmed[0] == '#' &&
        (trimmed.size() == 1 || !std::isdigit(static_cast<unsigned char>(trimmed[1])));
    if (trimmed.empty() || comment) continue;
    const auto equals = trimmed.find('=');
    if (equals == std::string::npos) {
      throw UsageError(path + ":" + std::to_string(number) + ": expected NAME = VALUE");
    }
    Assignment item;
    item.name = Trim(trimmed.substr(0, equals));
    item.value = Trim(trimmed.substr(equals + 1));
    try {
      item.feature = &session.names().resolve(item.name);
      item.moduleText = session.names().toModuleText(*item.feature, item.value);
      assignments.push_back(item);
    } catch (const Failure& failure) {
      item.reason = failure.what();
      refused.push_back(item);
    }
  }
  return assignments;
}

}  // namespace

void ExportCommand(Session& session, const std::vector<std::string>& args) {
  std::ostringstream text;
  text << "# vqcam export of " << session.host().backend().describe() << "\n"
       << "# One feature per line, NAME = VALUE; apply with: vqcam import FILE\n";
  std::size_t written = 0;
  for (const auto& feature : session.catalogue().features()) {
    if (!Exportable(feature) || ListedBefore(session, feature)) continue;
    const std::string value = session.readValue(feature);
    if (value.empty() && feature.kind != VALUE_KIND_TEXT) continue;  // nothing readable
    text << FileName(session, feature) << " = " << UserValue(feature, value) << "\n";
    ++written;
  }
  std::ofstream file(args[0], std::ios::trunc);
  if (!(file << text.str()) || !file.flush()) {
    throw UsageError("cannot write " + args[0] + "; check the folder and its permissions");
  }
  session.output().emit({{"command", "export"}, {"file", args[0]}, {"written", written}},
                        "exported " + std::to_string(written) + " values to " + args[0] + "\n");
}

// Writes in file order; a write the camera refuses is tried again after the others (it may
// wait for a selector or a mode set later), and a value a later write changed (the camera's
// change notices tell which) is written again, until nothing more can be done.
void ImportCommand(Session& session, const std::vector<std::string>& args) {
  std::vector<Assignment> refused;
  std::vector<Assignment> pending = ReadFile(session, args[0], refused);
  std::vector<Assignment> done;
  const std::size_t total = pending.size() + refused.size();
  for (int pass = 0; pass < 5 && !pending.empty(); ++pass) {
    std::vector<Assignment> again;
    std::set<std::uint32_t> touched;
    bool progress = false;
    for (auto& item : pending) {
      try {
        session.takeNotices();
        session.writeValue(*item.feature, item.moduleText, item.value);
        for (std::uint32_t index : session.takeNotices()) {
          if (index != item.feature->index) touched.insert(index);
        }
        done.push_back(item);
        progress = true;
      } catch (const Failure& failure) {
        if (failure.exitCode() != kExitRefused) throw;
        item.reason = failure.what();
        again.push_back(item);
      }
    }
    for (auto it = done.begin(); it != done.end();) {
      const bool changed =
          touched.count(it->feature->index) != 0 &&
          !SameValue(*it->feature, session.readValue(*it->feature), it->moduleText);
      if (changed) {
        again.push_back(*it);
        it = done.erase(it);
      } else {
        ++it;
      }
    }
    pending = again;
    if (!progress) break;
  }
  refused.insert(refused.end(), pending.begin(), pending.end());
  json refusedJson = json::array();
  std::vector<Row> rows;
  for (const auto& item : refused) {
    refusedJson.push_back({{"name", item.name}, {"value", item.value}, {"reason", item.reason}});
    rows.push_back({"refused:", item.name + " = " + item.value, item.reason});
  }
  const json result = {
      {"command", "import"}, {"file", args[0]}, {"applied", done.size()}, {"refused", refusedJson}};
  session.output().emit(result, AlignedTable(rows) + "imported " + std::to_string(done.size()) +
                                    " of " + std::to_string(total) + " values from " + args[0] +
                                    "\n");
  if (!refused.empty()) {
    throw Refused("the camera refused " + std::to_string(refused.size()) + " of " +
                  std::to_string(total) + " values; see the lines marked refused");
  }
}

}  // namespace vq::host
