#pragma once

#include "app/widgets/Appearance.h"

#include <QWidget>

class QLabel;

namespace ferrylane {

/// The size and the weight of a text, and its colour.
struct TextLook {
    double points = 0;
    QFont::Weight weight = QFont::Normal;
    QColor color;
};

/// A label of plain text.
QLabel* addText(QWidget& parent, const QString& text, const TextLook& look);
/// Gives a control its text's size, weight and colour.
void setTextLook(QWidget& widget, const TextLook& look);

/// A small window with a title and a close button: of one size, light, closed by Escape. Closing
/// only hides it.
class PanelWindow : public QWidget {
public:
    /// `size` in points (see Appearance.h).
    PanelWindow(const QString& title, QSize size);

    /// Shows it in the middle of the screen, in front and with the focus; where it is, when it is
    /// shown already.
    void present();

protected:
    /// In points from the bottom left corner of the window.
    void placeHere(QWidget& widget, const Place& where) const;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QSize points_;
};

} // namespace ferrylane
