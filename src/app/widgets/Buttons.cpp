#include "app/widgets/Buttons.h"

#include "app/widgets/Appearance.h"
#include "core/Text.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace ferrylane {

namespace {

// In points, as everywhere.
constexpr QSize switchSize(54, 30);
// Room for the focus ring around the track.
constexpr double switchMargin = 3;
constexpr double knobGap = 2;
// Between a label and its focus ring.
constexpr double labelMargin = 4;
constexpr double labelRingRadius = 4;
constexpr double buttonSideMargin = 14;
constexpr double buttonLineMargin = 4;
constexpr double leastButtonHeight = 26;
constexpr QColor hoverFill(238, 242, 248);
constexpr QColor pressedFill(224, 231, 241);

QColor trackColor(const SwitchButton& button)
{
    const QColor color = button.isChecked() ? colors::blue : colors::switchOff;
    if (!button.isEnabled()) return color.lighter(140);
    return button.isDown() ? color.darker(115) : color;
}

QString withoutMarks(const QString& title)
{
    return QString(title).replace(u'&', QStringLiteral("&&"));
}

} // namespace

PaintedButton::PaintedButton(QWidget* parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
}

void PaintedButton::keyPressEvent(QKeyEvent* event)
{
    if (!pressedByEnter(*this, *event)) QAbstractButton::keyPressEvent(event);
}

bool pressedByEnter(QAbstractButton& button, const QKeyEvent& event)
{
    const bool isEnter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (!isEnter) return false;
    // A key held down must not press again and again.
    if (!event.isAutoRepeat()) button.click();
    return true;
}

SwitchButton::SwitchButton(QWidget* parent) : PaintedButton(parent)
{
    setCheckable(true);
}

QSize SwitchButton::sizeHint() const
{
    return scaled(switchSize);
}

void SwitchButton::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double inset = scaled(switchMargin);
    const QRectF track = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    painter.setBrush(trackColor(*this));
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);

    const double gap = scaled(knobGap);
    QRectF knob = track.adjusted(gap, gap, -gap, -gap);
    knob.setWidth(knob.height());
    if (isChecked()) knob.moveRight(track.right() - gap);
    painter.setBrush(Qt::white);
    painter.drawEllipse(knob);
    drawFocusRing(painter, *this, switchSize.height() / 2.0);
}

FerrylaneHoverLabel::FerrylaneHoverLabel(std::function<void()> onClick, QWidget* parent)
    : PaintedButton(parent)
    , normalTextColor(palette().color(QPalette::WindowText))
    , hoverTextColor(palette().color(QPalette::Link))
{
    if (onClick) connect(this, &QAbstractButton::clicked, this, std::move(onClick));
}

void FerrylaneHoverLabel::setLabel(const QString& text)
{
    label_ = textForWindow(text);
    setAccessibleName(label_);
    updateGeometry();
    update();
}

QColor FerrylaneHoverLabel::textColor() const
{
    return isHovered_ ? hoverTextColor : normalTextColor;
}

QString FerrylaneHoverLabel::shownText() const
{
    const int room = width() - 2 * static_cast<int>(scaled(labelMargin));
    return fontMetrics().elidedText(label_, Qt::ElideMiddle, room);
}

QSize FerrylaneHoverLabel::sizeHint() const
{
    const int around = 2 * static_cast<int>(scaled(labelMargin));
    return {fontMetrics().horizontalAdvance(label_) + around, fontMetrics().height() + around / 2};
}

bool FerrylaneHoverLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || shownText() == label_) {
        return PaintedButton::event(event);
    }
    QToolTip::showText(toolTipPosition(*event), toolTipText(label_), this);
    return true;
}

void FerrylaneHoverLabel::enterEvent(QEnterEvent* event)
{
    isHovered_ = isActiveWindow();
    PaintedButton::enterEvent(event);
}

void FerrylaneHoverLabel::leaveEvent(QEvent* event)
{
    isHovered_ = false;
    PaintedButton::leaveEvent(event);
}

void FerrylaneHoverLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(textColor());
    const QRect area = rect().adjusted(static_cast<int>(scaled(labelMargin)), 0, 0, 0);
    painter.drawText(area, static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine), shownText());
    drawFocusRing(painter, *this, labelRingRadius);
}

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
    const double width = metrics.horizontalAdvance(title_) + 2 * scaled(buttonSideMargin);
    const double height = metrics.height() + 2 * scaled(buttonLineMargin);
    return QSizeF(width, std::max(height, scaled(leastButtonHeight))).toSize();
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
    const int room = width() - static_cast<int>(2 * scaled(buttonLineMargin));
    const QString shown = fontMetrics().elidedText(title_, Qt::ElideMiddle, room);
    painter.drawText(rect(), static_cast<int>(Qt::AlignCenter | Qt::TextSingleLine), shown);
    drawFocusRing(painter, *this, cornerRadius_);
}

} // namespace ferrylane
