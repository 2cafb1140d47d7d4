#include "app/windows/AccessPanel.h"

#include "app/widgets/QRCodeButton.h"

#include <QLabel>

namespace ferrylane {

namespace {

constexpr QColor pageColor(249, 249, 249);

} // namespace

AccessPanel::AccessPanel(const QImage& code, const QString& address)
    : PanelWindow(QStringLiteral("Ferrylane \u2014 QR & Address"), {360, 410})
{
    QPalette colours = palette();
    colours.setColor(QPalette::Window, pageColor);
    setPalette(colours);
    const auto addLine = [this](const QString& text, const TextLook& look, const Place& where) {
        QLabel* const label = addText(*this, text, look);
        label->setAlignment(Qt::AlignCenter);
        placeHere(*label, where);
        return label;
    };
    addLine(QStringLiteral("Connect to this Mac"), {20, QFont::DemiBold, colors::dark},
        {20, 358, 320, 28});
    addLine(QStringLiteral("Scan once to connect securely."), {12, QFont::Normal, colors::grey},
        {20, 332, 320, 18});

    auto* const picture = new QRCodeButton(this);
    picture->setCode(code);
    picture->setAccessibleName(QStringLiteral("Pairing QR code"));
    // Only to be looked at.
    picture->setFocusPolicy(Qt::NoFocus);
    picture->setAttribute(Qt::WA_TransparentForMouseEvents);
    placeHere(*picture, {80, 112, 200, 200});

    QLabel* const base = addLine(address, {14, QFont::DemiBold, colors::blue}, {20, 66, 320, 24});
    base->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    addLine(QStringLiteral("Local Wi-Fi only \u00B7 encrypted \u00B7 no cloud"),
        {11, QFont::Normal, colors::grey}, {20, 36, 320, 18});
}

} // namespace ferrylane
