// Form files: a save keeps only what differs from the defaults, a load then save gives the same
// bytes, the control frame's calls come in their order, and a broken file fails with an error
// that names the file, the control and the property, leaving nothing behind.
#include "korvex/platform/host/CheckBox.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/HostLogging.h"
#include "korvex/platform/host/Frame.h"
#include "korvex/platform/host/Label.h"
#include "korvex/platform/host/Line.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QImage>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace korvex {
namespace {

// A user control that records the frame's calls and persists two properties.
class Gauge : public UserControl {
    Q_OBJECT
public:
    using UserControl::UserControl;
    void InitProperties() override
    {
        calls << "InitProperties";
        caption = Name();
    }
    void ReadProperties(PropertyBag& bag) override
    {
        calls << QStringLiteral("ReadProperties UserMode=%1").arg(UserMode());
        caption = CStr(bag.ReadProperty(QStringLiteral("Caption"), QStringLiteral("Gauge")));
        level = CInt(bag.ReadProperty(QStringLiteral("Level"), 50));
        font.CopyFrom(*qobject_cast<StdFont*>(bag.ReadProperty(QStringLiteral("Font"), Variant(Ambient()->Font())).Object()));
    }
    void WriteProperties(PropertyBag& bag) override
    {
        bag.WriteProperty(QStringLiteral("Caption"), caption, QStringLiteral("Gauge"));
        bag.WriteProperty(QStringLiteral("Level"), level, std::int16_t{50});
        bag.WriteProperty(QStringLiteral("Font"), Variant(&font), Variant(Ambient()->Font()));
    }
    void Resize() override { calls << "Resize"; }

    QStringList calls;
    QString caption;
    short level = 50;
    StdFont font;
};
KORVEX_REGISTER_CONTROL(Gauge);

// A band that may be docked, as title bands and side bars are.
class Band : public UserControl {
    Q_OBJECT
public:
    using UserControl::UserControl;
    bool Alignable() const override { return true; }
};
KORVEX_REGISTER_CONTROL(Band);

std::unique_ptr<Form> SampleForm()
{
    auto form = std::make_unique<Form>();
    form->SetName(QStringLiteral("frmSample"));
    form->SetCaption(QStringLiteral("Sample"));
    form->Font()->SetName(QStringLiteral("Tahoma"));
    form->SetWidth(6000);
    form->SetHeight(4000);
    auto* frame = FormFile::AddNewControl(*form, QStringLiteral("Frame"), QStringLiteral("fraDetails"));
    frame->Move(120, 120, 4000, 2000);
    auto* name = static_cast<TextBox*>(
        FormFile::AddNewControl(*form, QStringLiteral("TextBox"), QStringLiteral("txtName"), frame->ContainerWidget()));
    name->SetText(QStringLiteral("O'Neil; DROP TABLE"));
    name->SetMaxLength(30);
    name->SetDataField(QStringLiteral("Name"));
    name->Move(240, 360, 2400, 300);
    auto* gauge = static_cast<Gauge*>(FormFile::AddNewControl(*form, QStringLiteral("Gauge"), QStringLiteral("gauLevel")));
    gauge->level = 75;
    gauge->font.CopyFrom(*form->Font());
    gauge->font.SetBold(true);
    auto* line = static_cast<Line*>(FormFile::AddNewControl(*form, QStringLiteral("Line"), QStringLiteral("linRule")));
    line->SetPoints(0, 2400, 4000, 2400);
    return form;
}

TEST(FormFile, SaveKeepsOnlyNonDefaultsAndRoundTripsByteForByte)
{
    test::PinnedSettings pin;
    auto form = SampleForm();
    const QByteArray saved = FormFile::ToJson(*form);
    const QJsonObject root = QJsonDocument::fromJson(saved).object();
    const QJsonObject frame = root[QStringLiteral("Controls")][0].toObject();
    const QJsonObject textProps = frame[QStringLiteral("Controls")][0][QStringLiteral("Properties")].toObject();
    EXPECT_EQ(textProps.keys(), (QStringList{"DataField", "MaxLength", "Text"})) << "defaults are not stored";
    const QJsonObject gaugeProps = root[QStringLiteral("Controls")][1][QStringLiteral("Properties")].toObject();
    EXPECT_EQ(gaugeProps.keys(), (QStringList{"Caption", "Font", "Level"}))
        << "the caption set by InitProperties differs from the read default, so it is kept";
    EXPECT_FALSE(root[QStringLiteral("Controls")][2].toObject().contains(QStringLiteral("Extender")) &&
                 root[QStringLiteral("Controls")][2][QStringLiteral("Extender")].toObject().contains(QStringLiteral("Left")))
        << "a line keeps its end points, not a position";

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("frmSample.json"));
    FormFile::Save(*form, path);
    auto loaded = FormFile::Load(path);
    EXPECT_EQ(FormFile::ToJson(*loaded), saved);
    auto* gauge = qobject_cast<Gauge*>(loaded->FindControl(QStringLiteral("gauLevel")));
    ASSERT_NE(gauge, nullptr);
    EXPECT_EQ(gauge->level, 75);
    EXPECT_TRUE(gauge->font.Bold());
    EXPECT_EQ(gauge->calls, (QStringList{"ReadProperties UserMode=1", "Resize"}))
        << "a loaded control gets ReadProperties, then its size";
    auto* name = qobject_cast<TextBox*>(loaded->FindControl(QStringLiteral("txtName")));
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->Text(), "O'Neil; DROP TABLE");

    name->SetWidth(0);
    auto narrowed = FormFile::FromJson(FormFile::ToJson(*loaded), QStringLiteral("narrowed"));
    EXPECT_EQ(narrowed->FindControl(QStringLiteral("txtName"))->Width(), 0) << "a width of 0 is kept, not taken for none";
    EXPECT_EQ(name->ContainerObject(), loaded->FindControl(QStringLiteral("fraDetails")));
}

// Twips that do not come out as whole pixels are kept as given, and a property the control
// does not have is told, not dropped without a word.
TEST(FormFile, TwipsComeBackAsGivenAndUnknownPropertiesAreTold)
{
    test::PinnedSettings pin(RegionalSettings::EnglishUS(), 15, 15);
    const QByteArray json = R"({"Type": "Form", "Name": "frmOdd", "Controls": [{"Type": "TextBox", "Name": "txtCode",
        "Properties": {"DataFeild": "Code"}, "Extender": {"Left": 1001, "Top": 7, "Width": 1400, "Height": 301}}]})";
    static QStringList warnings;
    warnings.clear();
    const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (type == QtWarningMsg && QLatin1String(context.category) == QLatin1String("korvex.forms"))
            warnings << text;
    });
    auto form = FormFile::FromJson(json, QStringLiteral("frmOdd.json"));
    qInstallMessageHandler(previous);
    ASSERT_EQ(warnings.size(), 1);
    EXPECT_TRUE(warnings[0].contains(QStringLiteral("frmOdd.json")) && warnings[0].contains(QStringLiteral("txtCode")) &&
                warnings[0].contains(QStringLiteral("'DataFeild'")))
        << warnings[0].toStdString();
    Control* code = form->FindControl(QStringLiteral("txtCode"));
    EXPECT_EQ(code->Width(), 1400) << "93 pixels would read 1395";
    EXPECT_EQ(code->Left(), 1001);
    const QJsonObject extender =
        QJsonDocument::fromJson(FormFile::ToJson(*form)).object()[QStringLiteral("Controls")][0][QStringLiteral("Extender")].toObject();
    EXPECT_EQ(extender, (QJsonObject{{"Left", 1001}, {"Top", 7}, {"Width", 1400}, {"Height", 301}}));
    code->resize(50, 20);  // a layout, not the host, sized it
    EXPECT_EQ(code->Width(), 750);
}

TEST(FormFile, CheckBoxKeepsItsPicturesMaskAndCustomPointer)
{
    QTemporaryDir dir;
    const QString picture = dir.filePath(QStringLiteral("tick.png"));
    QImage(8, 8, QImage::Format_RGB32).save(picture);
    Form form;
    auto* check = static_cast<CheckBox*>(FormFile::AddNewControl(form, QStringLiteral("CheckBox"), QStringLiteral("chkTick")));
    check->SetPicture(picture);
    check->SetDownPicture(picture);
    check->SetMaskColor(RGB(0, 255, 0));
    check->SetUseMaskColor(true);
    check->SetOLEDropMode(vbOLEDropManual);
    check->SetWhatsThisHelpID(9);
    check->SetMousePointer(vbCustom);
    check->SetMouseIcon(picture);
    EXPECT_EQ(check->Box()->cursor().shape(), Qt::BitmapCursor) << "the custom pointer is the icon";
    EXPECT_EQ(test::ErrorOf([&] { check->SetDisabledPicture(dir.filePath(QStringLiteral("none.png"))); }), 481);
    EXPECT_EQ(check->DisabledPicture(), "");

    const QByteArray saved = FormFile::ToJson(form);
    const QJsonObject props = QJsonDocument::fromJson(saved).object()[QStringLiteral("Controls")][0][QStringLiteral("Properties")].toObject();
    EXPECT_EQ(props.keys(), (QStringList{"Caption", "DownPicture", "MaskColor", "MouseIcon", "MousePointer", "OLEDropMode",
                                         "Picture", "UseMaskColor", "WhatsThisHelpID"}));
    auto loaded = FormFile::FromJson(saved, QStringLiteral("check"));
    auto* again = qobject_cast<CheckBox*>(loaded->FindControl(QStringLiteral("chkTick")));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->MaskColor(), RGB(0, 255, 0));
    EXPECT_EQ(again->MouseIcon(), picture);
    EXPECT_EQ(FormFile::ToJson(*loaded), saved);

    again->SetHeight(0);
    EXPECT_EQ(again->height(), again->minimumHeight()) << "a check box is never lower than its box";
    EXPECT_GT(again->height(), 0);
}

TEST(FormFile, DesignModeLoadsWithUserModeFalse)
{
    auto form = SampleForm();
    auto designed = FormFile::FromJson(FormFile::ToJson(*form), QStringLiteral("sample"), true);
    auto* gauge = qobject_cast<Gauge*>(designed->FindControl(QStringLiteral("gauLevel")));
    ASSERT_NE(gauge, nullptr);
    EXPECT_EQ(gauge->calls.value(0), "ReadProperties UserMode=0");
    EXPECT_FALSE(designed->Modified());
    gauge->PropertyChanged(QStringLiteral("Level"));
    EXPECT_TRUE(designed->Modified()) << "a property change marks the form under design as modified";
}

TEST(FormFile, BrokenFilesNameTheFileControlAndPropertyAndLeaveNothing)
{
    struct Row {
        const char* json;
        const char* mustMention;
    };
    const Row rows[] = {
        {"{ \"Type\": \"Form\", ", "not valid JSON"},
        {"[]", "top level"},
        {R"({"Type":"Dialog","Name":"f"})", "unknown type 'Dialog'"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"Gizmo","Name":"gizA"}]})", "control 'gizA' has the unknown type 'Gizmo'"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"TextBox","Name":"txtA","Properties":{"MaxLength":"many"}}]})",
         "control 'txtA' (TextBox): property 'MaxLength'"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"TextBox","Name":"txtA","Extender":{"Width":"wide"}}]})",
         "control 'txtA' (TextBox): property 'Width'"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"Frame","Name":"fra","Controls":[{"Type":"Label","Name":"lbl","Properties":{"Alignment":7}}]}]})",
         "control 'lbl' (Label): property 'Alignment': Invalid property value"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"Label","Name":"lbl","Controls":[]}]})", "cannot hold controls"},
        {R"({"Type":"Form","Name":"f","Properties":{"Width":"wide"}})", "the form: property 'Width'"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"TextBox","Name":"txtA","Extender":{"Height":-30}}]})",
         "control 'txtA' (TextBox): property 'Height': Invalid property value"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"TextBox","Name":"t","Index":-1}]})", "\"Index\""},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"CheckBox","Name":"chk","Properties":{"MousePointer":42}}]})",
         "control 'chk' (CheckBox): property 'MousePointer': Invalid property value"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"CheckBox","Name":"chk","Properties":{"OLEDropMode":2}}]})",
         "control 'chk' (CheckBox): property 'OLEDropMode': Invalid property value"},
    };
    const qsizetype formsBefore = Form::Forms().size();
    for (const Row& r : rows) {
        try {
            FormFile::FromJson(QByteArray(r.json), QStringLiteral("broken.json"));
            ADD_FAILURE() << "loaded: " << r.json;
        } catch (const Error& e) {
            EXPECT_EQ(e.Number(), FormFileLoadError);
            EXPECT_TRUE(e.Description().startsWith(QStringLiteral("Form file 'broken.json': "))) << e.what();
            EXPECT_TRUE(e.Description().contains(QString::fromUtf8(r.mustMention))) << e.what();
        }
        EXPECT_EQ(Form::Forms().size(), formsBefore) << "nothing half-loaded remains after " << r.json;
    }
    EXPECT_THROW(FormFile::Load(QStringLiteral("/nonexistent/form.json")), Error);
}


// The form-file schema of docs/: run by the validator a programmer would use.
struct Validation {
    int exitCode = -1;
    QString output;
};

Validation ValidateFormFiles(const QStringList& files)
{
    QProcess python;
    python.setProcessChannelMode(QProcess::MergedChannels);
    python.start(QStringLiteral("/usr/bin/python3"),
                 QStringList{QStringLiteral(KORVEX_FORM_VALIDATOR), QStringLiteral(KORVEX_FORM_SCHEMA)} + files);
    if (!python.waitForFinished(60000))
        return {};
    return {python.exitStatus() == QProcess::NormalExit ? python.exitCode() : -1, QString::fromUtf8(python.readAll())};
}

// What the library writes, every control type the form files know included, and the demo's
// forms loaded and saved again, all fit the schema; what is not in the schema's shape the
// loader refuses too (or, for a misspelt extender name, tells), so the schema is no wish list.
TEST(FormFile, TheSchemaDescribesWhatIsWrittenAndTheLoaderRefusesWhatItRefuses)
{
    test::PinnedSettings pin;
    QTemporaryDir dir;
    QStringList files;
    auto form = SampleForm();
    FormFile::Save(*form, files.emplace_back(dir.filePath(QStringLiteral("frmSample.json"))));
    auto every = std::make_unique<Form>();
    every->SetName(QStringLiteral("frmEvery"));
    const QStringList types = ControlRegistry::TypeNames();
    ASSERT_GT(types.size(), 20) << "the library's controls register themselves";
    for (const QString& type : types)
        FormFile::AddNewControl(*every, type, QStringLiteral("ctl") + type);
    FormFile::Save(*every, files.emplace_back(dir.filePath(QStringLiteral("frmEvery.json"))));
    const QDir demoForms(QStringLiteral(KORVEX_SOURCE_DIR "/apps/demo/forms"));
    for (const QString& name : demoForms.entryList({QStringLiteral("*.json")})) {
        files << demoForms.filePath(name);
        FormFile::Save(*FormFile::Load(demoForms.filePath(name)), files.emplace_back(dir.filePath(name)));
    }
    const Validation good = ValidateFormFiles(files);
    EXPECT_EQ(good.exitCode, 0) << good.output.toStdString();

    struct Row {
        const char* json;
        const char* loaderMentions;
    };
    const Row rows[] = {
        {R"({"Type":"Form","Controls":[]})", nullptr},  // no name: the loader takes an empty one
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"TextBox"}]})", "has no name"},
        {R"({"Type":"Form","Name":"f","Controls":{"Type":"TextBox","Name":"t"}})", "\"Controls\" must be a list"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"TextBox","Name":"t","Index":-1}]})", "\"Index\""},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"TextBox","Name":"t","Extender":{"Lft":120}}]})", "has no property 'Lft'"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"Label","Name":"l","Properties":{"Caption":["a"]}}]})", "property 'Caption'"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"Label","Name":"l","Properties":{"Font":{"Font":{"Name":"DejaVu Sans"}}}}]})",
         "property 'Font': Invalid property value: a font has at least"},
        {R"({"Type":"Form","Name":"f","Properties":{"Font":{"Font":{"Name":"DejaVu Sans","Size":9,"Bold":true}}}})",
         "property 'Font': Invalid property value: a font has no \"Bold\""},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"Label","Name":"l","Properties":{"Caption":{"Date":1,"Font":{}}}}]})",
         "property 'Caption': Invalid property value: an object value has exactly one"},
        {R"({"Type":"Form","Name":"f","Controls":[{"Type":"Label","Name":"l","Properties":{"Caption":{"Currency":"1,5"}}}]})",
         "property 'Caption': Invalid property value: \"Currency\""},
    };
    int row = 0;
    for (const Row& r : rows) {
        const QString path = dir.filePath(QStringLiteral("bad%1.json").arg(++row));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(r.json);
        file.close();
        const Validation bad = ValidateFormFiles({path});
        EXPECT_EQ(bad.exitCode, 1) << "the schema accepts " << r.json << "\n" << bad.output.toStdString();
        EXPECT_TRUE(bad.output.startsWith(path)) << bad.output.toStdString();
        if (!r.loaderMentions)
            continue;
        static QStringList told;
        told.clear();
        const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext& context, const QString& text) {
            if (QLatin1String(context.category) == QLatin1String("korvex.forms"))
                told << text;
        });
        QString refused;
        try {
            FormFile::Load(path);
        } catch (const Error& e) {
            refused = e.Description();
        }
        qInstallMessageHandler(previous);
        const QString said = refused + told.join(QLatin1Char('\n'));
        EXPECT_TRUE(said.contains(QString::fromUtf8(r.loaderMentions))) << r.json << " -> " << said.toStdString();
    }
}

TEST(FormFile, DockedControlsTakeTheEdgesInCreationOrderAndFollowTheContainer)
{
    test::PinnedSettings pin;
    auto form = FormFile::FromJson(R"({"Type": "Form", "Name": "frmDock", "Properties": {"HelpContextID": 12}, "Controls": [
        {"Type": "Band", "Name": "bndTop", "Extender": {"Left": 300, "Top": 300, "Width": 600, "Height": 450, "Align": 1}},
        {"Type": "Band", "Name": "bndLeft", "Extender": {"Width": 900, "Height": 300, "Align": 3}},
        {"Type": "Band", "Name": "bndBottom", "Extender": {"Width": 600, "Height": 150, "Align": 2}},
        {"Type": "Band", "Name": "bndTop2", "Extender": {"Width": 600, "Height": 150, "Align": 1}}]})",
                                   QStringLiteral("dock.json"));
    EXPECT_EQ(form->HelpContextID(), 12);
    form->resize(400, 300);
    form->show();
    QApplication::processEvents();
    const QWidget* client = form->Client();
    const int w = client->width();
    const int h = client->height();
    const auto at = [&](const char* name) { return form->FindControl(QString::fromLatin1(name))->geometry(); };
    EXPECT_EQ(at("bndTop"), QRect(0, 0, w, 30)) << "the first docked along the top takes the whole width";
    EXPECT_EQ(at("bndLeft"), QRect(0, 30, 60, h - 30)) << "the next takes what the first left";
    EXPECT_EQ(at("bndBottom"), QRect(60, h - 10, w - 60, 10));
    EXPECT_EQ(at("bndTop2"), QRect(60, 30, w - 60, 10));

    form->FindControl(QStringLiteral("bndTop"))->SetVisible(false);
    EXPECT_EQ(at("bndLeft").top(), 0) << "a hidden band leaves its room";
    form->resize(500, 360);
    QApplication::processEvents();
    EXPECT_EQ(at("bndBottom").bottom(), client->height() - 1) << "the docked follow the container";
    EXPECT_EQ(at("bndTop2").width(), client->width() - 60);

    auto* text = static_cast<TextBox*>(FormFile::AddNewControl(*form, QStringLiteral("TextBox"), QStringLiteral("txtName")));
    EXPECT_EQ(test::ErrorOf([&] { text->SetAlign(vbAlignTop); }), vbErrInvalidPropertyValue) << "a text box cannot be docked";
    auto* band = form->FindControl(QStringLiteral("bndTop2"));
    EXPECT_EQ(test::ErrorOf([&] { band->SetAlign(5); }), vbErrInvalidPropertyValue);
    EXPECT_TRUE(FormFile::ToJson(*form).contains("\"Align\": 2")) << "the edge is kept with the form";
}

TEST(FormFile, LabelsTakeAnAmpersandAsAnAccessKeyMarker)
{
    Form form;
    auto* label = new Label(form.Client());
    struct Row {
        const char* caption;
        const char* shown;
    };
    const Row rows[] = {{"&Name:", "Name:"}, {"R&&D", "R&D"}, {"Save &", "Save &"}, {"a&&&b", "a&b"}, {"plain", "plain"}};
    for (const Row& r : rows) {
        label->SetCaption(QString::fromLatin1(r.caption));
        EXPECT_EQ(label->ShownText(), r.shown) << r.caption;
        EXPECT_EQ(label->Caption(), r.caption) << "the caption reads back as given";
    }
    label->SetUseMnemonic(false);
    EXPECT_EQ(label->ShownText(), "plain");
    label->SetCaption(QStringLiteral("R&&D"));
    EXPECT_EQ(label->ShownText(), "R&&D") << "without mnemonics every ampersand shows";
}

}  // namespace
}  // namespace korvex

#include "FormFileTest.moc"
