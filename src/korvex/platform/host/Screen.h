// The host's Screen object: the active form and control, the mouse pointer (mapped onto Qt's
// application cursor) and the twips-per-pixel ratios.
#pragma once

#include <QObject>

namespace korvex {

class Form;
class Control;

enum MousePointerConstants : int {
    vbDefault = 0,
    vbArrow = 1,
    vbCrosshair = 2,
    vbIbeam = 3,
    vbSizePointer = 5,
    vbSizeNESW = 6,
    vbSizeNS = 7,
    vbSizeNWSE = 8,
    vbSizeWE = 9,
    vbUpArrow = 10,
    vbHourglass = 11,
    vbNoDrop = 12,
    vbArrowHourglass = 13,
    vbArrowQuestion = 14,
    vbSizeAll = 15,
    vbCustom = 99,
};

// Whether a MousePointer value is one of the constants above.
bool IsMousePointerConstant(int pointer);
// The Qt cursor shape that stands for a MousePointer constant (the arrow for vbDefault and
// vbCustom, whose cursor is the control's MouseIcon).
Qt::CursorShape CursorShapeOf(int pointer);

class Screen : public QObject {
    Q_OBJECT
    Q_PROPERTY(QObject* ActiveForm READ ActiveFormObject)
    Q_PROPERTY(QObject* ActiveControl READ ActiveControlObject)
    Q_PROPERTY(int MousePointer READ MousePointer WRITE SetMousePointer)
    Q_PROPERTY(double TwipsPerPixelX READ TwipsPerPixelX)
    Q_PROPERTY(double TwipsPerPixelY READ TwipsPerPixelY)
    Q_PROPERTY(int Width READ Width)
    Q_PROPERTY(int Height READ Height)

public:
    explicit Screen(QObject* parent = nullptr);

    // The application's Screen object.
    static Screen* Instance();

    // The active form: the active MDI child when the MDI form is active. A test without a
    // window system may name it with SetActiveFormOverride.
    Form* ActiveForm() const;
    QObject* ActiveFormObject() const;
    Control* ActiveControl() const;
    QObject* ActiveControlObject() const;
    static void SetActiveFormOverride(Form* form);

    int MousePointer() const noexcept { return mMousePointer; }
    // 0 restores the default cursor; the others set the application's cursor shape.
    void SetMousePointer(int pointer);
    double TwipsPerPixelX() const;
    double TwipsPerPixelY() const;
    int Width() const;
    int Height() const;

private:
    int mMousePointer = vbDefault;
};

}  // namespace korvex
