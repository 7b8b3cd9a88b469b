// ZqForm: attached to its form when its properties are read at run time; from then on the
// form's load and unload notifications come here first, and the message boxes take the form's
// caption and window.
#include "korvex/forms/ZqForm.h"

#include "korvex/core/LibMsgBox.h"
#include "korvex/core/Trace.h"
#include "korvex/core/clsPublic.h"
#include "korvex/localisation/LGS.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/HostLogging.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/LateBinding.h"

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqForm);

namespace {

const QString kLineBreak = QStringLiteral("\r\n");

bool IsStandardFace(const QString& name)
{
    static const QStringList faces = {QStringLiteral("Tahoma"), QStringLiteral("Ms Sans Serif"), QStringLiteral("Segoe UI")};
    return faces.contains(name, Qt::CaseInsensitive);
}

StdFont* FontOf(QObject* control)
{
    try {
        return qobject_cast<StdFont*>(GetProperty(control, QStringLiteral("Font")).Object());
    } catch (const Error&) {
        return nullptr;  // a control without a font is left out
    }
}

// Runs one step of ApplyFont; a step that fails is left out and the work goes on.
template <class F>
bool Try(F&& step)
{
    try {
        step();
        return true;
    } catch (const Error&) {
        return false;
    }
}

struct StandardMessage {
    int style;
    const char* key;
    const char* text;
    int buttons;
    bool substitutes;
};

// The standard messages; the changed-item-deleted message adds a second text, below.
constexpr StandardMessage kStandardMessages[] = {
    {ZqMsg_SaveChanges, "MsgSaveChanges", "Do you want to save these changes?", vbYesNoCancel | vbExclamation, false},
    {ZqMsg_CancelConfirm, "MsgCancelConfirm", "Are you sure you want to cancel these changes?", vbYesNo | vbExclamation, false},
    {ZqMsg_DeleteConfirm, "MsgDeleteConfirm", "Are you sure you want to delete this item?", vbYesNo | vbExclamation, false},
    {ZqMsg_SelectedItemDeletedElsewhere, "MsgItemSelDeleted", "Another user has deleted this item!", vbExclamation, false},
    {ZqMsg_ChangedItemDeletedElsewhere, "MsgItemChgDeleted", "Another user has deleted this item whilst you were editing it!",
     vbExclamation, false},
    {ZqMsg_Fail_Update, "MsgFailUpdate", "Unable to update %1.", vbExclamation, true},
    {ZqMsg_Fail_Delete, "MsgFailDelete", "Unable to delete item.", vbExclamation, true},
    {ZqMsg_Fail_Refresh, "MsgFailRefresh", "Unable to refresh item.", vbExclamation, true},
    {ZqMsg_Fail_List, "MsgFailDisplayList", "Unable to display %1 list.", vbExclamation, true},
    {ZqMsg_Fail_Print, "MsgFailPrint", "Unable to print %1.", vbExclamation, true},
};

}  // namespace

ZqForm::ZqForm(QWidget* parent) : UserControl(parent)
{
    SetInvisibleAtRunTime();
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    resize(32, 32);
    LoadDeclaredDefaults();
}

ZqForm::~ZqForm() = default;

// Properties ------------------------------------------------------------------------------------

void ZqForm::SetFontToApply(QObject* font)
{
    // Nothing is a reference like any other: ApplyFont then has no font to apply.
    auto* f = qobject_cast<StdFont*>(font);
    if (font && !f)
        Raise(vbErrTypeMismatch, QStringLiteral("ZqForm.FontToApply"));
    mFontToApply = f;
}

void ZqForm::SetAutoApplyFont(bool apply)
{
    Assign("AutoApplyFont", mAutoApplyFont, apply);
}

void ZqForm::SetAutoApplyFontSize(bool apply)
{
    Assign("AutoApplyFontSize", mAutoApplyFontSize, apply);
}

void ZqForm::SetFunctionId(int id)
{
    mFunctionId = id;
    if (mLoaded && mParentForm)
        mParentForm->SetHelpContextID(id);
    PropertyChanged("FunctionId");
}

const PropertyList& ZqForm::PersistedProperties() const
{
    static const PropertyList list = Declare<ZqForm>()
                                         .Property("FunctionId", &ZqForm::FunctionId, &ZqForm::SetFunctionId, 0)
                                         .Property("AutoApplyFont", &ZqForm::AutoApplyFont, &ZqForm::SetAutoApplyFont, false)
                                         .Property("AutoApplyFontSize", &ZqForm::AutoApplyFontSize,
                                                   &ZqForm::SetAutoApplyFontSize, false);
    return list;
}

// Attaching ---------------------------------------------------------------------------------------

void ZqForm::ReadProperties(PropertyBag& bag)
{
    UserControl::ReadProperties(bag);
    if (UserMode())
        Attach();
}

void ZqForm::Attach()
{
    // The form, also when the service sits inside a frame of the library (a container control).
    Form* form = ParentForm();
    if (!form) {
        qCWarning(lcForms).noquote() << QStringLiteral("ZqForm '%1' is not placed on a form; it serves none").arg(Name());
        return;
    }
    if (mParentForm == form)
        return;
    mFormName = form->Name();
    Trace(mFormName + QStringLiteral("\tControls Initialising"));
    mParentForm = form;
    connect(form, &Form::Load, this, GuardedSlot(this, [this] { FormLoad(); }));
    connect(form, &Form::QueryUnload, this, GuardedSlot(this, [this](short& cancel, short& unloadMode) {
                Trace(mFormName + QStringLiteral("\tForm_QueryUnload\t(C=%1 UM=%2)").arg(cancel).arg(unloadMode));
            }));
    connect(form, &Form::Unload, this, GuardedSlot(this, [this](short& cancel) {
                // Padded to the length of "Form_QueryUnload", so the lines read as columns.
                Trace(mFormName + QStringLiteral("\tForm_Unload     \t(C=%1)").arg(cancel));
            }));
    StdFont* defaultFont = clsPublic::Current() ? clsPublic::Current()->GetDefaultFont() : clsPublic::Global().GetDefaultFont();
    mOwnFontToApply = std::make_unique<StdFont>();
    mOwnFontToApply->SetBold(defaultFont->Bold());
    mOwnFontToApply->SetCharset(defaultFont->Charset());
    mOwnFontToApply->SetItalic(defaultFont->Italic());
    mOwnFontToApply->SetName(defaultFont->Name());
    mOwnFontToApply->SetSize(defaultFont->Size());
    mOwnFontToApply->SetStrikethrough(defaultFont->Strikethrough());
    mOwnFontToApply->SetUnderline(defaultFont->Underline());
    mOwnFontToApply->SetWeight(defaultFont->Weight());
    mFontToApply = mOwnFontToApply.get();
}

void ZqForm::FormLoad()
{
    mParentForm->SetHelpContextID(mFunctionId);
    mMDIChild = mParentForm->MDIChild();
    mLoaded = true;
    if (mAutoApplyFont)
        ApplyFont();
    Trace(mFormName + QStringLiteral("\tForm_Load"));
}

// Fonts -------------------------------------------------------------------------------------------

void ZqForm::ApplyFont()
{
    if (!mParentForm || !mFontToApply) {
        qCWarning(lcForms).noquote() << QStringLiteral("ZqForm '%1'.ApplyFont: %2; nothing applied")
                                            .arg(Name(), mParentForm ? QStringLiteral("FontToApply is Nothing")
                                                                     : QStringLiteral("not attached to a form"));
        return;
    }
    StdFont* formFont = mParentForm->Font();
    Try([&] { formFont->SetName(mFontToApply->Name()); });
    if (mAutoApplyFontSize)
        Try([&] { formFont->SetSize(mFontToApply->Size()); });
    for (Control* control : mParentForm->Controls())
        ApplyFontTo(control);
}

void ZqForm::ApplyFontTo(QObject* control)
{
    if (!FontOf(control))
        return;
    QObject* obj = control;
    bool applyFont = true;
    bool applyFontFace = true;
    bool applyFontSize = mAutoApplyFontSize;
    // A handler that fails skips this control, not the rest of the form.
    if (!Try([&] { emit ApplyFontToObject(obj, applyFont, applyFontFace, applyFontSize); }))
        return;
    StdFont* font = obj ? FontOf(obj) : nullptr;
    if (!applyFont || !font || !IsStandardFace(font->Name()))
        return;
    const StdFont& wanted = *mFontToApply;
    const bool sameStyle = (font->Size() == wanted.Size() || applyFontSize) && font->Bold() == wanted.Bold() &&
                           font->Italic() == wanted.Italic() && font->Strikethrough() == wanted.Strikethrough() &&
                           font->Underline() == wanted.Underline() && font->Weight() == wanted.Weight();
    if (sameStyle) {
        const bool shared = Try([&] { SetProperty(obj, QStringLiteral("Font"), Variant(static_cast<QObject*>(mParentForm->Font()))); });
        if (!shared) {
            Try([&] { font->SetName(wanted.Name()); });
            Try([&] { font->SetSize(wanted.Size()); });
        }
        return;
    }
    if (applyFontFace)
        Try([&] { font->SetName(wanted.Name()); });
    if (applyFontSize)
        Try([&] { font->SetSize(wanted.Size()); });
}

// Message boxes -----------------------------------------------------------------------------------

QString ZqForm::FormCaption() const
{
    return mParentForm ? Trim(mParentForm->Caption()) : QString();
}

int ZqForm::MsgBoxZq(QString& Prompt, int Buttons, const QString& Title, int ErrNo, const QString& ErrDesc)
{
    if (!mParentForm)
        qCWarning(lcForms).noquote() << QStringLiteral("ZqForm '%1'.MsgBoxZq: not attached to a form; the box has no owner").arg(Name());
    QString title = Title;
    if (Trim(title).isEmpty()) {
        const QString appName = LGS(QStringLiteral("LitAppNameLong"));
        title = appName.isEmpty() ? FormCaption() : appName + QStringLiteral(" - [") + FormCaption() + QStringLiteral("]");
    }
    AppendErrorDetails(Prompt, ErrNo, ErrDesc);
    QString traced = Prompt;
    traced.replace(kLineBreak, QStringLiteral("::"));
    Trace(mFormName + QStringLiteral("\tMsgBox\t\"") + title + QStringLiteral("\"\t\"") + traced + QStringLiteral("\""));
    if (mParentForm)
        mParentForm->ZOrder(0);
    return MessageBoxService::Current().Show(Prompt, Buttons, title, mParentForm);
}

int ZqForm::MsgBoxZq(const QString& Prompt, int Buttons, const QString& Title, int ErrNo, const QString& ErrDesc)
{
    QString prompt = Prompt;
    return MsgBoxZq(prompt, Buttons, Title, ErrNo, ErrDesc);
}

int ZqForm::MsgBoxZqStd(int ZqMsgBoxStyle, const QString& SubVar1, const QString& SubVar2, int ErrNo, const QString& ErrDesc)
{
    QString prompt;
    int buttons = vbOKOnly;
    for (const StandardMessage& m : kStandardMessages) {
        if (m.style != ZqMsgBoxStyle)
            continue;
        prompt = m.substitutes
                     ? LGS(QLatin1String(m.key), QLatin1String(m.text), tsNone, SubVar1, SubVar2)
                     : LGS(QLatin1String(m.key), QLatin1String(m.text));
        if (m.style == ZqMsg_ChangedItemDeletedElsewhere)
            prompt += kLineBreak + kLineBreak +
                      LGS(QStringLiteral("MsgItemChgDiscarded"), QStringLiteral("Your changes have been discarded."));
        buttons = m.buttons;
    }
    // Styles without a text of their own (no data entered, for the week) show only the details.
    return MsgBoxZq(prompt, buttons, QString(), ErrNo, ErrDesc);
}

}  // namespace korvex
