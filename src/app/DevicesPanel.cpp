#include "app/DevicesPanel.h"

#include "app/FerrylaneActionButton.h"

#include <QLabel>
#include <QScrollArea>

#include <algorithm>

namespace ferrylane {

namespace {

constexpr QColor background(246, 249, 253);
constexpr QColor heading(20, 41, 74);
constexpr int listWidth = 420;
constexpr int documentWidth = 400;
constexpr int rowWidth = 398;
constexpr int rowHeight = 52;
constexpr int rowDistance = 58;

int inPixels(double points)
{
    return scaled(QSize(static_cast<int>(points), 0)).width();
}

} // namespace

DevicesPanel::DevicesPanel(Intents intents)
    : PanelWindow(QStringLiteral("Ferrylane \u2014 Devices"), {460, 500})
    , intents_(std::move(intents))
{
    QPalette colours = palette();
    colours.setColor(QPalette::Window, background);
    setPalette(colours);
    addHeading();
    addList();
    addButtons();
}

void DevicesPanel::addHeading()
{
    placeHere(*addText(*this, QStringLiteral("\u2699 Devices"), {20, QFont::Bold, heading}),
        {20, 455, listWidth, 28});
    QLabel* const explanation = addText(*this,
        QStringLiteral("Nearby Ferrylane devices. Paired devices can be removed; unpaired devices "
                       "can be paired."),
        {12, QFont::Normal, colors::grey});
    explanation->setWordWrap(true);
    placeHere(*explanation, {20, 411, listWidth, 38});
}

void DevicesPanel::addList()
{
    list_ = new QScrollArea(this);
    list_->setFrameShape(QFrame::NoFrame);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setAccessibleName(QStringLiteral("Devices"));
    list_->viewport()->setAutoFillBackground(false);
    placeHere(*list_, {20, 84, listWidth, 315});
    document_ = new QWidget;
    document_->setAutoFillBackground(false);
    nothing_ = addText(
        *document_, QStringLiteral("No nearby devices found."), {13, QFont::Normal, colors::grey});
    place(*nothing_, {4, 8, documentWidth - 4, 40}, rowDistance);
    list_->setWidget(document_);
    setRows({});
}

void DevicesPanel::addButtons()
{
    auto* const pair = new FerrylaneActionButton(
        QStringLiteral("Pair device with QR"), intents_.startPairing, this);
    pair->setFont(textFont(12));
    placeHere(*pair, {20, 26, 170, 32});
    auto* const done = new FerrylaneActionButton(
        QStringLiteral("Done"), [this] { close(); }, this);
    done->setFont(textFont(12));
    done->setShortcut(Qt::Key_Return);
    placeHere(*done, {350, 26, 90, 32});
}

DeviceRowView* DevicesPanel::focusedRow() const
{
    const auto found = std::find_if(rows_.begin(), rows_.end(),
        [](const DeviceRowView* row) { return row->button().hasFocus(); });
    return found == rows_.end() ? nullptr : *found;
}

void DevicesPanel::setRows(const QList<DeviceRow>& rows)
{
    const DeviceRowView* const focused = focusedRow();
    const QString focusedName = focused ? focused->row().name : QString();
    while (rows_.size() > rows.size()) {
        delete rows_.takeLast();
    }
    while (rows_.size() < rows.size()) {
        auto* const view = new DeviceRowView(intents_, document_);
        const QPoint place(0, inPixels(static_cast<double>(rowDistance * rows_.size())));
        view->setGeometry({place, scaled(QSize(rowWidth, rowHeight))});
        view->show();
        rows_.append(view);
    }
    for (qsizetype i = 0; i < rows.size(); ++i) {
        rows_[i]->setRow(rows[i]);
        if (focused && rows[i].name == focusedName) rows_[i]->button().setFocus();
    }
    nothing_->setVisible(rows.isEmpty());
    const int count = std::max(static_cast<int>(rows.size()), 1);
    document_->setFixedSize(scaled(QSize(documentWidth, rowDistance * count)));
}

} // namespace ferrylane
