#pragma once

#include <QDialog>
#include <QPoint>
#include <QSize>
#include <QString>

#include <functional>

class PictureLoader;
class QAbstractButton;
class QLabel;
class QToolButton;

// The base of the program's windows other than the main one. Each is opened modally from the main
// window, created on first use and reused; every opening runs load(), where a window makes the data
// directory current and reads its tables afresh.
class Form : public QDialog
{
    Q_OBJECT

public:
    explicit Form(QWidget *parent = nullptr);
    void setVisible(bool visible) override;

protected:
    virtual void load() {}
    void showEvent(QShowEvent *event) override;
    // Where the window's frame, title bar included, goes at each opening.
    void placeFrameOnOpening(std::function<QPoint()> topLeft) { m_frameTopLeft = std::move(topLeft); }
    // The size the window opens at where the screen has room for it, else the screen's free area
    // less the window's frame (a window larger than the screen hides its edges and buttons).
    void openAtSize(QSize preferred) { m_preferredSize = preferred; }

private:
    std::function<QPoint()> m_frameTopLeft;
    QSize m_preferredSize;
};

// A picture button: an icon with a hint. The hint is the button's tooltip and its accessible
// name; a button without a hint gets `accessibleName` instead.
QToolButton *makePictureButton(const QString &hint, QWidget *parent, const QString &accessibleName = {});

// Loads the icon file at `path` onto `button`; a missing file leaves it blank.
void loadButtonIcon(QAbstractButton *button, PictureLoader &pictures, const QString &path);

// A label showing a value (a count, a selected name, a path): its text is what screen readers read,
// and it can be selected to be copied. `objectName` is the handle windows and tests find it by.
QLabel *makeTextLabel(const QString &objectName, QWidget *parent);
