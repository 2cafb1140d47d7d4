#include "app/ReceiverChooser.h"

#include "app/FerrylaneActionButton.h"

#include <QDialog>
#include <QFont>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace ferrylane {

namespace {

constexpr int textWidth = 340;
// Of the screen's usable height, at most.
constexpr double maximumShare = 0.8;

QLabel* addText(QVBoxLayout& layout, const QString& text)
{
    auto* const label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(textWidth);
    layout.addWidget(label);
    return label;
}

/// The buttons, in their order; `chosen` gets the index of the one that is pressed.
QWidget* buttonsOf(
    const QList<SendChoice>& choices, const std::function<void(qsizetype index)>& chosen)
{
    auto* const buttons = new QWidget;
    auto* const layout = new QVBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    for (qsizetype i = 0; i < choices.size(); ++i) {
        auto* const button = new FerrylaneActionButton(choices[i].text, [chosen, i] { chosen(i); });
        button->setAutoDefault(true);
        layout->addWidget(button);
    }
    return buttons;
}

void limitHeight(QDialog& dialog, QScrollArea& area, const QWidget& buttons)
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    const int whole = buttons.sizeHint().height();
    const int most = screen ? static_cast<int>(screen->availableGeometry().height() * maximumShare)
            - dialog.sizeHint().height()
                            : whole;
    area.setMinimumHeight(std::min(whole, std::max(most, buttons.fontMetrics().height() * 4)));
    area.setMinimumWidth(buttons.sizeHint().width() + area.verticalScrollBar()->sizeHint().width());
}

} // namespace

SendChoice askForReceiver(
    QWidget* parent, const QString& question, const QList<SendChoice>& choices)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("Ferrylane"));
    auto* const layout = new QVBoxLayout(&dialog);
    QLabel* const title = addText(*layout, QStringLiteral("Send to"));
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    addText(*layout, question);

    qsizetype chosen = choices.size() - 1;
    QWidget* const buttons = buttonsOf(choices, [&](qsizetype index) {
        chosen = index;
        dialog.accept();
    });
    auto* const area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    limitHeight(dialog, *area, *buttons);
    area->setWidget(buttons);
    layout->addWidget(area);
    dialog.exec();
    return choices[chosen];
}

} // namespace ferrylane
