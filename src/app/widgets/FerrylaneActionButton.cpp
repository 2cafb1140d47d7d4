#include "app/widgets/FerrylaneActionButton.h"

#include "app/widgets/Appearance.h"
#include "app/widgets/PaintedButton.h"
#include "core/Text.h"

#include <QPainter>

#include <algorithm>

namespace ferrylane {

namespace {

constexpr double sideMargin = 14;
constexpr double lineMargin = 4;
constexpr double leastHeight = 26;
constexpr QColor hoverFill(238, 242, 248);
constexpr QColor pressedFill(224, 231, 241);

QString withoutMarks(const QString& title)
{
    return QString(title).replace(u'&', QStringLiteral("&&"));
}

} // namespace

FerrylaneActionButton::FerrylaneActionButton(
    const QString& title, std::function<void()> press, QWidget* parent)
    : QPushButton(parent), onPress(std::move(press))
{
    setTitle(title);
    setAttribute(Qt::WA_Hover);
    connect(this, &QPushButton::clicked, this, [this] {
        if (onPress) onPress();
    });
}

void FerrylaneActionButton::setTitle(const QString& title)
{
    title_ = textForWindow(title);
    setText(withoutMarks(title_));
}

void FerrylaneActionButton::setLook(Look look)
{
    look_ = look;
    update();
}

void FerrylaneActionButton::setTint(const QColor& tint)
{
    tint_ = tint;
    update();
}

void FerrylaneActionButton::setCornerRadius(double points)
{
    cornerRadius_ = points;
    update();
}

QSize FerrylaneActionButton::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const double width = metrics.horizontalAdvance(title_) + 2 * scaled(sideMargin);
    const double height = metrics.height() + 2 * scaled(lineMargin);
    return QSizeF(width, std::max(height, scaled(leastHeight))).toSize();
}

void FerrylaneActionButton::keyPressEvent(QKeyEvent* event)
{
    if (!pressedByEnter(*this, *event)) QPushButton::keyPressEvent(event);
}

QColor FerrylaneActionButton::background() const
{
    const bool isHovered = isEnabled() && underMouse();
    if (look_ == Look::filled) {
        if (!isEnabled()) return colors::switchOff;
        return isDown() ? colors::blue.darker(125) : colors::blue.darker(isHovered ? 112 : 100);
    }
    if (isDown()) return pressedFill;
    if (isHovered) return hoverFill;
    return look_ == Look::rounded ? colors::card : QColor(Qt::transparent);
}

QColor FerrylaneActionButton::textColor() const
{
    if (look_ == Look::filled) return Qt::white;
    if (!isEnabled()) return colors::faint;
    return tint_.isValid() ? tint_ : colors::dark;
}

void FerrylaneActionButton::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const QColor border = isDefault() ? colors::blue : colors::buttonBorder;
    const double borderWidth = look_ == Look::rounded ? 1 : 0;
    drawFrame(painter, QRectF(rect()), {background(), border, borderWidth, cornerRadius_});
    painter.setPen(textColor());
    const int room = width() - static_cast<int>(2 * scaled(lineMargin));
    const QString shown = fontMetrics().elidedText(title_, Qt::ElideMiddle, room);
    painter.drawText(rect(), static_cast<int>(Qt::AlignCenter | Qt::TextSingleLine), shown);
    drawFocusRing(painter, *this, cornerRadius_);
}

} // namespace ferrylane
