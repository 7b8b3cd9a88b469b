// Control: extender properties in twips and the translation of Qt events into the host's
// event shapes (key codes, KeyAscii in the Windows code page, shift masks, twips positions).
#include "korvex/platform/host/Control.h"

#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/HostLogging.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"
#include "korvex/runtime/Twips.h"
#include "korvex/runtime/Windows1252.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QTimer>

#include <algorithm>

namespace korvex {

Q_LOGGING_CATEGORY(lcForms, "korvex.forms")

namespace {

quint64 NextCreationOrder()
{
    static quint64 next = 0;
    return ++next;
}

short ButtonsOf(Qt::MouseButtons buttons)
{
    short b = 0;
    if (buttons & Qt::LeftButton)
        b |= vbLeftButton;
    if (buttons & Qt::RightButton)
        b |= vbRightButton;
    if (buttons & Qt::MiddleButton)
        b |= vbMiddleButton;
    return b;
}

// An error that stops at a Qt entry point is shown as the library shows errors, and logged.
void ShowUncaught(const QObject*, const Error& error)
{
    qCCritical(lcForms).noquote() << "Error" << error.Number() << "in" << error.Source() << ":" << error.Description();
    QString prompt = error.Source() + QStringLiteral("\r\n\r\n");
    if (error.Number() > 0)
        prompt += QStringLiteral("Error '%1'").arg(error.Number()) + (error.Description().isEmpty() ? QString() : QStringLiteral(" : "));
    MsgBox(prompt + error.Description(), vbCritical);
}

// Docks the aligned controls of a container in creation order, each taking its edge of the room
// the ones before it left, as the host docks picture boxes and title bands.
void DockAligned(QWidget* container)
{
    static thread_local bool docking = false;
    if (docking)
        return;
    const QScopedValueRollback guard(docking, true);
    QList<Control*> docked;
    for (QObject* child : container->children()) {
        auto* c = qobject_cast<Control*>(child);
        // A control not yet shown counts (a new one is shown after it is placed); one the
        // program hid leaves its room to the others.
        const bool hidden = c && c->isHidden() && c->testAttribute(Qt::WA_WState_ExplicitShowHide);
        if (c && c->Align() != vbAlignNone && !hidden)
            docked.append(c);
    }
    std::stable_sort(docked.begin(), docked.end(),
                     [](const Control* a, const Control* b) { return a->CreationOrder() < b->CreationOrder(); });
    QRect room = container->rect();
    for (Control* c : docked) {
        switch (c->Align()) {
        case vbAlignTop:
            c->setGeometry(room.left(), room.top(), room.width(), c->height());
            room.setTop(room.top() + c->height());
            break;
        case vbAlignBottom:
            c->setGeometry(room.left(), room.bottom() + 1 - c->height(), room.width(), c->height());
            room.setBottom(room.bottom() - c->height());
            break;
        case vbAlignLeft:
            c->setGeometry(room.left(), room.top(), c->width(), room.height());
            room.setLeft(room.left() + c->width());
            break;
        case vbAlignRight:
            c->setGeometry(room.right() + 1 - c->width(), room.top(), c->width(), room.height());
            room.setRight(room.right() - c->width());
            break;
        default: break;
        }
    }
}

}  // namespace

short ShiftOf(Qt::KeyboardModifiers modifiers)
{
    short s = 0;
    if (modifiers & Qt::ShiftModifier)
        s |= vbShiftMask;
    if (modifiers & Qt::ControlModifier)
        s |= vbCtrlMask;
    if (modifiers & Qt::AltModifier)
        s |= vbAltMask;
    return s;
}

short VirtualKeyOf(int key, Qt::KeyboardModifiers modifiers)
{
    if (modifiers & Qt::KeypadModifier && key >= Qt::Key_0 && key <= Qt::Key_9)
        return static_cast<short>(96 + key - Qt::Key_0);
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return static_cast<short>(key);
    if (key >= Qt::Key_0 && key <= Qt::Key_9)
        return static_cast<short>(key);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return static_cast<short>(112 + key - Qt::Key_F1);
    switch (key) {
    case Qt::Key_Backspace: return 8;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return 9;
    case Qt::Key_Return:
    case Qt::Key_Enter: return 13;
    case Qt::Key_Shift: return 16;
    case Qt::Key_Control: return 17;
    case Qt::Key_Alt: return 18;
    case Qt::Key_Pause: return 19;
    case Qt::Key_CapsLock: return 20;
    case Qt::Key_Escape: return 27;
    case Qt::Key_Space: return 32;
    case Qt::Key_PageUp: return 33;
    case Qt::Key_PageDown: return 34;
    case Qt::Key_End: return 35;
    case Qt::Key_Home: return 36;
    case Qt::Key_Left: return 37;
    case Qt::Key_Up: return 38;
    case Qt::Key_Right: return 39;
    case Qt::Key_Down: return 40;
    case Qt::Key_Insert: return 45;
    case Qt::Key_Delete: return 46;
    case Qt::Key_Asterisk: return 106;
    case Qt::Key_Plus: return 107;
    case Qt::Key_Minus: return 189;
    case Qt::Key_Period: return 190;
    case Qt::Key_Comma: return 188;
    case Qt::Key_Slash: return 191;
    case Qt::Key_Semicolon: return 186;
    case Qt::Key_Equal: return 187;
    default: return 0;
    }
}

Control* FormLevelControl(QWidget* widget)
{
    Control* control = nullptr;
    for (QWidget* w = widget; w && !qobject_cast<Form*>(w); w = w->parentWidget()) {
        auto* c = qobject_cast<Control*>(w);
        if (!c)
            continue;
        // A user control hides the controls it is built from, unless it holds the form's own.
        if (!control || (qobject_cast<UserControl*>(c) && !c->IsContainer()))
            control = c;
    }
    return control;
}

Control::Control(QWidget* parent) : QWidget(parent), mCreationOrder(NextCreationOrder())
{
    thread_local const bool reporting = [] {
        SetLibraryErrorReporter(ShowUncaught);
        return true;
    }();
    (void)reporting;
}

Control::~Control() = default;

void Control::SetName(const QString& name)
{
    mName = name;
    setObjectName(name);
}

QObject* Control::ParentObject() const
{
    for (QWidget* w = parentWidget(); w; w = w->parentWidget()) {
        if (qobject_cast<Form*>(w) || qobject_cast<UserControl*>(w))
            return w;
    }
    return nullptr;
}

QObject* Control::ContainerObject() const
{
    for (QWidget* w = parentWidget(); w; w = w->parentWidget()) {
        if (qobject_cast<Form*>(w) || qobject_cast<Control*>(w))
            return w;
    }
    return nullptr;
}

Form* Control::ParentForm() const
{
    for (QWidget* w = parentWidget(); w; w = w->parentWidget()) {
        if (auto* form = qobject_cast<Form*>(w))
            return form;
    }
    return nullptr;
}

int Control::Left() const { return mLeft.Read(x(), PixelsToTwipsX); }
int Control::Top() const { return mTop.Read(y(), PixelsToTwipsY); }
int Control::Width() const { return mWidth.Read(width(), PixelsToTwipsX); }
int Control::Height() const { return mHeight.Read(height(), PixelsToTwipsY); }
void Control::SetLeft(int twips)
{
    move(TwipsToPixelsX(twips), y());
    mLeft = {twips, TwipsToPixelsX(twips)};
    GeometryChanged();
    Redock();
}

void Control::SetTop(int twips)
{
    move(x(), TwipsToPixelsY(twips));
    mTop = {twips, TwipsToPixelsY(twips)};
    GeometryChanged();
    Redock();
}

void Control::SetWidth(int twips)
{
    if (twips < 0)
        Raise(vbErrInvalidPropertyValue, mName + QStringLiteral(".Width"));
    resize(TwipsToPixelsX(twips), height());
    mWidth = {twips, TwipsToPixelsX(twips)};
    GeometryChanged();
    Redock();
}

void Control::SetHeight(int twips)
{
    if (twips < 0)
        Raise(vbErrInvalidPropertyValue, mName + QStringLiteral(".Height"));
    resize(width(), TwipsToPixelsY(twips));
    mHeight = {twips, TwipsToPixelsY(twips)};
    GeometryChanged();
    Redock();
}

void Control::Move(int left, int top, int width, int height)
{
    if ((width < 0 && width != -1) || (height < 0 && height != -1))
        Raise(vbErrInvalidPropertyValue, mName + QStringLiteral(".Move"));
    move(TwipsToPixelsX(left), top == -1 ? y() : TwipsToPixelsY(top));
    resize(width == -1 ? this->width() : TwipsToPixelsX(width), height == -1 ? this->height() : TwipsToPixelsY(height));
    mLeft = {left, TwipsToPixelsX(left)};
    if (top != -1)
        mTop = {top, TwipsToPixelsY(top)};
    if (width != -1)
        mWidth = {width, TwipsToPixelsX(width)};
    if (height != -1)
        mHeight = {height, TwipsToPixelsY(height)};
    GeometryChanged();
    Redock();
}

void Control::SetAlign(short align)
{
    if (align < vbAlignNone || align > vbAlignRight || (align != vbAlignNone && !Alignable()))
        Raise(vbErrInvalidPropertyValue, mName + QStringLiteral(".Align"));
    mAlign = align;
    if (QWidget* container = parentWidget()) {
        container->removeEventFilter(this);
        if (align != vbAlignNone)
            container->installEventFilter(this);
    }
    Redock();
}

void Control::Redock()
{
    if (mAlign != vbAlignNone && parentWidget())
        DockAligned(parentWidget());
}

void Control::SetEnabled(bool enabled)
{
    setEnabled(enabled);
}

void Control::SetTabStop(bool tabStop)
{
    mTabStop = tabStop;
    if (mInput && mInput->focusPolicy() != Qt::NoFocus)
        mInput->setFocusPolicy(tabStop ? Qt::StrongFocus : Qt::ClickFocus);
}

void Control::SetFocus()
{
    QWidget* target = mInput ? mInput.data() : this;
    target->setFocus(Qt::OtherFocusReason);
}

void Control::Refresh()
{
    update();
    if (mInput && mInput != this)
        mInput->update();
}

void Control::ZOrder(int position)
{
    if (position == 0)
        raise();
    else
        lower();
}

QString Control::TypeName() const
{
    return TypeNameOf(this);
}

void Control::SetInputWidget(QWidget* widget)
{
    if (mInput)
        mInput->removeEventFilter(this);
    mInput = widget;
    if (!widget)
        return;
    widget->installEventFilter(this);
    if (widget != this) {
        setFocusProxy(widget);
        if (widget->focusPolicy() != Qt::NoFocus)
            widget->setFocusPolicy(mTabStop ? Qt::StrongFocus : Qt::ClickFocus);
    }
}

QSize Control::sizeHint() const
{
    if (const QWidget* source = mInput && mInput != this ? mInput.data() : focusProxy())
        return source->sizeHint();
    const QSize own = QWidget::sizeHint();
    return own.isValid() ? own : DesignedSize();
}

QSize Control::minimumSizeHint() const
{
    if (const QWidget* source = mInput && mInput != this ? mInput.data() : focusProxy())
        return source->minimumSizeHint();
    const QSize own = QWidget::minimumSizeHint();
    return own.isValid() ? own : DesignedSize();
}

QSize Control::DesignedSize() const
{
    // The size the host gave through the extender, or the one the control was built with.
    return {mWidth.pixels >= 0 ? mWidth.pixels : width(), mHeight.pixels >= 0 ? mHeight.pixels : height()};
}

void Control::ReadProperties(PropertyBag&) {}

void Control::WriteProperties(PropertyBag&) {}

bool Control::RunValidate()
{
    bool cancel = false;
    emit Validate(cancel);
    return !cancel;
}

bool Control::TranslateKeyPress(QKeyEvent* event)
{
    short keyCode = VirtualKeyOf(event->key(), event->modifiers());
    short shift = ShiftOf(event->modifiers());
    const short originalCode = keyCode;
    emit KeyDown(keyCode, shift);
    const QString text = event->text();
    const bool tab = event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab;
    if (text.isEmpty() || tab)
        return keyCode == 0 && originalCode != 0;  // a handler that zeroes a key code swallows the key

    // KeyAscii is the character in the Windows code page; characters outside it pass unseen.
    const QChar ch = text[0];
    short ascii = 0;
    if (ch.unicode() < 32) {
        ascii = static_cast<short>(ch.unicode());
    } else {
        const QByteArray bytes = ToWindows1252(QString(ch));
        if (bytes == "?" && ch != QLatin1Char('?'))
            return false;
        ascii = static_cast<short>(static_cast<unsigned char>(bytes[0]));
    }
    const short originalAscii = ascii;
    emit KeyPress(ascii);
    if (ascii == 0)
        return true;
    if (ascii == originalAscii)
        return false;
    // The handler changed the character: type the new one instead.
    const QString newText = ascii < 32 ? QString(QChar(ascii)) : FromWindows1252(QByteArray(1, static_cast<char>(ascii)));
    const char16_t upper = newText[0].toUpper().unicode();
    int newKey = upper < 128 ? static_cast<int>(upper) : static_cast<int>(Qt::Key_unknown);
    if (ascii == 13)
        newKey = Qt::Key_Return;
    else if (ascii == 8)
        newKey = Qt::Key_Backspace;
    QKeyEvent retyped(QEvent::KeyPress, newKey, event->modifiers() & ~Qt::ShiftModifier, newText);
    const QScopedValueRollback retyping(mRetyping, true);
    QCoreApplication::sendEvent(mInput, &retyped);
    return true;
}

void Control::RaiseMouse(QEvent::Type type, QMouseEvent* event)
{
    short button = type == QEvent::MouseMove ? ButtonsOf(event->buttons()) : ButtonsOf(event->button());
    short shift = ShiftOf(event->modifiers());
    float x = static_cast<float>(event->position().x() * TwipsPerPixelX());
    float y = static_cast<float>(event->position().y() * TwipsPerPixelY());
    switch (type) {
    case QEvent::MouseButtonPress: emit MouseDown(button, shift, x, y); break;
    case QEvent::MouseMove: emit MouseMove(button, shift, x, y); break;
    default: emit MouseUp(button, shift, x, y); break;
    }
}

bool Control::event(QEvent* event)
{
    const bool result = QWidget::event(event);
    if (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent)
        Redock();
    return result;
}

bool Control::eventFilter(QObject* watched, QEvent* event)
{
    if (mAlign != vbAlignNone && watched == parentWidget() && event->type() == QEvent::Resize)
        Redock();
    if (watched != mInput || mRetyping)
        return QWidget::eventFilter(watched, event);
    // The host's key, mouse and focus handlers run from here.
    return Guarded(this, [&] { return RaiseEventsOf(event); }, false);
}

bool Control::RaiseEventsOf(QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        return TranslateKeyPress(static_cast<QKeyEvent*>(event));
    case QEvent::KeyRelease: {
        auto* key = static_cast<QKeyEvent*>(event);
        // X11 ends each repeat of a held key with a release; the key is still down, so no
        // KeyUp until it really comes up (hosts tell a held key from a fresh press by it).
        if (key->isAutoRepeat())
            break;
        short keyCode = VirtualKeyOf(key->key(), key->modifiers());
        short shift = ShiftOf(key->modifiers());
        emit KeyUp(keyCode, shift);
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
        RaiseMouse(event->type(), static_cast<QMouseEvent*>(event));
        break;
    case QEvent::MouseButtonRelease: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        RaiseMouse(event->type(), mouse);
        if (ClickOnMouseUp() && mouse->button() == Qt::LeftButton && mInput->rect().contains(mouse->position().toPoint()))
            emit Click();
        break;
    }
    case QEvent::MouseButtonDblClick:
        emit DblClick();
        break;
    case QEvent::FocusIn:
        emit GotFocus();
        break;
    case QEvent::FocusOut: {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason)
            break;
        QWidget* next = QApplication::focusWidget();
        if (next && isAncestorOf(next))
            break;
        // The control taking the focus decides whether this one is validated first: the
        // control the form holds, not the inner box of a user control.
        Control* nextControl = FormLevelControl(next);
        if ((!nextControl || nextControl->CausesValidation()) && !RunValidate()) {
            QPointer<QWidget> input = mInput;
            QTimer::singleShot(0, this, [input] {
                if (input)
                    input->setFocus(Qt::OtherFocusReason);
            });
            break;
        }
        emit LostFocus();
        break;
    }
    default:
        break;
    }
    return false;
}

}  // namespace korvex
