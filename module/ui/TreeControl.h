// The tree control of the window seam: labelled items in a tree, one selected
// item, expanded or collapsed parents.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ui/Window.h"

namespace vq::ui {

// An item handle; 0 is no item.
using HTREEITEM = std::uintptr_t;
constexpr HTREEITEM TVI_ROOT = static_cast<HTREEITEM>(-0x10000);
constexpr HTREEITEM TVI_LAST = static_cast<HTREEITEM>(-0x0FFFE);
constexpr UINT TVE_COLLAPSE = 0x0001;
constexpr UINT TVE_EXPAND = 0x0002;

class TreeControl : public Window {
 public:
  // Inserts an item as the last child of `parent` (TVI_ROOT for the top
  // level); `after` must be TVI_LAST. Returns 0 for an unknown parent.
  HTREEITEM InsertItem(const std::string& text, int image, int selectedImage,
                       HTREEITEM parent = TVI_ROOT, HTREEITEM after = TVI_LAST);

  // The label; empty for no item or an unknown one.
  std::string GetItemText(HTREEITEM item) const;
  HTREEITEM GetRootItem() const;
  HTREEITEM GetChildItem(HTREEITEM item) const;
  HTREEITEM GetNextSiblingItem(HTREEITEM item) const;
  HTREEITEM GetParentItem(HTREEITEM item) const;
  bool ItemHasChildren(HTREEITEM item) const;

  HTREEITEM GetSelectedItem() const { return selected_; }
  // Selects an item (0 clears the selection); false for an unknown item.
  bool SelectItem(HTREEITEM item);

  bool Expand(HTREEITEM item, UINT code);
  bool IsExpanded(HTREEITEM item) const;

  void DeleteAllItems();

 protected:
  // WM_DESTROY removes every item.
  LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  struct Item {
    std::string text;
    int image;
    int selectedImage;
    HTREEITEM parent;
    std::vector<HTREEITEM> children;
    bool expanded;
  };

  const Item* Find(HTREEITEM item) const;
  const std::vector<HTREEITEM>* ChildrenOf(HTREEITEM parent) const;

  std::vector<Item> items_;  // item handle h is items_[h - 1]
  std::vector<HTREEITEM> topLevel_;
  HTREEITEM selected_ = 0;
};

}  // namespace vq::ui
