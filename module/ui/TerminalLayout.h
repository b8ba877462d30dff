// What the terminal presenter shows of a dialog: its caption, then its
// controls in their places (top to bottom, controls on the same row side by
// side), then a line of key help. Trees show every item, indented by depth,
// their leaves (items without children below the top level) numbered 1, 2, ...
// in display order; the selected item is
// marked with '>'. Check boxes show "[x]" or "[ ]" with their text; push
// buttons show as "[ Text ]".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ui/TreeControl.h"

namespace vq::ui {

class Dialog;

struct TreeRow {
  HTREEITEM item;
  std::uint32_t depth;       // 0 for a top-level item
  std::uint32_t leafNumber;  // 1 and up for a leaf, 0 otherwise
};

// Every item of the tree, depth first in display order.
std::vector<TreeRow> ListTreeRows(const TreeControl& tree);

// The key of a push button: its text's first letter in lower case.
char ButtonHotKey(const std::string& text);

// The dialog's screen as lines (no line ends). `treeRowsShown` limits the tree
// to that many rows from `treeFirstRow` (0: no limit).
std::vector<std::string> LayoutDialog(const Dialog& dialog, std::size_t treeFirstRow,
                                      std::size_t treeRowsShown);

// Lines of the screen that are not tree rows.
std::size_t CountNonTreeLines(const Dialog& dialog);

// Text with every control character replaced by '?', so that labels cannot
// drive the terminal.
std::string PrintableText(const std::string& text);

}  // namespace vq::ui
