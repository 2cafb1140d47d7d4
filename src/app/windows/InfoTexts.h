#pragma once

#include <QList>
#include <QString>

#include <array>

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

/// A choice of when the service switches itself off; 0 seconds: never.
struct AutoOffChoice {
    QLatin1StringView title;
    qint64 seconds = 0;
};
inline constexpr std::array<AutoOffChoice, 5> autoOffChoices{{
    {QLatin1StringView("After 60 seconds"), 60},
    {QLatin1StringView("After 5 minutes"), 300},
    {QLatin1StringView("After 20 minutes"), 1200},
    {QLatin1StringView("After 1 hour"), 3600},
    {QLatin1StringView("Never"), 0},
}};

/// This program's version, "unknown" when the build did not tell it.
[[nodiscard]] QString versionText();

/// "12 · 3.4 MB": how many transfers are logged, and the sum of the sizes that are known.
[[nodiscard]] QString transferSummary(const QList<FerrylaneTransferLogEntry>& entries);

/// What a mail with feedback says about this program and system, after what was typed.
[[nodiscard]] QString feedbackDetails(qsizetype loggedTransfers);
/// A link that opens the user's mail program with a mail to the maker.
[[nodiscard]] QString feedbackLink(const QString& body);

} // namespace ferrylane
