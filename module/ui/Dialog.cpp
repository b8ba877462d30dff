#include "ui/Dialog.h"

#include <string>

#include "extension/ModuleState.h"
#include "ui/Button.h"
#include "ui/Presenter.h"
#include "ui/TreeControl.h"

namespace vq::ui {

namespace {

// Dialog units to pixels with the base units of the template font (8-point
// "MS Shell Dlg": 6 by 13 pixels).
Rect MapDialogRect(int x, int y, int width, int height) {
  constexpr int kBaseX = 6;
  constexpr int kBaseY = 13;
  return Rect{x * kBaseX / 4, y * kBaseY / 8, (x + width) * kBaseX / 4, (y + height) * kBaseY / 8};
}

std::unique_ptr<Window> CreateSystemControl(const std::string& windowClass) {
  if (windowClass == "button") return std::make_unique<Button>();
  if (windowClass == "SysTreeView32") return std::make_unique<TreeControl>();
  return std::make_unique<Window>();
}

}  // namespace

void DataExchange::Control(std::uint32_t id, Window& control) {
  const DialogResource* dialogTemplate = dialog_.Template();
  if (dialogTemplate == nullptr) return;
  for (std::uint32_t i = 0; i < dialogTemplate->itemCount; ++i) {
    if (dialogTemplate->items[i].id == id) dialog_.AttachControl(i, control);
  }
}

Dialog::Dialog(std::uint32_t templateId, void* parentWindow)
    : templateId_(templateId), parentWindow_(parentWindow) {}

Dialog::~Dialog() = default;

std::int32_t Dialog::DoModal() {
  const ModuleResources* resources = CurrentModuleResources();
  template_ = resources == nullptr ? nullptr : resources->FindDialog(templateId_);
  if (template_ == nullptr) return -1;
  Create("#32770", template_->caption, template_->style,
         MapDialogRect(template_->x, template_->y, template_->width, template_->height), nullptr,
         templateId_);
  controls_.assign(template_->itemCount, nullptr);
  ended_ = false;
  result_ = IDCANCEL;

  // The controls go on every way out, exceptions included.
  struct Teardown {
    Dialog& dialog;
    ~Teardown() { dialog.DestroyControls(); }
  } teardown{*this};

  if (SendMessage(WM_INITDIALOG, 0, 0) != 0) FocusFirstTabStop();
  if (!ended_) ChoosePresenter(ReadDialogSetting())->RunModalLoop(*this);
  return result_;
}

void Dialog::EndDialog(std::int32_t result) {
  ended_ = true;
  result_ = result;
}

Window* Dialog::GetDlgItem(std::uint32_t id) const {
  for (Window* control : controls_) {
    if (control != nullptr && control->GetDlgCtrlID() == id) return control;
  }
  return nullptr;
}

bool Dialog::OnInitDialog() {
  DataExchange exchange(*this);
  DoDataExchange(exchange);
  CreateUnboundControls();
  return true;
}

void Dialog::OnCommand(std::uint32_t id, std::uint32_t code) {
  if (code != BN_CLICKED) return;
  if (id == static_cast<std::uint32_t>(IDOK)) OnOK();
  if (id == static_cast<std::uint32_t>(IDCANCEL)) OnCancel();
}

void Dialog::OnOK() { EndDialog(IDOK); }

void Dialog::OnCancel() { EndDialog(IDCANCEL); }

bool Dialog::OnMessage(UINT message, WPARAM wParam, LPARAM, LRESULT* result) {
  switch (message) {
    case WM_INITDIALOG:
      *result = OnInitDialog() ? 1 : 0;
      return true;
    case WM_COMMAND:
      OnCommand(LowWord(wParam), HighWord(wParam));
      *result = 0;
      return true;
    case WM_CLOSE:
      // Closing the window is pressing Cancel.
      SendMessage(WM_COMMAND, MakeWParam(static_cast<std::uint32_t>(IDCANCEL), BN_CLICKED), 0);
      *result = 0;
      return true;
    default:
      return false;
  }
}

void Dialog::AttachControl(std::uint32_t index, Window& control) {
  const DialogItemResource& item = template_->items[index];
  control.Create(item.windowClass, item.text, item.style,
                 MapDialogRect(item.x, item.y, item.width, item.height), this, item.id);
  controls_[index] = &control;
  control.PreSubclassWindow();
}

void Dialog::CreateUnboundControls() {
  for (std::uint32_t i = 0; i < template_->itemCount; ++i) {
    if (controls_[i] != nullptr) continue;
    ownedControls_.push_back(CreateSystemControl(template_->items[i].windowClass));
    AttachControl(i, *ownedControls_.back());
  }
}

void Dialog::FocusFirstTabStop() {
  for (Window* control : controls_) {
    if (control != nullptr && (control->GetStyle() & WS_TABSTOP) != 0) {
      control->SetFocus(true);
      return;
    }
  }
}

void Dialog::DestroyControls() {
  for (Window* control : controls_) {
    if (control != nullptr) control->SendMessage(WM_DESTROY, 0, 0);
  }
  controls_.clear();
  ownedControls_.clear();
  template_ = nullptr;
}

}  // namespace vq::ui
