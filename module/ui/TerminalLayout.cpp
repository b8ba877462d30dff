#include "ui/TerminalLayout.h"

#include <algorithm>
#include <cctype>

#include "ui/Button.h"
#include "ui/Dialog.h"

namespace vq::ui {

namespace {

constexpr const char* kIndent = "  ";

bool IsCheckBoxStyle(std::uint32_t style) {
  const std::uint32_t type = style & BS_TYPEMASK;
  return type == BS_CHECKBOX || type == BS_AUTOCHECKBOX;
}

bool IsPushButtonStyle(std::uint32_t style) {
  const std::uint32_t type = style & BS_TYPEMASK;
  return type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON;
}

bool IsTree(const DialogItemResource& item) {
  return std::string(item.windowClass) == "SysTreeView32";
}

bool IsButton(const DialogItemResource& item) { return std::string(item.windowClass) == "button"; }

void AddTreeRows(const TreeControl& tree, HTREEITEM first, std::uint32_t depth,
                 std::uint32_t* leaves, std::vector<TreeRow>* rows) {
  for (HTREEITEM item = first; item != 0; item = tree.GetNextSiblingItem(item)) {
    const HTREEITEM child = tree.GetChildItem(item);
    rows->push_back(TreeRow{item, depth, child == 0 && depth > 0 ? ++*leaves : 0});
    AddTreeRows(tree, child, depth + 1, leaves, rows);
  }
}

std::string TreeLine(const TreeControl& tree, const TreeRow& row) {
  std::string line = tree.GetSelectedItem() == row.item ? "> " : "  ";
  for (std::uint32_t i = 0; i <= row.depth; ++i) line += kIndent;
  if (row.leafNumber != 0) line += "(" + std::to_string(row.leafNumber) + ") ";
  return line + PrintableText(tree.GetItemText(row.item));
}

// One control's part of its screen row.
std::string ControlText(const Dialog& dialog, const DialogItemResource& item) {
  Window* control = dialog.GetDlgItem(item.id);
  const std::string text = PrintableText(control != nullptr ? control->GetWindowText() : item.text);
  if (IsButton(item) && IsCheckBoxStyle(item.style)) {
    const bool checked = control != nullptr && (control->SendMessage(BM_GETCHECK) & 1) != 0;
    return std::string(checked ? "[x] " : "[ ] ") + text;
  }
  if (IsButton(item) && IsPushButtonStyle(item.style)) return "[ " + text + " ]";
  return text;
}

// The template's controls, top to bottom and left to right.
std::vector<const DialogItemResource*> ItemsInPlace(const DialogResource& dialogTemplate) {
  std::vector<const DialogItemResource*> items;
  for (std::uint32_t i = 0; i < dialogTemplate.itemCount; ++i) {
    items.push_back(&dialogTemplate.items[i]);
  }
  std::stable_sort(items.begin(), items.end(), [](const auto* a, const auto* b) {
    return a->y != b->y ? a->y < b->y : a->x < b->x;
  });
  return items;
}

std::string KeyHelp(const Dialog& dialog) {
  const DialogResource& dialogTemplate = *dialog.Template();
  std::string help = "Keys:";
  bool hasCheckBox = false;
  for (std::uint32_t i = 0; i < dialogTemplate.itemCount; ++i) {
    const DialogItemResource& item = dialogTemplate.items[i];
    if (IsTree(item)) help += " number or Up/Down select,";
    if (IsButton(item) && IsCheckBoxStyle(item.style)) hasCheckBox = true;
  }
  if (hasCheckBox) help += " Space check box,";
  for (std::uint32_t i = 0; i < dialogTemplate.itemCount; ++i) {
    const DialogItemResource& item = dialogTemplate.items[i];
    if (!IsButton(item) || !IsPushButtonStyle(item.style)) continue;
    std::string keys(1, ButtonHotKey(item.text));
    if ((item.style & BS_TYPEMASK) == BS_DEFPUSHBUTTON) keys = "Enter/" + keys;
    if (item.id == static_cast<std::uint32_t>(IDCANCEL)) keys += "/q/Esc";
    help += " " + keys + " " + PrintableText(item.text) + ",";
  }
  help.pop_back();
  return help;
}

}  // namespace

std::vector<TreeRow> ListTreeRows(const TreeControl& tree) {
  std::vector<TreeRow> rows;
  std::uint32_t leaves = 0;
  AddTreeRows(tree, tree.GetRootItem(), 0, &leaves, &rows);
  return rows;
}

char ButtonHotKey(const std::string& text) {
  for (char ch : text) {
    if (std::isalpha(static_cast<unsigned char>(ch)) != 0) {
      return static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    }
  }
  return '\0';
}

std::string PrintableText(const std::string& text) {
  std::string printable = text;
  for (char& ch : printable) {
    const auto byte = static_cast<unsigned char>(ch);
    if (byte < 0x20 || byte == 0x7F) ch = '?';
  }
  return printable;
}

std::vector<std::string> LayoutDialog(const Dialog& dialog, std::size_t treeFirstRow,
                                      std::size_t treeRowsShown) {
  std::vector<std::string> lines{PrintableText(dialog.GetWindowText())};
  const std::vector<const DialogItemResource*> items = ItemsInPlace(*dialog.Template());
  for (std::size_t i = 0; i < items.size(); ++i) {
    lines.emplace_back();
    const auto* tree = dynamic_cast<const TreeControl*>(dialog.GetDlgItem(items[i]->id));
    if (IsTree(*items[i]) && tree != nullptr) {
      const std::vector<TreeRow> rows = ListTreeRows(*tree);
      const std::size_t end =
          treeRowsShown == 0 ? rows.size() : std::min(rows.size(), treeFirstRow + treeRowsShown);
      for (std::size_t row = std::min(treeFirstRow, end); row < end; ++row) {
        lines.push_back(TreeLine(*tree, rows[row]));
      }
      continue;
    }
    std::string line = kIndent + ControlText(dialog, *items[i]);
    while (i + 1 < items.size() && items[i + 1]->y == items[i]->y && !IsTree(*items[i + 1])) {
      line += kIndent + ControlText(dialog, *items[++i]);
    }
    lines.push_back(line);
  }
  lines.emplace_back();
  lines.push_back(KeyHelp(dialog));
  return lines;
}

std::size_t CountNonTreeLines(const Dialog& dialog) {
  const std::size_t all = LayoutDialog(dialog, 0, 0).size();
  std::size_t treeRows = 0;
  const DialogResource& dialogTemplate = *dialog.Template();
  for (std::uint32_t i = 0; i < dialogTemplate.itemCount; ++i) {
    const auto* tree =
        dynamic_cast<const TreeControl*>(dialog.GetDlgItem(dialogTemplate.items[i].id));
    if (tree != nullptr) treeRows += ListTreeRows(*tree).size();
  }
  return all - treeRows;
}

}  // namespace vq::ui
