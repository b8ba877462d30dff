// VQDeviceIDSelector: the "Camera XML Selector" dialog (template 2000). It
// shows the Camera Link protocol layer's device-ID templates as a tree of
// manufacturers, camera families and models, lets the user pick one, and holds
// the state of the check box "Show this dialog when no xml file is found for
// the detected camera.". Run it while this module's resources are current
// (ModuleStateGuard), or DoModal finds no template and returns -1.
#pragma once

#include <cstdint>

#include "camera/GenICamCalls.h"
#include "ui/Canvas.h"
#include "ui/Dialog.h"
#include "ui/TreeControl.h"
#include "ui/WBCheckBox.h"

namespace vq {

class VQDeviceIDSelector : public ui::Dialog {
 public:
  enum : std::uint32_t { IDD = 2000 };

  // Nothing selected, check box checked; the caller sets showWhenNoXml next.
  VQDeviceIDSelector(void* parentWindow, const GenICam::gcstring_vector& deviceIdTemplates);

  // 1 when the user pressed Load; 2 when Close was pressed or the dialog was
  // dismissed (DoModal of ui::Dialog).
  using ui::Dialog::DoModal;

  // The chosen template, or an empty text when none was chosen.
  GenICam::gcstring GetSelectedTemplate() const;
  // The chosen template's short device ID and camera family; empty when none.
  GenICam::gcstring GetSelectedShortDeviceID() const;
  GenICam::gcstring GetSelectedCameraFamily() const;
  // Position of the chosen template in the list; -1 for none.
  std::int32_t GetSelectedIndex() const { return selectedIndex; }
  // The tree control (its items go when the dialog ends; its font stays).
  const ui::TreeControl& Tree() const { return tree; }

 protected:
  void DoDataExchange(ui::DataExchange& exchange) override;
  bool OnInitDialog() override;
  void OnCommand(std::uint32_t id, std::uint32_t code) override;

 private:
  void OnLoad();
  void OnShowCheckClicked();

  GenICam::gcstring_vector deviceIdTemplates;
  std::int32_t selectedIndex;
  WBCheckBox checkBox;

 public:
  // 1 while the check box is checked, else 0; read after DoModal.
  std::uint32_t showWhenNoXml;

 private:
  ui::TreeControl tree;
  ui::Font treeFont;
};

}  // namespace vq
