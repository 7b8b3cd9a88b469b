// The form service a host drops once on each of its forms. At run time it attaches itself to
// that form: it writes the form's load and unload trace lines and its help context, applies one
// common font to the controls in the standard faces, and shows the house-style message boxes
// (the application's name and the form's caption as title, error details in a fixed layout, a
// trace line for every box) with a table of standard messages in the current language.
#pragma once

#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/UserControl.h"

#include <QPointer>

#include <memory>

namespace korvex {

enum HelpFunctionIds : int { hftUnknown = 0, hftLogin = 1 };

enum ZqMsgBoxStyles : int {
    ZqMsg_SaveChanges = 0,
    ZqMsg_CancelConfirm = 1,
    ZqMsg_DeleteConfirm = 2,
    ZqMsg_SelectedItemDeletedElsewhere = 3,
    ZqMsg_ChangedItemDeletedElsewhere = 4,
    ZqMsg_NoDataEntered = 5,
    ZqMsg_NoDataEnteredForWeek = 6,
    ZqMsg_Fail_Update = 90,
    ZqMsg_Fail_Delete = 91,
    ZqMsg_Fail_Refresh = 92,
    ZqMsg_Fail_List = 93,
    ZqMsg_Fail_Print = 94,
};

class ZqForm : public UserControl {
    Q_OBJECT
    Q_PROPERTY(int FunctionId READ FunctionId WRITE SetFunctionId)
    Q_PROPERTY(bool AutoApplyFont READ AutoApplyFont WRITE SetAutoApplyFont)
    Q_PROPERTY(bool AutoApplyFontSize READ AutoApplyFontSize WRITE SetAutoApplyFontSize)
    Q_PROPERTY(QObject* FontToApply READ FontToApplyObject WRITE SetFontToApply)

public:
    explicit ZqForm(QWidget* parent = nullptr);
    ~ZqForm() override;

    // Gives the parent form's font the face (and with AutoApplyFontSize the size) of
    // FontToApply, then every control whose font is in a standard face: controls in the
    // standard style share the form's font, the others take the face (and size) alone. Never
    // fails: a step that cannot be done is left out.
    Q_INVOKABLE void ApplyFont();
    // The font ApplyFont gives; a copy of the library's default font once attached, until the
    // host sets another (kept by reference, not persisted).
    StdFont* FontToApply() const { return mFontToApply; }
    QObject* FontToApplyObject() const { return mFontToApply; }
    void SetFontToApply(QObject* font);

    // The house-style message box. `Prompt` holds the text as shown afterwards (with the error
    // details). Returns the button pressed (vbOK ... vbNo).
    Q_INVOKABLE int MsgBoxZq(QString& Prompt, int Buttons = 0, const QString& Title = {}, int ErrNo = 0,
                             const QString& ErrDesc = {});
    int MsgBoxZq(const QString& Prompt, int Buttons = 0, const QString& Title = {}, int ErrNo = 0,
                 const QString& ErrDesc = {});
    // One of the standard messages, in the current language.
    Q_INVOKABLE int MsgBoxZqStd(int ZqMsgBoxStyle, const QString& SubVar1 = {}, const QString& SubVar2 = {},
                                int ErrNo = 0, const QString& ErrDesc = {});

    bool AutoApplyFont() const noexcept { return mAutoApplyFont; }
    void SetAutoApplyFont(bool apply);
    bool AutoApplyFontSize() const noexcept { return mAutoApplyFontSize; }
    void SetAutoApplyFontSize(bool apply);
    int FunctionId() const noexcept { return mFunctionId; }
    // Reaches the form's help context at once when the form has loaded, else at its load.
    void SetFunctionId(int id);

    // The form attached to (nullptr before the properties were read at run time).
    Form* AttachedForm() const { return mParentForm; }
    bool FormLoaded() const noexcept { return mLoaded; }
    bool FormIsMDIChild() const noexcept { return mMDIChild; }

    void ReadProperties(PropertyBag& bag) override;

signals:
    // Raised by ApplyFont for each control with a font, before that control is touched. A
    // handler may clear ApplyFont to leave it alone, change what it takes, or replace obj.
    void ApplyFontToObject(QObject*& obj, bool& ApplyFont, bool& ApplyFontFace, bool& ApplyFontSize);

protected:
    const PropertyList& PersistedProperties() const override;

private:
    void Attach();
    void FormLoad();
    void ApplyFontTo(QObject* control);
    QString FormCaption() const;

    int mFunctionId{};
    bool mAutoApplyFont{};
    bool mAutoApplyFontSize{};
    QPointer<StdFont> mFontToApply;
    std::unique_ptr<StdFont> mOwnFontToApply;
    QPointer<Form> mParentForm;
    QString mFormName;
    bool mLoaded = false;
    bool mMDIChild = false;
};

}  // namespace korvex
