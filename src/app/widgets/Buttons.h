#pragma once

#include <QAbstractButton>
#include <QPushButton>

#include <functional>

namespace ferrylane {

/// What the buttons that draw themselves have in common: they are reached by the Tab key, change
/// under the pointer, and Enter presses them as the blank does.
class PaintedButton : public QAbstractButton {
public:
    explicit PaintedButton(QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// Presses the button when the event is an Enter key going down; false for any other.
[[nodiscard]] bool pressedByEnter(QAbstractButton& button, const QKeyEvent& event);

/// A two-state switch: a knob in a track, blue when on. To assistive technology it is a check box.
/// clicked() reports what people do, toggled() every change.
/// 54 x 30 points (see Appearance.h) unless resized; keeps that shape.
class SwitchButton final : public PaintedButton {
public:
    explicit SwitchButton(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A line of text that can be clicked and shows it by its colour under the pointer, as long as its
/// window is the active one. Text that is too long is cut in the middle, and the tool tip has all
/// of it. Reachable by the Tab key and pressed by the blank, like every button.
///
/// The text is shown as it is; unlike text() of a button, "&" marks nothing in it.
class FerrylaneHoverLabel final : public PaintedButton {
public:
    explicit FerrylaneHoverLabel(std::function<void()> onClick, QWidget* parent = nullptr);

    QColor normalTextColor;
    QColor hoverTextColor;

    void setLabel(const QString& text);
    [[nodiscard]] QString label() const { return label_; }
    /// What is shown of the label at the present width.
    [[nodiscard]] QString shownText() const;
    /// The colour that the text has at the moment.
    [[nodiscard]] QColor textColor() const;
    [[nodiscard]] QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString label_;
    bool isHovered_ = false;
};

/// A push button with a title and the one thing that it does, in the look of this program. Enter
/// presses it, too. The title is shown as it is: "&" marks nothing in it, as it may be somebody's
/// name.
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
