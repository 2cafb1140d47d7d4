#pragma once

#include "app/widgets/PanelWindow.h"

#include <QList>
#include <QStringList>

class QBoxLayout;
class QPlainTextEdit;

namespace ferrylane {

struct FerrylaneTransferLogEntry;

// Where the maker is to be found. Settled when the program is built; a distributor puts other
// addresses here.
namespace maker {
inline constexpr QLatin1StringView productPage{"https://www.tarrowby.example/ferrylane"};
inline constexpr QLatin1StringView privacyPage{"https://www.tarrowby.example/ferrylane/privacy"};
inline constexpr QLatin1StringView supportPage{"https://www.tarrowby.example/ferrylane/support"};
inline constexpr QLatin1StringView supportAddress{"support@tarrowby.example"};
} // namespace maker

/// This program's version, "unknown" when the build did not tell it.
[[nodiscard]] QString versionText();

/// "12 · 3.4 MB": how many transfers are logged, and the sum of the sizes that are known.
[[nodiscard]] QString transferSummary(const QList<FerrylaneTransferLogEntry>& entries);

/// What a mail with feedback says about this program and system, after what was typed.
[[nodiscard]] QString feedbackDetails(qsizetype loggedTransfers);
/// A link that opens the user's mail program with a mail to the maker.
[[nodiscard]] QString feedbackLink(const QString& body);

/// The window with the program's settings and its transfers. It shows the state it is made with;
/// only the transfers come later. 540 x 610 points.
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
