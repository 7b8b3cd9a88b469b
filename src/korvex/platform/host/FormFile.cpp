// Form files as JSON: reading builds the whole form before handing it over, so a fault anywhere
// deletes everything built so far; writing is canonical (sorted keys, defaults left out).
#include "korvex/platform/host/FormFile.h"

#include "korvex/platform/host/Control.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/HostLogging.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/platform/host/PersistedProperties.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

#include <algorithm>

namespace korvex {
namespace {

[[noreturn]] void Fail(const QString& source, const QString& detail)
{
    throw Error(FormFileLoadError, QStringLiteral("FormFile.Load"),
                QStringLiteral("Form file '%1': %2").arg(source, detail));
}

QJsonObject ObjectMember(const QJsonObject& o, const QString& key, const QString& source, const QString& owner)
{
    const QJsonValue v = o.value(key);
    if (v.isUndefined())
        return {};
    if (!v.isObject())
        Fail(source, QStringLiteral("%1: \"%2\" must be an object").arg(owner, key));
    return v.toObject();
}

// Direct child controls of a container widget, in creation order.
QList<Control*> ChildControls(QWidget* container)
{
    QList<Control*> children;
    for (QObject* child : container->children()) {
        if (auto* c = qobject_cast<Control*>(child))
            children.append(c);
    }
    std::stable_sort(children.begin(), children.end(),
                     [](const Control* a, const Control* b) { return a->CreationOrder() < b->CreationOrder(); });
    return children;
}

// The extender properties the host keeps for every control besides its position and size.
const PropertyList& ExtenderProperties()
{
    static const PropertyList list =
        Declare<Control>()
            .Property("TabIndex", &Control::TabIndex, &Control::SetTabIndex, std::int16_t{0})
            .Property("Visible", &Control::Visible, &Control::SetVisible, true)
            .Property("Enabled", &Control::Enabled, &Control::SetEnabled, true)
            .Property("TabStop", &Control::TabStop, &Control::SetTabStop, true)
            .Property("Tag", &Control::Tag, &Control::SetTag, QString())
            .Property("CausesValidation", &Control::CausesValidation, &Control::SetCausesValidation, true)
            .Property("ToolTipText", &Control::ToolTipText, &Control::SetToolTipText, QString())
            .Property("Align", &Control::Align, &Control::SetAlign, std::int16_t{vbAlignNone});
    return list;
}

void ReadExtender(Control& c, PropertyBag& bag)
{
    if (c.HasExtenderGeometry()) {
        // Read one by one, so that an error names the property that caused it.
        const int left = CLng(bag.ReadProperty(QStringLiteral("Left"), c.Left()));
        const int top = CLng(bag.ReadProperty(QStringLiteral("Top"), c.Top()));
        const int width = CLng(bag.ReadProperty(QStringLiteral("Width"), c.Width()));
        const int height = CLng(bag.ReadProperty(QStringLiteral("Height"), c.Height()));
        if (width < 0 || height < 0)
            Raise(vbErrInvalidPropertyValue);
        c.Move(left, top, width, height);
    }
    ReadDeclared(c, ExtenderProperties(), bag);
}

void WriteExtender(Control& c, PropertyBag& bag)
{
    if (c.HasExtenderGeometry()) {
        // Position and size are always kept, as the host keeps them.
        bag.WriteProperty(QStringLiteral("Left"), c.Left(), Variant());
        bag.WriteProperty(QStringLiteral("Top"), c.Top(), Variant());
        bag.WriteProperty(QStringLiteral("Width"), c.Width(), Variant());
        bag.WriteProperty(QStringLiteral("Height"), c.Height(), Variant());
    }
    WriteDeclared(c, ExtenderProperties(), bag);
}

void LoadControls(const QJsonValue& list, QWidget* container, const QString& source, const QString& owner)
{
    if (list.isUndefined())
        return;
    if (!list.isArray())
        Fail(source, QStringLiteral("%1: \"Controls\" must be a list").arg(owner));
    int position = 0;
    for (const QJsonValue& entry : list.toArray()) {
        ++position;
        if (!entry.isObject())
            Fail(source, QStringLiteral("%1: control entry %2 is not an object").arg(owner).arg(position));
        const QJsonObject o = entry.toObject();
        const QString name = o.value(QStringLiteral("Name")).toString();
        const QString type = o.value(QStringLiteral("Type")).toString();
        const QString label = QStringLiteral("control '%1'").arg(name.isEmpty() ? QStringLiteral("#%1").arg(position) : name);
        if (name.isEmpty())
            Fail(source, QStringLiteral("%1 has no name").arg(label));
        Control* control = ControlRegistry::Create(type, container);
        if (!control)
            Fail(source, QStringLiteral("%1 has the unknown type '%2'").arg(label, type));
        control->SetName(name);
        if (o.contains(QStringLiteral("Index"))) {
            const QJsonValue index = o.value(QStringLiteral("Index"));
            if (!index.isDouble() || index.toDouble() < 0 || index.toDouble() > 32767 ||
                index.toDouble() != static_cast<int>(index.toDouble()))
                Fail(source, QStringLiteral("%1: \"Index\" must be a whole number from 0 to 32767").arg(label));
            control->SetIndex(static_cast<short>(index.toInt()));
        }
        PropertyBag properties(ObjectMember(o, QStringLiteral("Properties"), source, label));
        PropertyBag extender(ObjectMember(o, QStringLiteral("Extender"), source, label));
        PropertyBag* reading = &properties;
        try {
            control->ReadProperties(properties);
            reading = &extender;
            ReadExtender(*control, extender);
        } catch (const Error& e) {
            Fail(source, QStringLiteral("%1 (%2): property '%3': %4").arg(label, type, reading->LastRead(), e.Description()));
        }
        // A property the control does not have (a typo such as "DataFeild") is dropped: say so.
        for (const QString& unknown : properties.Unread() + extender.Unread())
            qCWarning(lcForms).noquote() << QStringLiteral("Form file '%1': %2 (%3) has no property '%4'; it is ignored")
                                                .arg(source, label, type, unknown);
        if (o.contains(QStringLiteral("Controls")) && !control->IsContainer())
            Fail(source, QStringLiteral("%1 (%2) cannot hold controls").arg(label, type));
        LoadControls(o.value(QStringLiteral("Controls")), control->ContainerWidget(), source, label);
    }
}

QJsonArray SaveControls(QWidget* container)
{
    QJsonArray list;
    for (Control* c : ChildControls(container)) {
        QJsonObject o{{QStringLiteral("Type"), c->TypeName()}, {QStringLiteral("Name"), c->Name()}};
        if (c->Index() >= 0)
            o.insert(QStringLiteral("Index"), c->Index());
        PropertyBag properties;
        c->WriteProperties(properties);
        if (!properties.Values().isEmpty())
            o.insert(QStringLiteral("Properties"), properties.Values());
        PropertyBag extender;
        WriteExtender(*c, extender);
        if (!extender.Values().isEmpty())
            o.insert(QStringLiteral("Extender"), extender.Values());
        if (c->IsContainer()) {
            const QJsonArray children = SaveControls(c->ContainerWidget());
            if (!children.isEmpty())
                o.insert(QStringLiteral("Controls"), children);
        }
        list.append(o);
    }
    return list;
}

}  // namespace

std::unique_ptr<Form> FormFile::Load(const QString& path, bool designMode)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        Fail(path, QStringLiteral("cannot be read: %1").arg(file.errorString()));
    return FromJson(file.readAll(), path, designMode);
}

std::unique_ptr<Form> FormFile::FromJson(const QByteArray& json, const QString& source, bool designMode)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        Fail(source, QStringLiteral("not valid JSON: %1 at offset %2").arg(parseError.errorString()).arg(parseError.offset));
    if (!document.isObject())
        Fail(source, QStringLiteral("not valid JSON: the top level must be an object"));
    const QJsonObject root = document.object();
    const QString type = root.value(QStringLiteral("Type")).toString();
    std::unique_ptr<Form> form;
    if (type == QLatin1String("Form"))
        form = std::make_unique<Form>();
    else if (type == QLatin1String("MDIForm"))
        form = std::make_unique<MDIForm>();
    else
        Fail(source, QStringLiteral("the form has the unknown type '%1' (Form or MDIForm)").arg(type));
    form->SetName(root.value(QStringLiteral("Name")).toString());
    form->SetDesignMode(designMode);
    PropertyBag bag(ObjectMember(root, QStringLiteral("Properties"), source, QStringLiteral("the form")));
    try {
        form->SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), form->Name())));
        const Variant font = bag.ReadProperty(QStringLiteral("Font"), Variant(static_cast<QObject*>(form->Font())));
        if (auto* f = qobject_cast<StdFont*>(font.Object()); f && f != form->Font())
            form->Font()->CopyFrom(*f);
        form->SetBackColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(vbButtonFace)))));
        form->SetForeColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(vbButtonText)))));
        form->SetTag(CStr(bag.ReadProperty(QStringLiteral("Tag"), QString())));
        form->SetMDIChild(CBool(bag.ReadProperty(QStringLiteral("MDIChild"), false)));
        form->SetHelpContextID(CLng(bag.ReadProperty(QStringLiteral("HelpContextID"), 0)));
        form->SetLeft(CLng(bag.ReadProperty(QStringLiteral("Left"), 0)));
        form->SetTop(CLng(bag.ReadProperty(QStringLiteral("Top"), 0)));
        form->SetWidth(CLng(bag.ReadProperty(QStringLiteral("Width"), 4800)));
        form->SetHeight(CLng(bag.ReadProperty(QStringLiteral("Height"), 3600)));
    } catch (const Error& e) {
        Fail(source, QStringLiteral("the form: property '%1': %2").arg(bag.LastRead(), e.Description()));
    }
    LoadControls(root.value(QStringLiteral("Controls")), form->Client(), source, QStringLiteral("the form"));
    form->SetModified(false);
    return form;
}

QByteArray FormFile::ToJson(Form& form)
{
    PropertyBag bag;
    StdFont defaultFont;
    bag.WriteProperty(QStringLiteral("Caption"), form.Caption(), form.Name());
    bag.WriteProperty(QStringLiteral("Font"), Variant(static_cast<QObject*>(form.Font())), Variant(&defaultFont));
    bag.WriteProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(form.BackColor()), static_cast<std::int32_t>(vbButtonFace));
    bag.WriteProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(form.ForeColor()), static_cast<std::int32_t>(vbButtonText));
    bag.WriteProperty(QStringLiteral("Tag"), form.Tag(), QString());
    bag.WriteProperty(QStringLiteral("MDIChild"), form.MDIChild(), false);
    bag.WriteProperty(QStringLiteral("HelpContextID"), form.HelpContextID(), 0);
    bag.WriteProperty(QStringLiteral("Left"), form.Left(), 0);
    bag.WriteProperty(QStringLiteral("Top"), form.Top(), 0);
    bag.WriteProperty(QStringLiteral("Width"), form.Width(), Variant());
    bag.WriteProperty(QStringLiteral("Height"), form.Height(), Variant());
    QJsonObject root{{QStringLiteral("Type"), qobject_cast<MDIForm*>(&form) ? QStringLiteral("MDIForm") : QStringLiteral("Form")},
                     {QStringLiteral("Name"), form.Name()},
                     {QStringLiteral("Properties"), bag.Values()}};
    const QJsonArray controls = SaveControls(form.Client());
    if (!controls.isEmpty())
        root.insert(QStringLiteral("Controls"), controls);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

void FormFile::Save(Form& form, const QString& path)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(ToJson(form)) < 0 || !file.commit())
        throw Error(vbErrPathFileAccess, QStringLiteral("FormFile.Save"),
                    QStringLiteral("Cannot write the form file '%1': %2").arg(path, file.errorString()));
    form.SetModified(false);
}

Control* FormFile::AddNewControl(Form& form, const QString& typeName, const QString& name, QWidget* container)
{
    Control* control = ControlRegistry::Create(typeName, container ? container : form.Client());
    if (!control)
        throw Error(vbErrInvalidProcedureCall, QStringLiteral("FormFile.AddNewControl"),
                    QStringLiteral("Unknown control type '%1'").arg(typeName));
    control->SetName(name);
    control->InitProperties();
    control->show();
    form.SetModified(true);
    return control;
}

Control* LoadControlArrayElement(Control* element, short index)
{
    if (!element || element->Index() < 0)
        Raise(vbErrObjectNotAnArray, QStringLiteral("Load"));
    QWidget* container = element->parentWidget();
    for (Control* sibling : ChildControls(container)) {
        if (sibling->Name().compare(element->Name(), Qt::CaseInsensitive) == 0 && sibling->Index() == index)
            Raise(vbErrObjectAlreadyLoaded, QStringLiteral("Load"));
    }
    Control* copy = ControlRegistry::Create(element->TypeName(), container);
    if (!copy)
        Raise(vbErrInvalidProcedureCall, QStringLiteral("Load"));
    copy->SetName(element->Name());
    copy->SetIndex(index);
    copy->SetLoadedAtRunTime(true);
    PropertyBag properties;
    element->WriteProperties(properties);
    copy->ReadProperties(properties);
    PropertyBag extender;
    WriteExtender(*element, extender);
    ReadExtender(*copy, extender);
    copy->SetVisible(false);  // a loaded element stays hidden until the program shows it
    return copy;
}

void UnloadControlArrayElement(Control* element)
{
    if (!element || element->Index() < 0)
        Raise(vbErrObjectNotAnArray, QStringLiteral("Unload"));
    if (!element->LoadedAtRunTime())
        Raise(vbErrCantUnloadDesignControl, QStringLiteral("Unload"));
    element->Terminate();
    element->hide();
    element->deleteLater();
    element->setParent(nullptr);
}

}  // namespace korvex
