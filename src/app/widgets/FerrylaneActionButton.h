#pragma once

#include <QPushButton>

#include <functional>

namespace ferrylane {

/// A push button with a title and the one thing that it does, in the look of this program. Enter
/// presses it, too. The title is shown as it is: "&" marks nothing in it, as it may be somebody's
/// name.
///
/// Main thread.
class FerrylaneActionButton final : public QPushButton {
public:
    enum class Look {
        rounded,    ///< white with a border
        filled,     ///< white text on the program's blue
        borderless, ///< text alone
    };

    FerrylaneActionButton(
        const QString& title, std::function<void()> onPress, QWidget* parent = nullptr);

    /// May be empty, then nothing happens.
    std::function<void()> onPress;

    void setTitle(const QString& title);
    [[nodiscard]] QString title() const { return title_; }
    void setLook(Look look);
    /// The colour of the text, such as red for what cannot be undone.
    void setTint(const QColor& tint);
    /// In points (see Appearance.h); 7 unless told otherwise.
    void setCornerRadius(double points);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QColor background() const;
    [[nodiscard]] QColor textColor() const;

    QString title_;
    QColor tint_;
    double cornerRadius_ = 7;
    Look look_ = Look::rounded;
};

} // namespace ferrylane
