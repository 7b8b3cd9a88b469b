// Late binding: properties and methods by name ignoring case, values converted to the declared
// types, arguments by reference written back, type names and default members.
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"
#include "korvex/runtime/StdFont.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace korvex {
namespace {

class Probe : public QObject {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "TextBox")
    Q_CLASSINFO("DefaultProperty", "Text")
    Q_PROPERTY(QString Text READ Text WRITE SetText)
    Q_PROPERTY(short TabIndex READ TabIndex WRITE SetTabIndex)
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(korvex::Variant Value READ Value WRITE SetValue)
    Q_PROPERTY(QString Name READ Name)

public:
    QString Text() const { return mText; }
    void SetText(const QString& text) { mText = text; }
    short TabIndex() const { return mTabIndex; }
    void SetTabIndex(short index) { mTabIndex = index; }
    uint BackColor() const { return mBackColor; }
    void SetBackColor(uint color) { mBackColor = color; }
    Variant Value() const { return mValue; }
    void SetValue(const Variant& value) { mValue = value; }
    QString Name() const { return QStringLiteral("txtProbe"); }

    Q_INVOKABLE int Add(int a, int b) { return a + b; }
    Q_INVOKABLE void KeyPress(short& keyAscii) { keyAscii = keyAscii == 97 ? 65 : keyAscii; }
    Q_INVOKABLE void TraceFromKorvex(korvex::Variant& message, korvex::Variant& value)
    {
        lastTrace = CStr(message) + QLatin1Char('=') + CStr(value);
        message = Variant("seen");
    }
    Q_INVOKABLE void SetItem(int index, const QString& text) { items[index] = text; }
    Q_INVOKABLE void Fail() { Raise(vbErrInvalidPropertyValue, QStringLiteral("Probe.Fail")); }

    QString lastTrace;
    QMap<int, QString> items;

private:
    QString mText;
    short mTabIndex = 0;
    uint mBackColor = 0;
    Variant mValue;
};

class DerivedProbe : public Probe {
    Q_OBJECT
};

TEST(LateBinding, PropertiesByNameWithConversions)
{
    Probe p;
    SetProperty(&p, "text", 42);  // any case; a number written to a text property
    EXPECT_EQ(p.Text(), "42");
    SetProperty(&p, "TabIndex", Variant("7"));
    EXPECT_EQ(p.TabIndex(), 7);
    EXPECT_EQ(GetProperty(&p, "TABINDEX"), Variant(std::int16_t{7})) << "a short reads back as Integer";
    SetProperty(&p, "BackColor", Variant(static_cast<std::int32_t>(0x80000005)));
    EXPECT_EQ(p.BackColor(), 0x80000005u) << "a system colour held as a negative Long keeps its bits";
    EXPECT_EQ(GetProperty(&p, "BackColor"), Variant(static_cast<std::int32_t>(0x80000005)));
    SetProperty(&p, "Value", Null);
    EXPECT_TRUE(p.Value().IsNull()) << "Variant properties carry Null unchanged";

    EXPECT_EQ(test::ErrorOf([&] { SetProperty(&p, "TabIndex", Variant("x")); }), vbErrTypeMismatch);
    EXPECT_EQ(test::ErrorOf([&] { SetProperty(&p, "TabIndex", 40000); }), vbErrOverflow);
    EXPECT_EQ(test::ErrorOf([&] { SetProperty(&p, "Name", "other"); }), vbErrPropertyReadOnly);
    EXPECT_EQ(test::ErrorOf([&] { GetProperty(&p, "Locked"); }), vbErrObjectDoesntSupport);
    EXPECT_EQ(test::ErrorOf([] { GetProperty(nullptr, "Text"); }), vbErrObjectNotSet);
    EXPECT_EQ(p.dynamicPropertyNames().size(), 0) << "an unknown name must not create a dynamic property";
}

TEST(LateBinding, MethodsWithReferencesAndErrors)
{
    Probe p;
    QList<Variant> args{2, Variant("3")};
    EXPECT_EQ(CallByName(&p, "add", VbMethod, args), Variant(5));

    QList<Variant> key{Variant(std::int16_t{97})};
    CallByName(&p, "KeyPress", VbMethod, key);
    EXPECT_EQ(key[0], Variant(std::int16_t{65})) << "the callee's change comes back";

    QList<Variant> trace{Variant("Form_Load"), Variant(0.0f)};
    CallByName(&p, "TraceFromKorvex", VbMethod, trace);
    EXPECT_EQ(p.lastTrace, "Form_Load=0");
    EXPECT_EQ(trace[0], Variant("seen"));

    QList<Variant> item{3, Variant("three")};
    CallByName(&p, "Item", VbLet, item);  // indexed assignment goes to SetItem
    EXPECT_EQ(p.items.value(3), "three");

    QList<Variant> one{1};
    EXPECT_EQ(test::ErrorOf([&] { CallByName(&p, "Add", VbMethod, one); }), vbErrWrongNumberOfArguments);
    EXPECT_EQ(test::ErrorOf([&] { CallByName(&p, "Fail", VbMethod); }), vbErrInvalidPropertyValue)
        << "the callee's own error reaches the caller";
    EXPECT_TRUE(HasMember(&p, "keypress"));
    EXPECT_FALSE(HasMember(&p, "Locked"));
}

TEST(LateBinding, TypeNamesAndDefaultMembers)
{
    Probe p;
    DerivedProbe d;
    StdFont font;
    EXPECT_EQ(TypeNameOf(&p), "TextBox") << "declared type name";
    EXPECT_EQ(TypeNameOf(&d), "DerivedProbe") << "a subclass is a type of its own";
    EXPECT_EQ(TypeNameOf(&font), "StdFont") << "class name without namespace";
    EXPECT_EQ(TypeName(Variant(static_cast<QObject*>(&p))), "TextBox");

    p.SetText("12.5");
    const Variant object(static_cast<QObject*>(&p));
    EXPECT_EQ(CStr(object), "12.5") << "an object stands for its default member";
    EXPECT_EQ(CDbl(object), 12.5);
    EXPECT_TRUE(IsNumeric(object));
    QObject plain;
    EXPECT_EQ(test::ErrorOf([&] { CStr(Variant(&plain)); }), vbErrObjectDoesntSupport) << "no default member";
}

TEST(LateBinding, ObjectReferencesFollowTheObjectsLife)
{
    Variant weak;
    {
        QObject owned;
        weak = Variant(&owned);
        EXPECT_EQ(weak.Object(), &owned);
    }
    EXPECT_EQ(weak.Object(), nullptr) << "a reference to a destroyed object reads as Nothing";
    EXPECT_EQ(TypeName(weak), "Nothing");

    auto shared = std::make_shared<QObject>();
    QPointer<QObject> watch = shared.get();
    Variant strong(std::static_pointer_cast<QObject>(shared));
    shared.reset();
    EXPECT_FALSE(watch.isNull()) << "a shared reference keeps its object alive";
    strong = Variant();
    EXPECT_TRUE(watch.isNull());
}

}  // namespace
}  // namespace korvex

#include "LateBindingTest.moc"
