// The KORVA area-scan example's description read with an XML parser of the
// tests' own, independently of the module and of GenApi.
#pragma once

#include <functional>
#include <map>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "support/DescriptionText.h"

namespace vq::test {

class KorvaXml {
 public:
  KorvaXml() {
    text_ = ReadTextFile(std::string(VQ_SOURCE_DIR) + "/examples/korva-area/KORVA_AreaScan.xml");
    document_.load_string(text_.c_str());
    for (pugi::xml_node element : document_.document_element().children()) {
      if (element.attribute("Name")) byName_[element.attribute("Name").value()] = element;
    }
  }
  const std::string& Text() const { return text_; }
  pugi::xml_node operator[](const std::string& name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? pugi::xml_node() : found->second;
  }

  static std::string Child(const pugi::xml_node& e, const char* name) {
    return e.child(name).text().get();
  }
  static std::string DisplayName(const pugi::xml_node& e) {
    const std::string display = Child(e, "DisplayName");
    return display.empty() ? e.attribute("Name").value() : display;
  }

  // Every feature listed under "Root", depth first in list order, with the
  // display names of the categories above it ("Root" first).
  using Visit = std::function<void(const pugi::xml_node&, const std::vector<std::string>&)>;
  void Walk(const Visit& visit) const { Walk((*this)["Root"], {}, visit); }

 private:
  void Walk(const pugi::xml_node& category, std::vector<std::string> path,
            const Visit& visit) const {
    path.push_back(DisplayName(category));
    for (pugi::xml_node listed : category.children("pFeature")) {
      const pugi::xml_node element = (*this)[listed.text().get()];
      if (std::string(element.name()) == "Category") {
        Walk(element, path, visit);
      } else {
        visit(element, path);
      }
    }
  }

  std::string text_;
  pugi::xml_document document_;
  std::map<std::string, pugi::xml_node> byName_;
};

}  // namespace vq::test
