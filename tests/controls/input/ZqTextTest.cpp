// ZqText as a host uses it: the KeyPress method typing without the focus, the placeholder in
// each state of text, focus and Enabled (colours pinned, checked on the inner box and on the
// rendered pixels), the inner box's events passed on with arguments the host may change, and
// persistence that stores only what differs from the defaults.
#include "korvex/controls/input/ZqText.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/LateBinding.h"
#include "tests/controls/input/InputTestSupport.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace korvex {
namespace {

using ZqTextTest = test::InputControlTest;

QLineEdit* LineOf(ZqText& box)
{
    return box.InnerBox()->LineEdit();
}

// Pixels of the rendered control that are clearly the pinned grey-text or window-text colour.
struct InkCount {
    int grey = 0;
    int text = 0;
};

InkCount CountInk(QWidget& widget)
{
    const QImage image = widget.grab().toImage();
    InkCount ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.red() > 150 && c.green() < 90 && c.blue() < 90)
                ++ink.grey;
            if (c.blue() > 120 && c.red() < 90 && c.green() < 90)
                ++ink.text;
        }
    }
    return ink;
}

TEST_F(ZqTextTest, KeyPressMethodTypesIntoTheStoredTextWithOneChange)
{
    struct Row {
        const char* start;
        bool multiLine;
        short ascii;
        QString expected;
        int changes;
        const char* why;
    };
    const Row rows[] = {
        {"", false, 8, "", 0, "backspace on an empty text changes nothing"},
        {"ab", false, 8, "a", 1, "backspace removes the last character"},
        {"ab", false, 13, "ab", 0, "carriage return in a single-line box is ignored"},
        {"ab", false, 10, "ab", 0, "line feed in a single-line box is ignored"},
        {"ab", true, 13, "ab\r\n", 1, "carriage return in a multi-line box adds CR LF"},
        {"ab", true, 10, "ab\r\n", 1, "line feed in a multi-line box adds CR LF"},
        {"ab", false, 65, "abA", 1, "a plain character is appended"},
        {"", false, 0xE9, QStringLiteral(u"\u00e9"), 1, "codes are read in the Windows code page"},
        {"x", false, 0x80, QStringLiteral(u"x\u20ac"), 1, "0x80 is the euro sign there"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        ZqText box(form.Client(), row.multiLine);
        box.SetText(QString::fromLatin1(row.start));
        box.SetLocked(true);   // the method ignores the lock,
        box.SetMaxLength(2);   // the length limit
        box.SetSelStart(0);    // and the selection
        QSignalSpy changes(&box, &ZqText::Change);
        box.KeyPress(row.ascii);
        EXPECT_EQ(box.Text(), row.expected);
        EXPECT_EQ(changes.count(), row.changes);
        EXPECT_EQ(box.InnerBox()->Text(), row.multiLine ? row.expected : row.expected.left(2))
            << "the inner box shows the text (a single-line box within its limit)";
    }

    ZqText box(form.Client());
    box.SetText(QStringLiteral("ab"));
    QSignalSpy changes(&box, &ZqText::Change);
    EXPECT_EQ(test::ErrorOf([&] { box.KeyPress(256); }), vbErrInvalidProcedureCall);
    EXPECT_EQ(test::ErrorOf([&] { box.KeyPress(-1); }), vbErrInvalidProcedureCall);
    QList<Variant> args{Variant(std::int16_t{'c'})};
    CallByName(&box, QStringLiteral("KeyPress"), VbMethod, args);
    EXPECT_EQ(box.Text(), "abc") << "late binding reaches the method, not the event";
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(ZqTextTest, PlaceholderShowsInGreyOnlyWhileEmptyEnabledAndUnfocused)
{
    auto* other = new TextBox(form.Client());  // first in the tab order: it takes the first focus
    other->Move(150, 900, 3000, 360);
    auto* box = new ZqText(form.Client());
    box->Move(150, 150, 3000, 360);
    box->SetDefaultText(QStringLiteral("Search customers"));
    ShowActive();
    WaitForFocus(other->LineEdit());
    QSignalSpy changes(box, &ZqText::Change);

    auto expectPlaceholder = [&](bool shown) {
        EXPECT_EQ(box->Text(), "") << "the placeholder is never the text";
        EXPECT_EQ(LineOf(*box)->text(), shown ? "Search customers" : "");
        EXPECT_EQ(box->ForeColor(), shown ? vbGrayText : vbWindowText);
        const QColor textColour = LineOf(*box)->palette().color(QPalette::Active, QPalette::Text);
        EXPECT_EQ(textColour, ToQColor(shown ? test::PinnedGrayText : test::PinnedWindowText));
    };
    expectPlaceholder(true);
    const InkCount unfocused = CountInk(*box);
    EXPECT_GT(unfocused.grey, 20) << "the placeholder is drawn in grey text";
    EXPECT_EQ(unfocused.text, 0);

    box->SetForeColor(RGB(0, 160, 0));
    EXPECT_EQ(box->ForeColor(), RGB(0, 160, 0));
    box->SetFocus();
    WaitForFocus(LineOf(*box));
    expectPlaceholder(false);
    EXPECT_EQ(changes.count(), 0) << "showing and hiding the placeholder is no change";

    QTest::keyClicks(LineOf(*box), QStringLiteral("Ada"));
    EXPECT_EQ(box->Text(), "Ada");
    EXPECT_EQ(changes.count(), 3);
    other->SetFocus();
    WaitForFocus(other->LineEdit());
    EXPECT_EQ(LineOf(*box)->text(), "Ada") << "a text hides the placeholder without the focus too";
    const InkCount typed = CountInk(*box);
    EXPECT_GT(typed.text, 20);
    EXPECT_EQ(typed.grey, 0);

    box->SetText(QString());
    expectPlaceholder(true);
    box->SetEnabled(false);
    EXPECT_EQ(LineOf(*box)->text(), "Search customers") << "Enabled alone does not refresh the display";
    box->SetDefaultText(QStringLiteral("Search customers"));
    EXPECT_EQ(LineOf(*box)->text(), "") << "a disabled box shows no placeholder after the next refresh";
    box->SetEnabled(true);
    box->SetDefaultText(QString());
    EXPECT_EQ(LineOf(*box)->text(), "");
    EXPECT_EQ(box->ForeColor(), vbWindowText);
}

TEST_F(ZqTextTest, InnerEventsArePassedOnInOrderWithArgumentsTheHostMayChange)
{
    auto* box = new ZqText(form.Client());
    box->Move(0, 0, 3000, 360);
    ShowActive();
    box->SetFocus();
    WaitForFocus(LineOf(*box));
    QStringList events;
    QObject::connect(box, &Control::KeyDown, [&](short& code, short&) { events << QStringLiteral("KeyDown %1").arg(code); });
    QObject::connect(box, &Control::KeyPress, [&](short& ascii) {
        events << QStringLiteral("KeyPress %1").arg(ascii);
        if (ascii == 'x')
            ascii = 0;
        else if (ascii == 'a')
            ascii = 'A';
    });
    QObject::connect(box, &Control::KeyUp, [&](short& code, short&) { events << QStringLiteral("KeyUp %1").arg(code); });
    QObject::connect(box, &ZqText::Change, [&] { events << QStringLiteral("Change"); });
    QObject::connect(box, &Control::Click, [&] { events << QStringLiteral("Click"); });
    QObject::connect(box, &Control::DblClick, [&] { events << QStringLiteral("DblClick"); });
    QObject::connect(box, &Control::MouseDown, [&](short& button, short&, float& x, float& y) {
        events << QStringLiteral("MouseDown %1 %2,%3").arg(button).arg(x).arg(y);
    });
    QObject::connect(box, &Control::MouseUp, [&](short& button, short&, float&, float&) {
        events << QStringLiteral("MouseUp %1").arg(button);
    });

    QTest::keyClick(LineOf(*box), Qt::Key_X);
    QTest::keyClick(LineOf(*box), Qt::Key_A);
    EXPECT_EQ(box->Text(), "A") << "KeyAscii 0 swallows the key, a changed KeyAscii types the new one";
    QTest::mouseClick(LineOf(*box), Qt::LeftButton, {}, QPoint(4, 6));
    QTest::mouseDClick(LineOf(*box), Qt::LeftButton, {}, QPoint(4, 6));
    EXPECT_EQ(events.mid(0, 8), (QStringList{"KeyDown 88", "KeyPress 120", "KeyUp 88", "KeyDown 65", "KeyPress 97",
                                             "Change", "KeyUp 65", "MouseDown 1 60,90"}));
    EXPECT_EQ(events.mid(8, 2), (QStringList{"MouseUp 1", "Click"}));
    EXPECT_TRUE(events.contains(QStringLiteral("DblClick")));
}

TEST_F(ZqTextTest, ValidationFollowsTheControlTheFormHoldsNotItsInnerBox)
{
    auto* guarded = new TextBox(form.Client());
    auto* box = new ZqText(form.Client());
    box->Move(0, 600, 3000, 360);
    ShowActive();
    int validations = 0;
    QObject::connect(guarded, &Control::Validate, [&](bool&) { ++validations; });
    guarded->SetFocus();
    WaitForFocus(guarded->LineEdit());
    box->SetCausesValidation(false);
    box->SetFocus();
    WaitForFocus(LineOf(*box));
    EXPECT_EQ(validations, 0) << "the ZqText's own CausesValidation decides, not its inner box's";
    EXPECT_EQ(form.ActiveControl(), box);

    bool refuse = true;
    QObject::connect(box, &Control::Validate, [&](bool& cancel) { cancel = refuse; });
    EXPECT_THROW(form.ValidateControls(), Error) << "the host's Validate handler on the ZqText is asked";
    guarded->SetFocus();
    EXPECT_TRUE(QTest::qWaitFor([&] { return LineOf(*box)->hasFocus(); }, 1000)) << "a refused Validate keeps the focus";
    refuse = false;
}

TEST_F(ZqTextTest, PersistenceStoresOnlyWhatDiffersAndRefusesBadValues)
{
    QTemporaryDir dir;
    const QString icon = dir.filePath(QStringLiteral("pointer.png"));
    QImage(16, 16, QImage::Format_RGB32).save(icon);

    auto* placeholder = new ZqText(form.Client());
    placeholder->SetText(QString());
    placeholder->SetDefaultText(QStringLiteral("Type to filter"));
    PropertyBag shown;
    placeholder->WriteProperties(shown);
    EXPECT_EQ(shown.Values().keys(), (QStringList{"DefaultText", "ForeColor"}))
        << "a box showing its placeholder stores no text, and the fore colour as the inner box holds it";
    EXPECT_EQ(shown.Values().value("ForeColor").toInt(), static_cast<std::int32_t>(vbGrayText));
    EXPECT_EQ(shown.Values().value("DefaultText").toString(), "Type to filter");

    ZqText original(form.Client(), true);
    original.SetBackColor(RGB(1, 2, 3));
    original.SetBorderStyle(0);
    original.SetAlignment(2);
    original.SetLocked(true);
    original.SetMaxLength(40);
    original.SetPasswordChar(QStringLiteral("*"));
    original.SetText(QStringLiteral("line one\r\nline two"));
    original.SetRightToLeft(true);
    original.SetMousePointer(vbCustom);
    original.SetMouseIcon(icon);
    original.SetDefaultText(QStringLiteral("Notes"));
    original.SetEnabled(false);
    PropertyBag bag;
    original.WriteProperties(bag);
    QStringList keys = bag.Values().keys();
    keys.sort();
    EXPECT_EQ(keys, (QStringList{"Alignment", "BackColor", "BorderStyle", "DefaultText", "Enabled", "Locked", "MaxLength",
                                 "MouseIcon", "MousePointer", "MultiLine", "PasswordChar", "RightToLeft", "Text"}))
        << "a multi-line box says so; a single-line one saves only its properties (above)";

    ZqText loaded(form.Client());
    QSignalSpy notices(&loaded, &UserControl::PropertyChangedNotification);
    PropertyBag reading(bag.Values());
    loaded.ReadProperties(reading);
    EXPECT_TRUE(loaded.MultiLine()) << "the inner box is rebuilt multi-line before anything else";
    EXPECT_EQ(loaded.ScrollBars(), 2);
    EXPECT_EQ(loaded.Text(), "line one\r\nline two");
    EXPECT_EQ(loaded.DefaultText(), "Notes");
    EXPECT_EQ(loaded.MouseIcon(), icon);
    EXPECT_EQ(loaded.PasswordChar(), "*");
    EXPECT_FALSE(loaded.InnerBox()->Enabled());
    PropertyBag again;
    loaded.WriteProperties(again);
    EXPECT_EQ(again.Values(), bag.Values()) << "a loaded control saves back the same keys";
    QStringList order;
    for (const QList<QVariant>& n : notices)
        order << n.at(0).toString();
    order.removeDuplicates();
    EXPECT_EQ(order, (QStringList{"BackColor", "ForeColor", "Enabled", "Font", "BorderStyle", "Alignment", "Appearance", "Locked",
                                  "MaxLength", "PasswordChar", "Text", "RightToLeft", "MousePointer", "MouseIcon", "DefaultText"}))
        << "every property is read in its order, and every write is told to the container, changed or not";

    ZqText box(form.Client());
    box.SetText(QStringLiteral("kept"));
    PropertyBag before;
    box.WriteProperties(before);
    QSignalSpy changed(&box, &UserControl::PropertyChangedNotification);
    const std::pair<std::function<void()>, int> refused[] = {
        {[&] { box.SetBorderStyle(2); }, vbErrInvalidPropertyValue},
        {[&] { box.SetAlignment(3); }, vbErrInvalidPropertyValue},
        {[&] { box.SetAppearance(2); }, vbErrInvalidPropertyValue},
        {[&] { box.SetMaxLength(-1); }, vbErrInvalidPropertyValue},
        {[&] { box.SetPasswordChar(QStringLiteral("**")); }, vbErrInvalidPropertyValue},
        {[&] { box.SetMousePointer(42); }, vbErrInvalidPropertyValue},
        {[&] { box.SetFontObject(nullptr); }, vbErrInvalidPropertyValue},
        {[&] { box.SetMouseIcon(dir.filePath(QStringLiteral("missing.ico"))); }, 481},
    };
    for (const auto& [call, error] : refused)
        EXPECT_EQ(test::ErrorOf(call), error);
    PropertyBag after;
    box.WriteProperties(after);
    EXPECT_EQ(after.Values(), before.Values()) << "a refused value changes nothing";
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(ZqTextTest, SelectionWritesActOnTheInnerBoxAndNotifyTheContainer)
{
    ZqText box(form.Client());
    box.SetText(QStringLiteral("invoice 2024"));
    QSignalSpy notices(&box, &UserControl::PropertyChangedNotification);
    QSignalSpy changes(&box, &ZqText::Change);
    SetProperty(&box, QStringLiteral("SelStart"), std::int32_t{8});
    SetProperty(&box, QStringLiteral("SelLength"), std::int32_t{4});
    EXPECT_EQ(box.SelText(), "2024");
    SetProperty(&box, QStringLiteral("SelText"), QStringLiteral("2025"));
    EXPECT_EQ(box.Text(), "invoice 2025") << "the stored text follows the inner box";
    EXPECT_EQ(changes.count(), 1);
    QStringList names;
    for (const QList<QVariant>& n : notices)
        names << n.at(0).toString();
    EXPECT_EQ(names, (QStringList{"SelStart", "SelLength", "SelText"}));
}

TEST_F(ZqTextTest, NewControlIsNamedRegisteredAndFillsItsArea)
{
    auto* created = ControlRegistry::Create(QStringLiteral("ZqText"), form.Client());
    ASSERT_NE(qobject_cast<ZqText*>(created), nullptr);
    auto* box = static_cast<ZqText*>(created);
    box->SetName(QStringLiteral("zqtxtFilter"));
    QSignalSpy changes(box, &ZqText::Change);
    box->InitProperties();
    EXPECT_EQ(box->Text(), "zqtxtFilter") << "a new control shows its own name";
    EXPECT_EQ(changes.count(), 1);

    box->Move(300, 300, 2400, 450);
    EXPECT_EQ(box->InnerBox()->geometry(), QRect(0, 0, 160, 30));
    const double inner = CDbl(GetProperty(box, QStringLiteral("hWndTextBox")));
    const double outer = CDbl(GetProperty(box, QStringLiteral("hwnd")));
    EXPECT_EQ(inner, static_cast<double>(box->InnerBox()->hWnd()));
    EXPECT_EQ(outer, static_cast<double>(box->hWnd()));
    EXPECT_NE(inner, outer) << "the box and the control are two windows";
    EXPECT_EQ(box->InnerBox()->Name(), "txt");
    EXPECT_EQ(form.Controls(), QList<Control*>{box}) << "the inner box is not a control of the form";
}

}  // namespace
}  // namespace korvex
