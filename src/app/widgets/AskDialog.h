#pragma once

#include <QDialog>

class QHBoxLayout;
class QVBoxLayout;

namespace ferrylane {

class FerrylaneActionButton;

/// A question: a message of one line, more about it, a control, and buttons in the order of adding.
/// Escape says no. exec() returns the number of the button, counted from 1; 0 for none.
class AskDialog final : public QDialog {
public:
    AskDialog(QWidget* parent, const QString& message, const QString& information);

    /// Between the texts and the buttons.
    void addControl(QWidget& control);
    /// The first one is what Enter presses.
    FerrylaneActionButton& addButton(const QString& title);

private:
    QVBoxLayout* layout_;
    QHBoxLayout* buttons_;
    int buttonCount_ = 0;
};

/// Tells something and returns when it has been read.
void tell(QWidget* parent, const QString& message, const QString& information);
/// Tells something that nothing waits for.
void inform(QWidget* parent, const QString& message, const QString& information);
/// Asks for a decision that is not made by mistake: `yes` and "Cancel".
[[nodiscard]] bool askWhether(
    QWidget* parent, const QString& message, const QString& information, const QString& yes);

} // namespace ferrylane
