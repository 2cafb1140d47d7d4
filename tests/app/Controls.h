#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QStringList>

namespace app_test {

/// The name that assistive technology reads.
inline QString accessibleName(QWidget& widget)
{
    QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(&widget);
    return interface ? interface->text(QAccessible::Name) : QString();
}

/// The button of that name, which must be there.
inline QAbstractButton& buttonNamed(const QWidget& window, const QString& name)
{
    for (QAbstractButton* const button : window.findChildren<QAbstractButton*>()) {
        if (accessibleName(*button) == name) return *button;
    }
    qFatal("There is no button \"%s\"", qPrintable(name));
}

/// The names of what the Tab key goes through, beginning at the window.
inline QStringList tabOrder(const QWidget& window)
{
    QStringList names;
    for (QWidget* widget = window.nextInFocusChain(); widget != &window;
         widget = widget->nextInFocusChain()) {
        const bool takesTab = (widget->focusPolicy() & Qt::TabFocus) != 0;
        if (takesTab && widget->isVisible() && widget->isEnabled()) {
            names << accessibleName(*widget);
        }
    }
    return names;
}

/// The texts that do not fit the place that they have.
inline QStringList clippedTexts(const QWidget& window)
{
    QStringList clipped;
    for (const QLabel* const label : window.findChildren<QLabel*>()) {
        const QSize text = label->fontMetrics().size(Qt::TextSingleLine, label->text());
        const bool fits = text.width() <= label->width() && text.height() <= label->height() + 1;
        if (!label->text().isEmpty() && !fits) clipped << label->text();
    }
    return clipped;
}

} // namespace app_test
