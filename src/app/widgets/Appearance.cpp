#include "app/widgets/Appearance.h"

#include "core/Text.h"

#include <QApplication>
#include <QCursor>
#include <QHelpEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QScreen>
#include <QStyleFactory>
#include <QTextDocument>
#include <QToolTip>

#include <cmath>

// Outside every namespace, as the macro wants it. Without this call the linker would leave out the
// resources of a static library.
static void registerResources()
{
    Q_INIT_RESOURCE(ferrylane);
}

namespace ferrylane {

namespace {

constexpr double ordinaryDotsPerInch = 96;
// A typographic point is 1/72 inch, one of ours is a pixel of 1/96 inch.
constexpr double typographicPointsPerPoint = 72 / ordinaryDotsPerInch;
constexpr double focusRingWidth = 2;

int rounded(double value)
{
    return static_cast<int>(std::lround(value));
}

void setDisabledColors(QPalette& palette)
{
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, colors::faint);
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, colors::switchOff);
}

} // namespace

QPalette lightPalette()
{
    QPalette palette(colors::dark, colors::panel, colors::card, colors::switchOff,
        colors::cardBorder, colors::dark, Qt::white, colors::card, colors::panel);
    palette.setColor(QPalette::Midlight, colors::track);
    palette.setColor(QPalette::Shadow, colors::grey);
    palette.setColor(QPalette::AlternateBase, colors::dropArea);
    palette.setColor(QPalette::Highlight, colors::blue);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, colors::blue);
    palette.setColor(QPalette::LinkVisited, colors::blue);
    palette.setColor(QPalette::ToolTipBase, colors::card);
    palette.setColor(QPalette::ToolTipText, colors::dark);
    palette.setColor(QPalette::PlaceholderText, colors::grey);
    setDisabledColors(palette);
    return palette;
}

void useLightAppearance()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(lightPalette());
    QToolTip::setPalette(lightPalette());
    QApplication::setWindowIcon(applicationIcon());
}

QIcon applicationIcon()
{
    registerResources();
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
        icon.addFile(QStringLiteral(":/ferrylane/icons/ferrylane-%1.png").arg(size));
    }
    return icon;
}

QIcon logo()
{
    registerResources();
    QIcon icon;
    for (const QLatin1String size :
        {QLatin1String(""), QLatin1String("@2x"), QLatin1String("@3x")}) {
        QPixmap picture(QStringLiteral(":/ferrylane/FerrylaneLogo%1.png").arg(size));
        // As pictures of other sizes, also to choose from for a text scale between.
        picture.setDevicePixelRatio(1);
        icon.addPixmap(picture);
    }
    return icon;
}

double scaled(double points)
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return screen ? points * screen->logicalDotsPerInchY() / ordinaryDotsPerInch : points;
}

QSize scaled(const QSize& points)
{
    return {rounded(scaled(points.width())), rounded(scaled(points.height()))};
}

QFont textFont(double points, QFont::Weight weight)
{
    QFont font = QGuiApplication::font();
    font.setPointSizeF(points * typographicPointsPerPoint);
    font.setWeight(weight);
    return font;
}

void place(QWidget& widget, const Place& where, double parentHeight)
{
    const double top = parentHeight - where.y - where.height;
    // Each edge is rounded by itself, so that edges which were in line stay so.
    const QPoint topLeft(rounded(scaled(where.x)), rounded(scaled(top)));
    const QPoint end(rounded(scaled(where.x + where.width)), rounded(scaled(top + where.height)));
    widget.setGeometry(QRect(topLeft, end - QPoint(1, 1)));
}

void setTextColor(QWidget& widget, const QColor& color)
{
    QPalette palette = widget.palette();
    palette.setColor(QPalette::WindowText, color);
    widget.setPalette(palette);
}

QString toolTipText(const QString& text)
{
    if (!Qt::mightBeRichText(text)) return text;
    return QStringLiteral("<span style=\"white-space: pre\">%1</span>").arg(text.toHtmlEscaped());
}

QString wrappableText(const QString& text)
{
    // By characters and not by their halves. U+200B is a place to break that cannot be seen.
    static const QRegularExpression longRun(QStringLiteral("(\\S{24})(?=\\S)"));
    QStringList lines = text.split(u'\n');
    for (QString& line : lines) {
        line = textForWindow(line).replace(longRun, QStringLiteral("\\1\u200B"));
    }
    return lines.join(u'\n');
}

QPoint toolTipPosition(const QEvent& event)
{
    const auto* const help = dynamic_cast<const QHelpEvent*>(&event);
    return help ? help->globalPos() : QCursor::pos();
}

void drawFrame(QPainter& painter, const QRectF& area, const Frame& frame)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double width = scaled(frame.borderWidth);
    const double radius = scaled(frame.cornerRadius) - width / 2;
    painter.setPen(width > 0 ? QPen(frame.border, width) : QPen(Qt::NoPen));
    painter.setBrush(frame.fill);
    painter.drawRoundedRect(
        area.adjusted(width / 2, width / 2, -width / 2, -width / 2), radius, radius);
    painter.restore();
}

void drawFocusRing(QPainter& painter, const QWidget& widget, double cornerRadius)
{
    const bool isForKeyboard = widget.window()->testAttribute(Qt::WA_KeyboardFocusChange);
    if (!widget.hasFocus() || !isForKeyboard) return;
    drawFrame(painter, QRectF(widget.rect()),
        {Qt::transparent, colors::focusRing, focusRingWidth, cornerRadius});
}

} // namespace ferrylane
