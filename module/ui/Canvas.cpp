#include "ui/Canvas.h"

#include <cstdlib>

namespace vq::ui {

namespace {

// The system colours, one fixed value per index (a classic light scheme).
constexpr COLORREF kSystemColours[] = {
    Rgb(200, 200, 200),  //  0 scroll bar
    Rgb(58, 110, 165),   //  1 desktop
    Rgb(10, 36, 106),    //  2 active caption
    Rgb(128, 128, 128),  //  3 inactive caption
    Rgb(212, 208, 200),  //  4 menu
    Rgb(255, 255, 255),  //  5 window background
    Rgb(0, 0, 0),        //  6 window frame
    Rgb(0, 0, 0),        //  7 menu text
    Rgb(0, 0, 0),        //  8 window text
    Rgb(255, 255, 255),  //  9 caption text
    Rgb(212, 208, 200),  // 10 active border
    Rgb(212, 208, 200),  // 11 inactive border
    Rgb(128, 128, 128),  // 12 application workspace
    Rgb(10, 36, 106),    // 13 highlight
    Rgb(255, 255, 255),  // 14 highlight text
    Rgb(212, 208, 200),  // 15 button face
    Rgb(128, 128, 128),  // 16 button shadow
    Rgb(109, 109, 109),  // 17 grey text
    Rgb(0, 0, 0),        // 18 button text
    Rgb(212, 208, 200),  // 19 inactive caption text
    Rgb(255, 255, 255),  // 20 button highlight
    Rgb(64, 64, 64),     // 21 3D dark shadow
    Rgb(227, 227, 227),  // 22 3D light
    Rgb(0, 0, 0),        // 23 tool-tip text
    Rgb(255, 255, 225),  // 24 tool-tip background
};

}  // namespace

COLORREF GetSysColor(int index) {
  const int count = static_cast<int>(sizeof(kSystemColours) / sizeof(kSystemColours[0]));
  return index >= 0 && index < count ? kSystemColours[index] : Rgb(0, 0, 0);
}

Canvas::Canvas(int width, int height, COLORREF background)
    : width_(width > 0 ? width : 0),
      height_(height > 0 ? height : 0),
      background_(background),
      pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), background) {}

COLORREF Canvas::Pixel(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return background_;
  return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                 static_cast<std::size_t>(x)];
}

void Canvas::SetPixel(int x, int y, COLORREF colour) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
          static_cast<std::size_t>(x)] = colour;
}

const Pen DeviceContext::kDefaultPen{PS_SOLID, 1, Rgb(0, 0, 0)};

DeviceContext::DeviceContext(Canvas& canvas) : canvas_(canvas) {}

const Pen* DeviceContext::SelectPen(const Pen* pen) {
  const Pen* previous = pen_;
  pen_ = pen != nullptr ? pen : &kDefaultPen;
  return previous;
}

int DeviceContext::SetBkMode(int mode) {
  const int previous = backgroundMode_;
  backgroundMode_ = mode;
  return previous;
}

COLORREF DeviceContext::SetTextColor(COLORREF colour) {
  const COLORREF previous = textColour_;
  textColour_ = colour;
  return previous;
}

void DeviceContext::FillRect(const Rect& rect, const Brush& brush) {
  for (int y = rect.top; y < rect.bottom; ++y) {
    for (int x = rect.left; x < rect.right; ++x) canvas_.SetPixel(x, y, brush.colour);
  }
}

void DeviceContext::MoveTo(int x, int y) {
  x_ = x;
  y_ = y;
}

void DeviceContext::LineTo(int x, int y) {
  // Bresenham's walk from the current position; the last point is left out.
  const int dx = std::abs(x - x_);
  const int dy = -std::abs(y - y_);
  const int stepX = x_ < x ? 1 : -1;
  const int stepY = y_ < y ? 1 : -1;
  int error = dx + dy;
  int px = x_;
  int py = y_;
  while (px != x || py != y) {
    canvas_.SetPixel(px, py, pen_->colour);
    const int twice = 2 * error;
    if (twice >= dy) {
      error += dy;
      px += stepX;
    }
    if (twice <= dx) {
      error += dx;
      py += stepY;
    }
  }
  MoveTo(x, y);
}

int DeviceContext::DrawText(const std::string& text, const Rect& rect, std::uint32_t format) {
  textRuns_.push_back(TextRun{text, rect, textColour_, format, backgroundMode_});
  return rect.Height();
}

}  // namespace vq::ui
