#include "ui/VQDeviceIDSelector.h"

#include <cstring>

#include "extension/ModuleResources.h"

namespace vq {

namespace {

constexpr const char* kTopItemText = "Please select a camera XML file";
// Tree labels keep at most this many characters and are compared over one
// more.
constexpr std::size_t kLabelLength = 19;
constexpr std::size_t kLabelCompareLength = 20;

GenICam::gcstring CutLabel(const GenICam::gcstring& text) {
  return text.size() > kLabelLength ? text.substr(0, kLabelLength) : text;
}

bool LabelsEqual(const std::string& a, const GenICam::gcstring& b) {
  return std::strncmp(a.c_str(), b.c_str(), kLabelCompareLength) == 0;
}

struct TemplateLabels {
  GenICam::gcstring manufacturer;
  GenICam::gcstring family;
  GenICam::gcstring leaf;  // the model, or the family for a template without one
};

CLProtocol::CDeviceID ParseTemplate(const GenICam::gcstring& deviceIdTemplate) {
  CLProtocol::CDeviceID deviceId;
  deviceId.FromString(deviceIdTemplate);
  return deviceId;
}

TemplateLabels LabelsOf(const GenICam::gcstring& deviceIdTemplate) {
  const CLProtocol::CDeviceID deviceId = ParseTemplate(deviceIdTemplate);
  TemplateLabels labels{CutLabel(deviceId.GetCameraManufacturer()),
                        CutLabel(deviceId.GetCameraFamily()), CutLabel(deviceId.GetCameraModel())};
  if (labels.leaf.empty()) labels.leaf = labels.family;
  return labels;
}

// The first child of `parent` whose label equals `label`; 0 for none.
ui::HTREEITEM FindChild(const ui::TreeControl& tree, ui::HTREEITEM parent,
                        const GenICam::gcstring& label) {
  for (ui::HTREEITEM child = tree.GetChildItem(parent); child != 0;
       child = tree.GetNextSiblingItem(child)) {
    if (LabelsEqual(tree.GetItemText(child), label)) return child;
  }
  return 0;
}

}  // namespace

VQDeviceIDSelector::VQDeviceIDSelector(void* parentWindow,
                                       const GenICam::gcstring_vector& templates)
    : ui::Dialog(IDD, parentWindow),
      deviceIdTemplates(templates),
      selectedIndex(-1),
      showWhenNoXml(1) {}

GenICam::gcstring VQDeviceIDSelector::GetSelectedTemplate() const {
  if (selectedIndex < 0) return GenICam::gcstring();
  return deviceIdTemplates[static_cast<std::size_t>(selectedIndex)];
}

GenICam::gcstring VQDeviceIDSelector::GetSelectedShortDeviceID() const {
  if (selectedIndex < 0) return GenICam::gcstring();
  return ParseTemplate(GetSelectedTemplate()).GetShortDeviceID();
}

GenICam::gcstring VQDeviceIDSelector::GetSelectedCameraFamily() const {
  if (selectedIndex < 0) return GenICam::gcstring();
  return ParseTemplate(GetSelectedTemplate()).GetCameraFamily();
}

void VQDeviceIDSelector::DoDataExchange(ui::DataExchange& exchange) {
  exchange.Control(IDC_SHOW_WHEN_NO_XML, checkBox);
  exchange.Control(IDC_DEVICE_ID_TREE, tree);
}

bool VQDeviceIDSelector::OnInitDialog() {
  ui::Dialog::OnInitDialog();
  const ui::HTREEITEM top = tree.InsertItem(kTopItemText, 0, 0, ui::TVI_ROOT, ui::TVI_LAST);

  // The terminal draws with its own font; other presenters fall back to their
  // fixed-pitch font when "fixedsys" is missing.
  treeFont = ui::Font{15,
                      9,
                      0,
                      0,
                      ui::FW_NORMAL,
                      false,
                      false,
                      false,
                      ui::ANSI_CHARSET,
                      ui::OUT_DEFAULT_PRECIS,
                      ui::CLIP_DEFAULT_PRECIS,
                      ui::DEFAULT_QUALITY,
                      ui::DEFAULT_PITCH | ui::FF_DONTCARE,
                      "fixedsys"};
  tree.SendMessage(ui::WM_SETFONT, reinterpret_cast<ui::WPARAM>(&treeFont), 1);

  for (std::size_t i = 0; i < deviceIdTemplates.size(); ++i) {
    const TemplateLabels labels = LabelsOf(deviceIdTemplates[i]);
    const ui::HTREEITEM manufacturer = FindChild(tree, top, labels.manufacturer);
    if (manufacturer == 0) {
      const ui::HTREEITEM newManufacturer = tree.InsertItem(labels.manufacturer.c_str(), 0, 0, top);
      const ui::HTREEITEM newFamily = tree.InsertItem(labels.family.c_str(), 0, 0, newManufacturer);
      tree.InsertItem(labels.leaf.c_str(), 0, 0, newFamily);
      continue;
    }
    const ui::HTREEITEM family = FindChild(tree, manufacturer, labels.family);
    if (family == 0) {
      const ui::HTREEITEM newFamily = tree.InsertItem(labels.family.c_str(), 0, 0, manufacturer);
      tree.InsertItem(labels.leaf.c_str(), 0, 0, newFamily);
      continue;
    }
    if (FindChild(tree, family, labels.leaf) == 0) {
      tree.InsertItem(labels.leaf.c_str(), 0, 0, family);
    }
  }
  tree.Expand(tree.GetRootItem(), ui::TVE_EXPAND);
  checkBox.SendMessage(ui::BM_SETCHECK, showWhenNoXml == 1 ? ui::BST_CHECKED : ui::BST_UNCHECKED,
                       0);
  return true;
}

void VQDeviceIDSelector::OnCommand(std::uint32_t id, std::uint32_t code) {
  if (code == ui::BN_CLICKED && id == static_cast<std::uint32_t>(IDOK)) {
    OnLoad();
  } else if (code == ui::BN_CLICKED && id == IDC_SHOW_WHEN_NO_XML) {
    OnShowCheckClicked();
  } else {
    ui::Dialog::OnCommand(id, code);
  }
}

void VQDeviceIDSelector::OnLoad() {
  const std::string selectedLabel = tree.GetItemText(tree.GetSelectedItem());
  for (std::size_t i = 0; i < deviceIdTemplates.size(); ++i) {
    if (LabelsEqual(selectedLabel, LabelsOf(deviceIdTemplates[i]).leaf)) {
      selectedIndex = static_cast<std::int32_t>(i);
      break;
    }
  }
  OnOK();
}

void VQDeviceIDSelector::OnShowCheckClicked() {
  showWhenNoXml = checkBox.SendMessage(ui::BM_GETCHECK, 0, 0) == 1 ? 1 : 0;
}

}  // namespace vq
