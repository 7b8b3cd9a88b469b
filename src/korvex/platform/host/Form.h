// A form: a window holding controls at positions in twips, with the properties and events the
// host and the library use (Name, Caption, Controls in creation order, ActiveControl, Font,
// Load, QueryUnload, Unload). Controls live on the client area below an optional menu bar.
// A form under design (the preview tool's design mode) reports UserMode False to its controls.
#pragma once

#include "korvex/runtime/OleColor.h"
#include "korvex/runtime/StdFont.h"

#include <QList>
#include <QMainWindow>
#include <QPointer>

namespace korvex {

class Control;

enum FormUnloadModes : short {
    vbFormControlMenu = 0,
    vbFormCode = 1,
    vbAppWindows = 2,
    vbAppTaskManager = 3,
    vbFormMDIForm = 4,
    vbFormOwner = 5,
};

class Form : public QMainWindow {
    Q_OBJECT
    Q_PROPERTY(QString Name READ Name WRITE SetName)
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(QObject* ActiveControl READ ActiveControlObject)
    Q_PROPERTY(QObject* Font READ FontObject)
    Q_PROPERTY(QString Tag READ Tag WRITE SetTag)
    Q_PROPERTY(int Left READ Left WRITE SetLeft)
    Q_PROPERTY(int Top READ Top WRITE SetTop)
    Q_PROPERTY(int Width READ Width WRITE SetWidth)
    Q_PROPERTY(int Height READ Height WRITE SetHeight)
    Q_PROPERTY(int ScaleWidth READ ScaleWidth)
    Q_PROPERTY(int ScaleHeight READ ScaleHeight)
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(uint ForeColor READ ForeColor WRITE SetForeColor)
    Q_PROPERTY(bool Visible READ Visible WRITE SetVisible)
    Q_PROPERTY(bool Enabled READ Enabled WRITE SetEnabled)
    Q_PROPERTY(bool MDIChild READ MDIChild WRITE SetMDIChild)
    Q_PROPERTY(int HelpContextID READ HelpContextID WRITE SetHelpContextID)
    Q_PROPERTY(qlonglong hWnd READ hWnd)

public:
    explicit Form(QWidget* parent = nullptr);
    ~Form() override;

    const QString& Name() const noexcept { return mName; }
    void SetName(const QString& name);
    QString Caption() const { return windowTitle(); }
    void SetCaption(const QString& caption) { setWindowTitle(caption); }
    const QString& Tag() const noexcept { return mTag; }
    void SetTag(const QString& tag) { mTag = tag; }
    StdFont* Font() const { return mFont; }
    QObject* FontObject() const { return mFont; }
    int Left() const;
    int Top() const;
    int Width() const;
    int Height() const;
    void SetLeft(int twips);
    void SetTop(int twips);
    void SetWidth(int twips);
    void SetHeight(int twips);
    int ScaleWidth() const;
    int ScaleHeight() const;
    // The width of a text in the form's font, in twips.
    Q_INVOKABLE double TextWidth(const QString& Text) const;
    OleColor BackColor() const noexcept { return mBackColor; }
    void SetBackColor(OleColor color);
    OleColor ForeColor() const noexcept { return mForeColor; }
    void SetForeColor(OleColor color) { mForeColor = color; }
    bool Visible() const { return isVisible(); }
    void SetVisible(bool visible);
    bool Enabled() const { return isEnabled(); }
    void SetEnabled(bool enabled) { setEnabled(enabled); }
    bool MDIChild() const noexcept { return mMDIChild; }
    void SetMDIChild(bool child) { mMDIChild = child; }
    // The help topic of the form's function; 0 for none.
    int HelpContextID() const noexcept { return mHelpContextID; }
    void SetHelpContextID(int id) { mHelpContextID = id; }
    qlonglong hWnd() const { return static_cast<qlonglong>(reinterpret_cast<quintptr>(this)); }

    // Where controls are placed.
    QWidget* Client() const { return mClient; }
    // Every control of the form in creation order, controls in containers included, the inner
    // controls of user controls not.
    QList<Control*> Controls() const;
    Q_INVOKABLE QObject* ControlByName(const QString& name, int index = -1) const;
    Control* FindControl(const QString& name, short index = -1) const;
    // The elements of a control array, by index.
    QList<Control*> ControlArray(const QString& name) const;
    // The control that has the focus, when it is on this form.
    Control* ActiveControl() const;
    QObject* ActiveControlObject() const;

    // Raises Load once (Show does it first when needed).
    Q_INVOKABLE void LoadForm();
    bool IsLoaded() const noexcept { return mLoaded; }
    Q_INVOKABLE void Show(int modal = 0);
    Q_INVOKABLE void Hide() { hide(); }
    // 0 brings the form in front of the others (its MDI frame, when it is a child), 1 sends it
    // behind them.
    Q_INVOKABLE void ZOrder(int position = 0);
    // QueryUnload, then Unload; when neither handler cancels, every control gets Terminate and
    // the form hides. Returns whether the form was unloaded.
    Q_INVOKABLE bool UnloadForm(int unloadMode = vbFormCode);
    // Runs the Validate event of the active control; raises 380 when a handler cancels, so the
    // caller learns that a control refused to give up the focus.
    Q_INVOKABLE void ValidateControls();

    // Design mode: controls see UserMode False and property changes mark the form modified.
    bool DesignMode() const noexcept { return mDesignMode; }
    void SetDesignMode(bool design) { mDesignMode = design; }
    bool Modified() const noexcept { return mModified; }
    void SetModified(bool modified) { mModified = modified; }

    // Every form that exists, in creation order.
    static QList<Form*> Forms();

signals:
    void Load();
    void Activate();
    void Deactivate();
    void QueryUnload(short& Cancel, short& UnloadMode);
    void Unload(short& Cancel);
    void Resize();

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QString mName;
    QString mTag;
    StdFont* mFont;
    QWidget* mClient;
    OleColor mBackColor = vbButtonFace;
    OleColor mForeColor = vbButtonText;
    bool mMDIChild = false;
    int mHelpContextID = 0;
    bool mLoaded = false;
    bool mDesignMode = false;
    bool mModified = false;
    bool mUnloading = false;
};

}  // namespace korvex
