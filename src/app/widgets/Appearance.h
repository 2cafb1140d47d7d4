#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPalette>
#include <QRect>

class QEvent;
class QPainter;
class QWidget;

namespace ferrylane {

// The look of all windows: light on every desktop. Sizes are in points: a point is a (device
// independent) pixel at a text scale of 100 % and grows with the text scale, so that a window keeps
// its proportions and nothing is cut off.

namespace colors {
inline constexpr QColor dark{11, 22, 33};
inline constexpr QColor grey{93, 104, 120};
inline constexpr QColor faint{150, 158, 170};
inline constexpr QColor blue{29, 107, 255};
inline constexpr QColor red{215, 38, 49};
inline constexpr QColor stateText{20, 41, 74};
inline constexpr QColor panel{246, 247, 249};
inline constexpr QColor card{255, 255, 255};
inline constexpr QColor cardBorder{205, 213, 224};
inline constexpr QColor buttonBorder{160, 171, 187};
inline constexpr QColor dropArea{239, 245, 255};
inline constexpr QColor dropAreaBorder{190, 205, 228};
inline constexpr QColor hudBorder{226, 230, 237};
inline constexpr QColor hudTitle{14, 20, 32};
inline constexpr QColor hudStatus{89, 98, 115};
inline constexpr QColor track{221, 227, 236};
inline constexpr QColor switchOff{148, 158, 172};
/// Told apart from white and from the blue of what it surrounds.
inline constexpr QColor focusRing{10, 60, 160};
} // namespace colors

/// Call once, before the first window: style, colours and icon of the whole program.
void useLightAppearance();
[[nodiscard]] QPalette lightPalette();
[[nodiscard]] QIcon applicationIcon();
/// "FerrylaneLogo", 40 points on each side; empty when the resource is missing.
[[nodiscard]] QIcon logo();

[[nodiscard]] double scaled(double points);
[[nodiscard]] QSize scaled(const QSize& points);
[[nodiscard]] QFont textFont(double points, QFont::Weight weight = QFont::Normal);

/// A rectangle as designed, in points from the bottom left corner of what it stands in.
struct Place {
    double x, y, width, height;
};
/// Gives the widget its place in a parent that is `parentHeight` points high.
void place(QWidget& widget, const Place& where, double parentHeight);
/// The texts of labels in their colour.
void setTextColor(QWidget& widget, const QColor& color);
/// Plain text as a tool tip shows it: a file name never becomes markup.
[[nodiscard]] QString toolTipText(const QString& text);
/// The same for a label that wraps its lines: each as textForWindow() has it, and with places to
/// break in a long name without blanks.
[[nodiscard]] QString wrappableText(const QString& text);
/// Where the tool tip belongs that an event of type QEvent::ToolTip asks for.
[[nodiscard]] QPoint toolTipPosition(const QEvent& event);

/// A filled rectangle with round corners and a border that lies wholly within it.
struct Frame {
    QColor fill, border;
    double borderWidth = 0;
    double cornerRadius = 0;
};
void drawFrame(QPainter& painter, const QRectF& area, const Frame& frame);
/// Around the control that has the focus, once people have used the keyboard.
void drawFocusRing(QPainter& painter, const QWidget& widget, double cornerRadius);

} // namespace ferrylane
