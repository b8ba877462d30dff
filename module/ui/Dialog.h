// The modal dialog of the window seam. A dialog is built from a dialog
// template of the module whose resources are current (the module-state
// switch), runs modally with the presenter chosen at run time, and ends with
// the value given to EndDialog. Derived dialogs bind their member controls in
// DoDataExchange and answer their buttons in OnCommand (their message map).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "extension/ModuleResources.h"
#include "ui/Window.h"

namespace vq::ui {

class Dialog;

// The control binding of a dialog (DDX).
class DataExchange {
 public:
  explicit DataExchange(Dialog& dialog) : dialog_(dialog) {}
  // Binds `control` to the template's control `id`: the object becomes that
  // control (subclassing it, PreSubclassWindow included). An id the template
  // does not have binds nothing.
  void Control(std::uint32_t id, Window& control);

 private:
  Dialog& dialog_;
};

class Dialog : public Window {
 public:
  Dialog(std::uint32_t templateId, void* parentWindow);
  ~Dialog() override;

  // Creates the dialog, sends WM_INITDIALOG, runs the modal loop and destroys
  // the controls. Returns the EndDialog value, or -1 when no template with
  // this identifier is found in the current module's resources.
  std::int32_t DoModal();
  void EndDialog(std::int32_t result);
  bool IsEnded() const { return ended_; }

  Window* GetDlgItem(std::uint32_t id) const;
  // The template while the dialog runs; null otherwise.
  const DialogResource* Template() const { return template_; }
  void* ParentWindow() const { return parentWindow_; }

 protected:
  virtual void DoDataExchange(DataExchange&) {}
  // Binds the controls (DoDataExchange) and creates the template's others.
  virtual bool OnInitDialog();
  // WM_COMMAND: BN_CLICKED of IDOK and IDCANCEL go to OnOK and OnCancel.
  virtual void OnCommand(std::uint32_t id, std::uint32_t code);
  virtual void OnOK();
  virtual void OnCancel();

  bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override;

 private:
  friend class DataExchange;

  void AttachControl(std::uint32_t index, Window& control);
  void CreateUnboundControls();
  void FocusFirstTabStop();
  void DestroyControls();

  std::uint32_t templateId_;
  void* parentWindow_;
  const DialogResource* template_ = nullptr;
  std::vector<Window*> controls_;  // one per template item, in tab order
  std::vector<std::unique_ptr<Window>> ownedControls_;
  bool ended_ = false;
  std::int32_t result_ = IDCANCEL;
};

}  // namespace vq::ui
