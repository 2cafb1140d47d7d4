#include "app/flows/ReceiverChooser.h"

#include "app/widgets/Appearance.h"
#include "app/widgets/AskDialog.h"
#include "app/widgets/Buttons.h"
#include "app/windows/KnownDevices.h"

#include <QGuiApplication>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>

namespace ferrylane {

namespace {

// Of the screen's usable height, at most.
constexpr double maximumShare = 0.8;
// Others choose their names; longer ones are cut in the middle.
constexpr int maximumButtonWidth = 460;

/// The buttons, in their order; `choose` gets the index of the one that is pressed.
QWidget* buttonsOf(
    const QList<SendChoice>& choices, const std::function<void(qsizetype index)>& choose)
{
    auto* const buttons = new QWidget;
    auto* const layout = new QVBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    int width = 0;
    for (qsizetype i = 0; i < choices.size(); ++i) {
        auto* const button = new FerrylaneActionButton(choices[i].text, [choose, i] { choose(i); });
        button->setFont(textFont(12));
        button->setAutoDefault(true);
        button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        layout->addWidget(button);
        width = std::max(width, button->sizeHint().width());
    }
    buttons->setMinimumWidth(std::min(width, scaled(QSize(maximumButtonWidth, 0)).width()));
    return buttons;
}

/// Shows the buttons in full where the dialog then stays within the screen.
void limitHeight(QScrollArea& area, const QWidget& buttons, const AskDialog& dialog)
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    const int whole = buttons.sizeHint().height();
    const int most = screen ? static_cast<int>(screen->availableGeometry().height() * maximumShare)
            - dialog.sizeHint().height()
                            : whole;
    area.setFixedHeight(std::min(whole, std::max(most, buttons.fontMetrics().height() * 4)));
    area.setMinimumWidth(buttons.minimumWidth() + area.verticalScrollBar()->sizeHint().width());
}

} // namespace

QList<SendChoice> sendChoices(const QList<FerrylanePairedTarget>& paired,
    const QStringList& visibleNames, const QString& ownName)
{
    QList<SendChoice> choices;
    const auto targets = offeredTargets(paired, ownName);
    for (const FerrylanePairedTarget& target : targets) {
        choices.append(
            {SendChoice::Kind::sendTo, QStringLiteral("Send to ") + target.name, target});
    }
    for (const QString& name : offeredNames(visibleNames, targets, ownName)) {
        choices.append({SendChoice::Kind::pair, QStringLiteral("Pair ") + name, {}});
    }
    choices.append({SendChoice::Kind::pairByCode, QStringLiteral("Pair device with QR"), {}});
    choices.append({SendChoice::Kind::cancel, QStringLiteral("Cancel"), {}});
    return choices;
}

QString sendQuestionText(qsizetype fileCount)
{
    return QStringLiteral("%1 file%2 selected. Choose a paired device, or pair a visible one.")
        .arg(QString::number(fileCount), fileCount == 1 ? QString() : QStringLiteral("s"));
}

SendChoice askForReceiver(
    QWidget* parent, const QString& question, const QList<SendChoice>& choices)
{
    AskDialog dialog(parent, QStringLiteral("Send to"), question);
    qsizetype chosen = choices.size() - 1;
    QWidget* const buttons = buttonsOf(choices, [&](qsizetype index) {
        chosen = index;
        dialog.accept();
    });
    auto* const area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    limitHeight(*area, *buttons, dialog);
    area->setWidget(buttons);
    dialog.addControl(*area);
    dialog.exec();
    return choices[chosen];
}

} // namespace ferrylane
