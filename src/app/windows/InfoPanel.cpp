#include "app/windows/InfoPanel.h"

#include "app/widgets/Buttons.h"
#include "core/Text.h"
#include "transferlog/TransferLog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScreen>
#include <QSysInfo>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <limits>

namespace ferrylane {

namespace {

/// A choice of when the service switches itself off; 0 seconds: never.
struct AutoOffChoice {
    QLatin1StringView title;
    qint64 seconds = 0;
};
constexpr std::array<AutoOffChoice, 5> autoOffChoices{{
    {QLatin1StringView("After 60 seconds"), 60},
    {QLatin1StringView("After 5 minutes"), 300},
    {QLatin1StringView("After 20 minutes"), 1200},
    {QLatin1StringView("After 1 hour"), 3600},
    {QLatin1StringView("Never"), 0},
}};

constexpr int infoMargin = 22;
constexpr TextLook bodyText{12, QFont::Normal, colors::grey};
// Left free above and below the window, for its title bar.
constexpr QSize screenMargin(0, 56);
// Few enough to be put in between two frames.
constexpr qsizetype linesAtATime = 400;

QString encoded(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QLabel* addLine(QBoxLayout& layout, const QString& text, const TextLook& look)
{
    QLabel* const label = addText(*layout.parentWidget(), text, look);
    layout.addWidget(label);
    return label;
}

void addTitle(QBoxLayout& layout, const QString& text)
{
    layout.addSpacing(scaled(QSize(0, 4)).height());
    addLine(layout, text, {12, QFont::DemiBold, colors::dark});
}

FerrylaneActionButton* addButton(
    QBoxLayout& layout, const QString& title, std::function<void()> onPress)
{
    auto* const button = new FerrylaneActionButton(title, std::move(onPress));
    button->setFont(textFont(12));
    layout.addWidget(button);
    return button;
}

/// A row within the layout; its widgets become the window's.
QHBoxLayout* addRow(QBoxLayout& layout)
{
    auto* const row = new QHBoxLayout;
    row->setSpacing(scaled(QSize(8, 0)).width());
    layout.addLayout(row);
    return row;
}

} // namespace

QString versionText()
{
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? QStringLiteral("unknown") : version;
}

QString transferSummary(const QList<FerrylaneTransferLogEntry>& entries)
{
    qint64 sum = 0;
    for (const FerrylaneTransferLogEntry& entry : entries) {
        // A damaged log may say anything.
        const qint64 size = std::max(entry.size.value_or(0), qint64(0));
        sum += std::min(size, std::numeric_limits<qint64>::max() - sum);
    }
    return QStringLiteral("%1 \u00B7 %2").arg(QString::number(entries.size()), fileSizeText(sum));
}

QString feedbackDetails(qsizetype loggedTransfers)
{
    return QStringLiteral("\n\nFerrylane %1\n%2\nTransfers logged: %3")
        .arg(versionText(), QSysInfo::prettyProductName(), QString::number(loggedTransfers));
}

QString feedbackLink(const QString& body)
{
    return QStringLiteral("mailto:%1?subject=%2&body=%3")
        .arg(maker::supportAddress, encoded(QStringLiteral("Ferrylane feedback")), encoded(body));
}

InfoPanel::InfoPanel(const State& state)
    : PanelWindow(QStringLiteral("Ferrylane \u2014 Info & Settings"), {540, 610})
{
    setFont(textFont(12));
    auto* const layout = new QVBoxLayout(this);
    const int space = scaled(QSize(infoMargin, 0)).width();
    layout->setContentsMargins(space, space / 2, space, space / 2);
    layout->setSpacing(scaled(QSize(0, 3)).height());
    addHeading(*layout, state);
    addDestination(*layout, state);
    addAutoOff(*layout, state);
    addVisibility(*layout, state);
    addTransfers(*layout, state);
    addLinks(*layout);
    addBottomRow(*layout);
    // On a low screen the transfer log gives way, so that the buttons can be reached.
    const int room = screen()->availableSize().height() - scaled(screenMargin).height();
    setFixedHeight(std::min(height(), std::max(room, minimumSizeHint().height())));
}

void InfoPanel::addHeading(QBoxLayout& layout, const State& state)
{
    addLine(layout, QStringLiteral("Info & Settings"), {19, QFont::Bold, colors::dark});
    addLine(layout, QStringLiteral("Device: ") + state.deviceName, bodyText);
    addLine(layout, QStringLiteral("Version: ") + state.version, bodyText);
    summary_ = addLine(layout, QStringLiteral("Transfers logged: \u2026"), bodyText);
    addTitle(layout, QStringLiteral("How it works"));
    addLine(layout,
        QStringLiteral("Pair once with the QR code, choose files and a device, then Ferrylane "
                       "sends directly over your local network. Transfers use authenticated "
                       "AES-256-GCM encryption; file contents do not pass through Tarrowby "
                       "servers."),
        bodyText)
        ->setWordWrap(true);
}

void InfoPanel::addDestination(QBoxLayout& layout, const State& state)
{
    addTitle(layout, QStringLiteral("Destination folder"));
    QHBoxLayout* const row = addRow(layout);
    auto* const path = new QLineEdit(state.receiveFolder);
    path->setReadOnly(true);
    path->setAccessibleName(QStringLiteral("Destination folder"));
    path->setCursorPosition(0);
    row->addWidget(path, 1);
    addButton(*row, QStringLiteral("Choose\u2026"), [this] { Q_EMIT folderChoiceRequested(); });
}

void InfoPanel::addAutoOff(QBoxLayout& layout, const State& state)
{
    QHBoxLayout* const row = addRow(layout);
    addLine(*row, QStringLiteral("Turn off automatically"), {12, QFont::DemiBold, colors::dark});
    row->addStretch();
    auto* const choices = new QComboBox;
    choices->setAccessibleName(QStringLiteral("Turn off automatically"));
    for (const AutoOffChoice& choice : autoOffChoices) {
        choices->addItem(choice.title, choice.seconds);
    }
    choices->setCurrentIndex(choices->findData(state.autoOffSeconds));
    connect(choices, &QComboBox::activated, this,
        [this, choices] { Q_EMIT autoOffChosen(choices->currentData().toLongLong()); });
    row->addWidget(choices);
}

void InfoPanel::addVisibility(QBoxLayout& layout, const State& state)
{
    addTitle(layout, QStringLiteral("Nearby visibility"));
    QHBoxLayout* const row = addRow(layout);
    auto* const visible = new QCheckBox(QStringLiteral("Visible to nearby Ferrylane devices"));
    visible->setChecked(state.isVisible);
    visible->setEnabled(state.isServiceRunning);
    connect(visible, &QCheckBox::clicked, this, &InfoPanel::visibilitySwitched);
    row->addWidget(visible, 1);
    addButton(*row, QStringLiteral("Devices\u2026"), [this] {
        Q_EMIT devicesRequested();
    })->setToolTip(QStringLiteral("View nearby and paired Ferrylane devices"));
    addLine(layout, QStringLiteral("Turn this off when you want receiving to stay private."),
        {10.5, QFont::Normal, colors::grey});
}

void InfoPanel::addTransfers(QBoxLayout& layout, const State& state)
{
    addTitle(layout, QStringLiteral("Transfer log"));
    QHBoxLayout* const row = addRow(layout);
    const auto addChoice = [&](const QString& title, bool keepsAll) {
        auto* const button = new QRadioButton(title);
        button->setChecked(state.keepsAllTransfers == keepsAll);
        connect(button, &QRadioButton::clicked, this,
            [this, keepsAll] { Q_EMIT transfersKept(keepsAll); });
        row->addWidget(button);
    };
    addChoice(QStringLiteral("Last 100 transfers"), false);
    addChoice(QStringLiteral("Continuous"), true);
    row->addStretch();

    transfers_ = new QPlainTextEdit;
    transfers_->setReadOnly(true);
    transfers_->setUndoRedoEnabled(false);
    transfers_->setLineWrapMode(QPlainTextEdit::NoWrap);
    transfers_->setTabChangesFocus(true);
    transfers_->setAccessibleName(QStringLiteral("Transfer log"));
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(textFont(10).pointSizeF());
    transfers_->setFont(font);
    layout.addWidget(transfers_, 1);
}

void InfoPanel::addLinks(QBoxLayout& layout)
{
    QHBoxLayout* const row = addRow(layout);
    const auto addLink = [row](const QString& title, const std::function<void()>& open) {
        FerrylaneActionButton* const link = addButton(*row, title, open);
        link->setLook(FerrylaneActionButton::Look::borderless);
        link->setTint(colors::blue);
    };
    addLink(QStringLiteral("Website"), [this] { Q_EMIT pageRequested(maker::productPage); });
    addLink(QStringLiteral("Privacy"), [this] { Q_EMIT pageRequested(maker::privacyPage); });
    addLink(QStringLiteral("Help & support"), [this] { Q_EMIT pageRequested(maker::supportPage); });
    addLink(QStringLiteral("Feedback\u2026"), [this] { Q_EMIT feedbackRequested(); });
    row->addStretch();
}

void InfoPanel::addBottomRow(QBoxLayout& layout)
{
    QHBoxLayout* const row = addRow(layout);
    addButton(
        *row, QStringLiteral("Rename device\u2026"), [this] { Q_EMIT deviceNameRequested(); });
    addButton(*row, QStringLiteral("Open folder"), [this] { Q_EMIT receivedFilesRequested(); });
    addButton(*row, QStringLiteral("Reset\u2026"), [this] {
        Q_EMIT resetRequested();
    })->setTint(colors::red);
    row->addStretch();
    addButton(*row, QStringLiteral("Done"), [this] { close(); });
}

void InfoPanel::setTransfers(const QString& summary, QStringList lines)
{
    summary_->setText(QStringLiteral("Transfers logged: ") + summary);
    lines_ = std::move(lines);
    shownLines_ = 0;
    transfers_->clear();
    showMoreLines();
}

void InfoPanel::showMoreLines()
{
    const qsizetype count = std::min(linesAtATime, lines_.size() - shownLines_);
    if (count <= 0) return;
    transfers_->appendPlainText(lines_.sliced(shownLines_, count).join(u'\n'));
    if (shownLines_ == 0) transfers_->moveCursor(QTextCursor::Start);
    shownLines_ += count;
    QTimer::singleShot(0, this, &InfoPanel::showMoreLines);
}

} // namespace ferrylane
