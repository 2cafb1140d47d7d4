#pragma once

#include "app/widgets/PanelWindow.h"

#include <QStringList>

class QBoxLayout;
class QPlainTextEdit;

namespace ferrylane {

/// The window with the program's settings and its transfers. It shows the state it is made with;
/// only the transfers come later. 540 x 610 points.
///
/// Main thread.
class InfoPanel final : public PanelWindow {
    Q_OBJECT

public:
    struct State {
        QString deviceName;
        QString version;
        QString receiveFolder;
        qint64 autoOffSeconds = 0;
        bool isVisible = true; ///< to phones nearby
        bool isServiceRunning = true;
        bool keepsAllTransfers = false;
    };
    explicit InfoPanel(const State& state);

    /// The list grows in pieces, so that a long one never holds the other windows up.
    void setTransfers(const QString& summary, QStringList lines);
    /// How many lines of them are in the list by now.
    [[nodiscard]] qsizetype shownTransfers() const { return shownLines_; }

Q_SIGNALS:
    // What people ask for.
    void folderChoiceRequested();
    void autoOffChosen(qint64 seconds);
    void visibilitySwitched(bool isVisible);
    void devicesRequested();
    void transfersKept(bool keepsAll);
    void pageRequested(const QString& address);
    void feedbackRequested();
    void deviceNameRequested();
    void receivedFilesRequested();
    void resetRequested();

private:
    void addHeading(QBoxLayout& layout, const State& state);
    void addDestination(QBoxLayout& layout, const State& state);
    void addAutoOff(QBoxLayout& layout, const State& state);
    void addVisibility(QBoxLayout& layout, const State& state);
    void addTransfers(QBoxLayout& layout, const State& state);
    void addLinks(QBoxLayout& layout);
    void addBottomRow(QBoxLayout& layout);
    void showMoreLines();

    QLabel* summary_ = nullptr;
    QPlainTextEdit* transfers_ = nullptr;
    QStringList lines_; ///< of the transfers
    qsizetype shownLines_ = 0;
};

} // namespace ferrylane
