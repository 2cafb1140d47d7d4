#pragma once

#include "app/PanelWindow.h"

#include <QStringList>

#include <functional>

class QBoxLayout;
class QPlainTextEdit;

namespace ferrylane {

/// The window with the program's settings and its transfers. It shows the state it is made with;
/// only the transfers come later. 540 x 610 points.
///
/// Main thread.
class InfoPanel final : public PanelWindow {
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
    struct Intents {
        std::function<void()> chooseFolder;
        std::function<void(qint64 seconds)> autoOffChosen;
        std::function<void(bool isVisible)> visibilitySwitched;
        std::function<void()> showDevices;
        std::function<void(bool keepsAll)> transfersKept;
        std::function<void()> openWebsite;
        std::function<void()> openPrivacy;
        std::function<void()> openSupport;
        std::function<void()> giveFeedback;
        std::function<void()> nameDevice;
        std::function<void()> openFolder;
        std::function<void()> reset;
    };

    InfoPanel(const State& state, const Intents& intents);

    /// The list grows in pieces, so that a long one never holds the other windows up.
    void setTransfers(const QString& summary, QStringList lines);
    /// How many lines of them are in the list by now.
    [[nodiscard]] qsizetype shownTransfers() const { return shownLines_; }

private:
    void addHeading(QBoxLayout& layout, const State& state);
    void addDestination(QBoxLayout& layout, const State& state, const Intents& intents);
    void addAutoOff(QBoxLayout& layout, const State& state, const Intents& intents);
    void addVisibility(QBoxLayout& layout, const State& state, const Intents& intents);
    void addTransfers(QBoxLayout& layout, const State& state, const Intents& intents);
    void addLinks(QBoxLayout& layout, const Intents& intents);
    void addBottomRow(QBoxLayout& layout, const Intents& intents);
    void showMoreLines();

    QLabel* summary_ = nullptr;
    QPlainTextEdit* transfers_ = nullptr;
    QStringList lines_; ///< of the transfers
    qsizetype shownLines_ = 0;
};

} // namespace ferrylane
