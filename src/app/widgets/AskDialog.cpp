#include "app/widgets/AskDialog.h"

#include "app/widgets/Buttons.h"
#include "app/widgets/PanelWindow.h"
#include "core/Text.h"

#include <QLabel>
#include <QVBoxLayout>

namespace ferrylane {

namespace {

constexpr int dialogTextWidth = 340;

} // namespace

AskDialog::AskDialog(QWidget* parent, const QString& message, const QString& information)
    : QDialog(parent), layout_(new QVBoxLayout(this)), buttons_(new QHBoxLayout)
{
    setWindowTitle(QStringLiteral("Ferrylane"));
    layout_->setSizeConstraint(QLayout::SetFixedSize);
    const auto addLine = [this](const QString& text, const TextLook& look) {
        QLabel* const label = addText(*this, wrappableText(text), look);
        label->setWordWrap(true);
        label->setMinimumWidth(scaled(QSize(dialogTextWidth, 0)).width());
        layout_->addWidget(label);
    };
    addLine(textForWindow(message), {13, QFont::Bold, colors::dark});
    addLine(information, {12, QFont::Normal, colors::dark});
    buttons_->addStretch();
    layout_->addLayout(buttons_);
}

void AskDialog::addControl(QWidget& control)
{
    layout_->insertWidget(layout_->count() - 1, &control);
}

FerrylaneActionButton& AskDialog::addButton(const QString& title)
{
    const int number = ++buttonCount_;
    auto* const button = new FerrylaneActionButton(title, [this, number] { done(number); });
    button->setFont(textFont(12));
    button->setAutoDefault(true);
    button->setDefault(number == 1);
    buttons_->addWidget(button);
    return *button;
}

void tell(QWidget* parent, const QString& message, const QString& information)
{
    AskDialog dialog(parent, message, information);
    dialog.addButton(QStringLiteral("OK"));
    dialog.exec();
}

void inform(QWidget* parent, const QString& message, const QString& information)
{
    auto* const dialog = new AskDialog(parent, message, information);
    dialog->addButton(QStringLiteral("OK"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

bool askWhether(
    QWidget* parent, const QString& message, const QString& information, const QString& yes)
{
    AskDialog dialog(parent, message, information);
    dialog.addButton(yes).setTint(colors::red);
    FerrylaneActionButton& no = dialog.addButton(QStringLiteral("Cancel"));
    no.setDefault(true);
    no.setFocus();
    return dialog.exec() == 1;
}

} // namespace ferrylane
