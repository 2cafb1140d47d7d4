#include "app/ReceiverChooser.h"

#include "app/Appearance.h"
#include "app/AskDialog.h"
#include "app/FerrylaneActionButton.h"

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
