#include "ui/TreeControl.h"

#include <algorithm>

namespace vq::ui {

const TreeControl::Item* TreeControl::Find(HTREEITEM item) const {
  if (item == 0 || item > items_.size()) return nullptr;
  return &items_[item - 1];
}

const std::vector<HTREEITEM>* TreeControl::ChildrenOf(HTREEITEM parent) const {
  if (parent == TVI_ROOT) return &topLevel_;
  const Item* found = Find(parent);
  return found == nullptr ? nullptr : &found->children;
}

HTREEITEM TreeControl::InsertItem(const std::string& text, int image, int selectedImage,
                                  HTREEITEM parent, HTREEITEM after) {
  if (after != TVI_LAST || ChildrenOf(parent) == nullptr) return 0;
  items_.push_back(Item{text, image, selectedImage, parent == TVI_ROOT ? 0 : parent, {}, false});
  const HTREEITEM handle = items_.size();
  if (parent == TVI_ROOT) {
    topLevel_.push_back(handle);
  } else {
    items_[parent - 1].children.push_back(handle);
  }
  return handle;
}

std::string TreeControl::GetItemText(HTREEITEM item) const {
  const Item* found = Find(item);
  return found == nullptr ? std::string() : found->text;
}

HTREEITEM TreeControl::GetRootItem() const { return topLevel_.empty() ? 0 : topLevel_.front(); }

HTREEITEM TreeControl::GetChildItem(HTREEITEM item) const {
  const Item* found = Find(item);
  return found == nullptr || found->children.empty() ? 0 : found->children.front();
}

HTREEITEM TreeControl::GetNextSiblingItem(HTREEITEM item) const {
  const Item* found = Find(item);
  if (found == nullptr) return 0;
  const std::vector<HTREEITEM>& siblings =
      found->parent == 0 ? topLevel_ : items_[found->parent - 1].children;
  const auto position = std::find(siblings.begin(), siblings.end(), item);
  return position == siblings.end() || position + 1 == siblings.end() ? 0 : *(position + 1);
}

HTREEITEM TreeControl::GetParentItem(HTREEITEM item) const {
  const Item* found = Find(item);
  return found == nullptr ? 0 : found->parent;
}

bool TreeControl::ItemHasChildren(HTREEITEM item) const { return GetChildItem(item) != 0; }

bool TreeControl::SelectItem(HTREEITEM item) {
  if (item != 0 && Find(item) == nullptr) return false;
  selected_ = item;
  Invalidate(true);
  return true;
}

bool TreeControl::Expand(HTREEITEM item, UINT code) {
  if (Find(item) == nullptr || (code != TVE_EXPAND && code != TVE_COLLAPSE)) return false;
  items_[item - 1].expanded = code == TVE_EXPAND;
  Invalidate(true);
  return true;
}

bool TreeControl::IsExpanded(HTREEITEM item) const {
  const Item* found = Find(item);
  return found != nullptr && found->expanded;
}

void TreeControl::DeleteAllItems() {
  items_.clear();
  topLevel_.clear();
  selected_ = 0;
}

LRESULT TreeControl::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DESTROY) DeleteAllItems();
  return Window::DefWindowProc(message, wParam, lParam);
}

}  // namespace vq::ui
