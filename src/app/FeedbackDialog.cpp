#include "app/FeedbackDialog.h"

#include "app/Appearance.h"
#include "app/AskDialog.h"
#include "app/FerrylaneActionButton.h"

#include <QCheckBox>
#include <QPlainTextEdit>

namespace ferrylane {

std::optional<Feedback> askForFeedback(QWidget* parent)
{
    AskDialog dialog(parent, QStringLiteral("Ferrylane feedback"),
        QStringLiteral("Write a feature request or report. Device details are optional."));
    auto* const text = new QPlainTextEdit;
    text->setFixedSize(scaled(QSize(390, 110)));
    text->setFont(textFont(13));
    text->setTabChangesFocus(true);
    text->setAccessibleName(QStringLiteral("Feedback"));
    dialog.addControl(*text);
    auto* const details = new QCheckBox(QStringLiteral("Include Mac version and transfer summary"));
    dialog.addControl(*details);
    dialog.addButton(QStringLiteral("Open email"));
    dialog.addButton(QStringLiteral("Cancel"));
    text->setFocus();
    if (dialog.exec() != 1) return std::nullopt;
    return Feedback{text->toPlainText(), details->isChecked()};
}

} // namespace ferrylane
