// The base of every control a form holds, standard or the library's own: the extender
// properties the host reads by name (Name, Parent, Container, position and size in twips,
// Visible, Enabled, TabStop, Tag, Index), and the host's key, mouse and focus events with their
// arguments passed by reference, translated from the Qt events of the control's input widget.
#pragma once

#include "korvex/runtime/OleColor.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QString>
#include <QWidget>

namespace korvex {

class Form;
class PropertyBag;

// Shift-state bits of key and mouse events.
enum ShiftConstants : short { vbShiftMask = 1, vbCtrlMask = 2, vbAltMask = 4 };
// Mouse buttons of mouse events.
enum MouseButtonConstants : short { vbLeftButton = 1, vbRightButton = 2, vbMiddleButton = 4 };
// The edge of its container an alignable control is docked to.
enum AlignConstants : short { vbAlignNone = 0, vbAlignTop = 1, vbAlignBottom = 2, vbAlignLeft = 3, vbAlignRight = 4 };

class Control : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString Name READ Name WRITE SetName)
    Q_PROPERTY(QObject* Parent READ ParentObject)
    Q_PROPERTY(QObject* Container READ ContainerObject)
    Q_PROPERTY(int Left READ Left WRITE SetLeft)
    Q_PROPERTY(int Top READ Top WRITE SetTop)
    Q_PROPERTY(int Width READ Width WRITE SetWidth)
    Q_PROPERTY(int Height READ Height WRITE SetHeight)
    Q_PROPERTY(bool Visible READ Visible WRITE SetVisible)
    Q_PROPERTY(bool Enabled READ Enabled WRITE SetEnabled)
    Q_PROPERTY(bool TabStop READ TabStop WRITE SetTabStop)
    Q_PROPERTY(short TabIndex READ TabIndex WRITE SetTabIndex)
    Q_PROPERTY(QString Tag READ Tag WRITE SetTag)
    Q_PROPERTY(short Index READ Index)
    Q_PROPERTY(bool CausesValidation READ CausesValidation WRITE SetCausesValidation)
    Q_PROPERTY(QString ToolTipText READ ToolTipText WRITE SetToolTipText)
    Q_PROPERTY(short Align READ Align WRITE SetAlign)
    Q_PROPERTY(qlonglong hWnd READ hWnd)

public:
    explicit Control(QWidget* parent = nullptr);
    ~Control() override;

    const QString& Name() const noexcept { return mName; }
    void SetName(const QString& name);
    // The form or user control that holds this control (a control inside a frame still has
    // the form as its Parent); nullptr when there is none.
    QObject* ParentObject() const;
    // The control or form this control is placed in (a frame, a picture box, the form).
    QObject* ContainerObject() const;
    // The form this control is on, through any containers and user controls.
    Form* ParentForm() const;

    int Left() const;
    int Top() const;
    int Width() const;
    int Height() const;
    void SetLeft(int twips);
    void SetTop(int twips);
    void SetWidth(int twips);
    void SetHeight(int twips);
    // Position and size in one step, in twips (the host's Move method); -1 leaves a value as
    // it is. A negative width or height otherwise raises 380.
    Q_INVOKABLE void Move(int left, int top = -1, int width = -1, int height = -1);

    virtual bool Visible() const { return !isHidden(); }
    virtual void SetVisible(bool visible) { setVisible(visible); }
    virtual bool Enabled() const { return !testAttribute(Qt::WA_ForceDisabled); }
    virtual void SetEnabled(bool enabled);
    bool TabStop() const noexcept { return mTabStop; }
    virtual void SetTabStop(bool tabStop);
    short TabIndex() const noexcept { return mTabIndex; }
    void SetTabIndex(short index) { mTabIndex = index; }
    const QString& Tag() const noexcept { return mTag; }
    void SetTag(const QString& tag) { mTag = tag; }
    // -1 when the control is not an element of a control array.
    short Index() const noexcept { return mIndex; }
    void SetIndex(short index) { mIndex = index; }
    bool CausesValidation() const noexcept { return mCausesValidation; }
    void SetCausesValidation(bool causes) { mCausesValidation = causes; }
    QString ToolTipText() const { return toolTip(); }
    void SetToolTipText(const QString& text) { setToolTip(text); }
    // Docked to an edge of the container: as wide (or as high) as the container, following its
    // resizes, after the controls docked before it. Raises 380 for a value out of range and
    // for any value but vbAlignNone on a control that cannot be docked.
    short Align() const noexcept { return mAlign; }
    void SetAlign(short align);
    // Whether the control can be docked (a title band, a side bar); most controls cannot.
    virtual bool Alignable() const { return false; }
    // A number that identifies the control's window for its life.
    qlonglong hWnd() const { return static_cast<qlonglong>(reinterpret_cast<quintptr>(this)); }

    Q_INVOKABLE void SetFocus();
    Q_INVOKABLE virtual void Refresh();
    Q_INVOKABLE void ZOrder(int position = 0);

    // The widget that holds controls placed in this one (containers only), and whether this
    // control accepts them.
    virtual QWidget* ContainerWidget() { return this; }
    virtual bool IsContainer() const { return false; }
    // Whether the form file keeps this control's position and size (lines keep their end
    // points, timers and menus have none).
    virtual bool HasExtenderGeometry() const { return true; }
    // The type name the form file and the library's tables use.
    QString TypeName() const;
    // Whether the control is an array element loaded at run time (only those may be unloaded).
    bool LoadedAtRunTime() const noexcept { return mLoadedAtRunTime; }
    void SetLoadedAtRunTime(bool loaded) { mLoadedAtRunTime = loaded; }
    // Order of creation, for the form's Controls collection.
    quint64 CreationOrder() const noexcept { return mCreationOrder; }

    // Sizes from the content, so that Qt layouts keep the control: those of the Qt widget or
    // inner control that takes its input, unless the control knows better.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    // Raises Validate for this control as if the focus were leaving it; true when no handler
    // cancelled.
    bool RunValidate();

    // The lifecycle the container drives: a control new on a form gets InitProperties, one
    // loaded from a form file ReadProperties; saving calls WriteProperties; Terminate comes
    // before the control is destroyed with its form.
    virtual void InitProperties() {}
    virtual void ReadProperties(PropertyBag& bag);
    virtual void WriteProperties(PropertyBag& bag);
    virtual void Terminate() {}

signals:
    void Click();
    void DblClick();
    void KeyDown(short& KeyCode, short& Shift);
    void KeyPress(short& KeyAscii);
    void KeyUp(short& KeyCode, short& Shift);
    void MouseDown(short& Button, short& Shift, float& X, float& Y);
    void MouseMove(short& Button, short& Shift, float& X, float& Y);
    void MouseUp(short& Button, short& Shift, float& X, float& Y);
    void GotFocus();
    void LostFocus();
    void Validate(bool& Cancel);

protected:
    // Called after the position or size changed through the extender, shown or not (Qt sends
    // no resize event to a hidden widget until it is shown).
    virtual void GeometryChanged() {}
    // The widget whose Qt events become this control's events: the inner Qt widget of a
    // wrapper, or the control itself. Call once the input widget exists.
    void SetInputWidget(QWidget* widget);
    QWidget* InputWidget() const { return mInput; }
    // Whether a mouse release over the input widget raises Click (controls whose click means
    // something else raise it themselves).
    virtual bool ClickOnMouseUp() const { return true; }
    // Raises MouseDown, MouseMove or MouseUp with the event's position, in twips, as the host's
    // coordinates (a control whose mouse lands on several inner widgets maps it first).
    void RaiseMouse(QEvent::Type type, QMouseEvent* event);

    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Raises the host events of one event of the input widget; true when the event is used up.
    bool RaiseEventsOf(QEvent* event);
    bool TranslateKeyPress(QKeyEvent* event);
    QSize DesignedSize() const;
    // Puts the docked controls of the container back along its edges.
    void Redock();

    // The twips the host gave for a position or size, kept while the widget has the pixels they
    // asked for: 1400 twips read back as 1400, not as the 1395 that their 93 pixels make. A
    // size Qt clamped, or one a layout changed, reads from the pixels.
    struct KeptTwips {
        int twips = 0;
        int pixels = -1;
        int Read(int nowPixels, int (*toTwips)(double)) const { return nowPixels == pixels ? twips : toTwips(nowPixels); }
    };

    QString mName;
    QString mTag;
    KeptTwips mLeft;
    KeptTwips mTop;
    KeptTwips mWidth;
    KeptTwips mHeight;
    short mTabIndex = 0;
    short mIndex = -1;
    short mAlign = vbAlignNone;
    bool mTabStop = true;
    bool mCausesValidation = true;
    QPointer<QWidget> mInput;
    bool mRetyping = false;
    bool mLoadedAtRunTime = false;
    quint64 mCreationOrder = 0;
};

// The control of the form that `widget` belongs to: the nearest control around it, or the user
// control built from it; nullptr outside any control.
Control* FormLevelControl(QWidget* widget);

// Windows virtual-key code of a Qt key (A-Z 65-90, 0-9 48-57, F1 112, Enter 13, Delete 46 ...);
// 0 for keys without one.
short VirtualKeyOf(int qtKey, Qt::KeyboardModifiers modifiers);
short ShiftOf(Qt::KeyboardModifiers modifiers);

}  // namespace korvex
