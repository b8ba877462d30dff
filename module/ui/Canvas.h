// The drawing surface of the window seam: a small raster canvas of RGB pixels
// and a device context that draws on it with the few drawing operations the
// module's controls use (pens of width 1, brush fills, MoveTo/LineTo, text).
// Text is not rasterised: every DrawText is recorded with its rectangle,
// colour and format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vq::ui {

// 0x00BBGGRR, as the Windows drawing interface packs colours.
using COLORREF = std::uint32_t;

constexpr COLORREF Rgb(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return (red & 0xFFu) | ((green & 0xFFu) << 8) | ((blue & 0xFFu) << 16);
}

// System colour indices used by the module.
constexpr int COLOR_WINDOW = 5;
constexpr int COLOR_WINDOWTEXT = 8;
constexpr int COLOR_BTNSHADOW = 16;
constexpr int COLOR_GRAYTEXT = 17;

// The colour of a system colour index; black for an unknown index.
COLORREF GetSysColor(int index);

struct Rect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
};

constexpr int PS_SOLID = 0;

// Lines are one pixel wide whatever the width.
struct Pen {
  int style = PS_SOLID;
  int width = 1;
  COLORREF colour = 0;
};

struct Brush {
  COLORREF colour = 0;
};

// A logical font, as CreateFont describes one.
struct Font {
  int height = 0;
  int width = 0;
  int escapement = 0;
  int orientation = 0;
  int weight = 0;
  bool italic = false;
  bool underline = false;
  bool strikeOut = false;
  std::uint32_t charSet = 0;
  std::uint32_t outPrecision = 0;
  std::uint32_t clipPrecision = 0;
  std::uint32_t quality = 0;
  std::uint32_t pitchAndFamily = 0;
  std::string faceName;
};

constexpr int FW_NORMAL = 400;
constexpr std::uint32_t ANSI_CHARSET = 0;
constexpr std::uint32_t OUT_DEFAULT_PRECIS = 0;
constexpr std::uint32_t CLIP_DEFAULT_PRECIS = 0;
constexpr std::uint32_t DEFAULT_QUALITY = 0;
constexpr std::uint32_t DEFAULT_PITCH = 0;
constexpr std::uint32_t FF_DONTCARE = 0;

// Pixels, row by row; coordinates outside the canvas are ignored.
class Canvas {
 public:
  Canvas(int width, int height, COLORREF background);

  int Width() const { return width_; }
  int Height() const { return height_; }
  // The background colour for a point outside the canvas.
  COLORREF Pixel(int x, int y) const;
  void SetPixel(int x, int y, COLORREF colour);

 private:
  int width_;
  int height_;
  COLORREF background_;
  std::vector<COLORREF> pixels_;
};

// Background modes and DrawText formats.
constexpr int TRANSPARENT = 1;
constexpr int OPAQUE = 2;
constexpr std::uint32_t DT_LEFT = 0x00000000;
constexpr std::uint32_t DT_VCENTER = 0x00000004;
constexpr std::uint32_t DT_SINGLELINE = 0x00000020;
constexpr std::uint32_t DT_END_ELLIPSIS = 0x00008000;

struct TextRun {
  std::string text;
  Rect rect;
  COLORREF colour;
  std::uint32_t format;
  int backgroundMode;
};

class DeviceContext {
 public:
  explicit DeviceContext(Canvas& canvas);

  // Selects a pen and returns the one selected before (the context starts
  // with a black pen of its own).
  const Pen* SelectPen(const Pen* pen);
  int SetBkMode(int mode);
  COLORREF SetTextColor(COLORREF colour);

  // Fills the rectangle's left and top edges and its inside, not its right
  // and bottom edges.
  void FillRect(const Rect& rect, const Brush& brush);
  void MoveTo(int x, int y);
  // Draws from the current position to (x, y) with the selected pen, the end
  // point excluded, and makes (x, y) the current position.
  void LineTo(int x, int y);
  // Records the text; returns the height of a line.
  int DrawText(const std::string& text, const Rect& rect, std::uint32_t format);

  const std::vector<TextRun>& TextRuns() const { return textRuns_; }

 private:
  static const Pen kDefaultPen;

  Canvas& canvas_;
  const Pen* pen_ = &kDefaultPen;
  int backgroundMode_ = OPAQUE;
  COLORREF textColour_ = 0;
  int x_ = 0;
  int y_ = 0;
  std::vector<TextRun> textRuns_;
};

}  // namespace vq::ui
