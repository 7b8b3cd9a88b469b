// Language strings over real files: the demo application's language file in all five
// languages, the fallbacks between columns, lookups with duplicate keys, suffixes and
// substitutions, first use through the environment, bad files, and the date texts.
#include "korvex/core/SharedContext.h"
#include "korvex/localisation/LGS.h"
#include "korvex/localisation/clsLanguage.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/LateBinding.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"
#include "tests/support/RaisedError.h"
#include "tests/support/TestFiles.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace korvex {
namespace {

using test::RaisedError;

const QString DemoLanguageFile = QStringLiteral(KORVEX_DEMO_LANGUAGE_FILE);

// Stands in for the host's MDI form and keeps the trace lines it is sent.
class TraceRecorder : public QObject {
    Q_OBJECT
public:
    Q_INVOKABLE void TraceFromKorvex(korvex::Variant& message, korvex::Variant& value)
    {
        Q_UNUSED(value);
        lines.append(message.As<QString>() ? *message.As<QString>() : QString());
    }
    QStringList lines;
};

// Each test starts with no current language and neither environment variable set.
class Language : public ::testing::Test {
protected:
    void SetUp() override { Reset(); }
    void TearDown() override { Reset(); }
    static void Reset()
    {
        SharedContext::ForThisThread().CurrentLanguage.reset();
        SharedContext::ForThisThread().ParentMDIForm = nullptr;
        qunsetenv("LanguageFile");
        qunsetenv("Language");
    }

    std::shared_ptr<clsLanguage> Load(int language, const QByteArray& fileBytes)
    {
        auto lang = clsLanguage::Create();
        lang->LanguageInitialise(language, mFolder.Write(QStringLiteral("test.lng"), fileBytes));
        return lang;
    }

    test::TestFolder mFolder;
};

TEST_F(Language, DemoFileHoldsEveryLibraryTextInAllFiveLanguages)
{
    struct Row {
        const char* key;
        const char* englishDefault;  // what the library passes as default text
    };
    const Row rows[] = {
        {"LitAppNameLong", nullptr},
        {"MsgFieldReqd", "%1 is required"},
        {"MsgSaveChanges", "Do you want to save these changes?"},
        {"MsgCancelConfirm", "Are you sure you want to cancel these changes?"},
        {"MsgDeleteConfirm", "Are you sure you want to delete this item?"},
        {"MsgItemSelDeleted", "Another user has deleted this item!"},
        {"MsgItemChgDeleted", "Another user has deleted this item whilst you were editing it!"},
        {"MsgItemChgDiscarded", "Your changes have been discarded."},
        {"MsgFailUpdate", "Unable to update %1."},
        {"MsgFailDelete", "Unable to delete item."},
        {"MsgFailRefresh", "Unable to refresh item."},
        {"MsgFailDisplayList", "Unable to display %1 list."},
        {"MsgFailPrint", "Unable to print %1."},
        {"zqdd0001", "Sorted By"},
        {"zqdd0002", "Type to filter results"},
    };
    auto lang = clsLanguage::Create();
    lang->LanguageInitialise(langEnglish, DemoLanguageFile);
    const QString missing = QStringLiteral("<missing>");
    for (const Row& r : rows) {
        const QString key = QString::fromLatin1(r.key);
        for (int code = langEnglish; code <= langDutch; ++code) {
            const QString text = lang->LGS(key, missing, tsNone, {}, {}, code);
            EXPECT_NE(text, missing) << r.key << " in language " << code;
            EXPECT_FALSE(text.contains(u'\uFFFD')) << r.key;
        }
        if (r.englishDefault) {
            EXPECT_EQ(lang->LGS(key), QString::fromUtf8(r.englishDefault)) << "the English text is the default text";
        }
    }

    struct Expected {
        int language;
        QString saveChanges;
    };
    const Expected expected[] = {
        {langEnglish, QStringLiteral("Do you want to save these changes?")},
        {langGerman, QStringLiteral("M\u00F6chten Sie diese \u00C4nderungen speichern?")},
        {langFrench, QStringLiteral("Voulez-vous enregistrer ces modifications ?")},
        {langAmerican, QStringLiteral("Do you want to save these changes?")},
        {langDutch, QStringLiteral("Wilt u deze wijzigingen opslaan?")},
    };
    for (const Expected& e : expected) {
        lang->LanguageInitialise(e.language, DemoLanguageFile);
        EXPECT_EQ(lang->ActiveLanguage(), e.language);
        EXPECT_EQ(lang->LGS(QStringLiteral("MsgSaveChanges")), e.saveChanges) << e.language;
    }
    lang->LanguageInitialise(langGerman, DemoLanguageFile);
    EXPECT_EQ(lang->LGS(QStringLiteral("MsgItemChgDeleted")),
              QStringLiteral("Ein anderer Benutzer hat diesen Eintrag gel\u00F6scht, w\u00E4hrend Sie ihn bearbeitet haben!"))
        << "a quoted cell keeps its comma";
    EXPECT_EQ(lang->LGS(QStringLiteral("MsgFailDelete"), {}, tsNone, {}, {}, langFrench),
              QStringLiteral("Impossible de supprimer l'\u00E9l\u00E9ment."));
    EXPECT_EQ(lang->LGS(QStringLiteral("msgsavechanges"), {}, tsNone, {}, {}, langEnglish),
              QStringLiteral("Do you want to save these changes?"))
        << "keys match ignoring case";
}

TEST_F(Language, CellsFallBackToTheLoadedLanguageThenEnglish)
{
    const QByteArray file =
        "Key,English,German,French,American,Dutch\r\n"
        "full,  one  ,eins,un,one (US),een\r\n"
        "noGerman,two,,deux,,twee\r\n"
        "onlyEnglish,three\r\n"
        "onlyGerman,,vier\r\n"
        "* a comment line,ignored\r\n"
        "*,ignored too\r\n"
        "  ,no key\r\n"
        "noText,,,,,\r\n";
    auto german = Load(langGerman, file);
    struct Row {
        const char* key;
        int code;
        const char* text;
        const char* reason;
    };
    const Row rows[] = {
        {"full", langDefault, "eins", "the loaded language"},
        {"full", langEnglish, "one", "cells are trimmed"},
        {"full", langAmerican, "one (US)", "any column on request"},
        {"noGerman", langDefault, "two", "an empty cell of the loaded language falls back to English"},
        {"noGerman", langGerman, "two", "asked for German: the loaded text, not an empty one"},
        {"noGerman", langFrench, "deux", ""},
        {"noGerman", langAmerican, "two", "an empty cell takes the loaded text"},
        {"onlyEnglish", langDutch, "three", "a missing cell takes the loaded text"},
        {"onlyGerman", langEnglish, "vier", "an empty English cell takes the loaded text"},
        {"* a comment line", langDefault, "<default>", "comment lines are not loaded"},
        {"*", langDefault, "<default>", ""},
        {"noText", langDefault, "<default>", "a line without text is not stored"},
    };
    for (const Row& r : rows) {
        EXPECT_EQ(german->LGS(QString::fromLatin1(r.key), QStringLiteral("<default>"), tsNone, {}, {}, r.code),
                  QString::fromLatin1(r.text))
            << r.key << " / " << r.code << ": " << r.reason;
    }

    auto dutch = Load(langDutch, "Key,English,German\r\nk,en,de\r\n");
    EXPECT_EQ(dutch->LGS(QStringLiteral("k")), QStringLiteral("en")) << "a language beyond the header's columns loads English";
    EXPECT_EQ(dutch->ActiveLanguage(), langDutch);
    EXPECT_EQ(dutch->LGS(QStringLiteral("k"), {}, tsNone, {}, {}, langGerman), QStringLiteral("de"));

    auto headerOnly = Load(langEnglish, "Key,English,German,French,American,Dutch\r\n");
    EXPECT_EQ(headerOnly->LGS(QStringLiteral("Key"), QStringLiteral("d")), QStringLiteral("d")) << "the header is not a row";
}

TEST_F(Language, DuplicateKeysResolveFromTheLastRowFoundAndAreTracedOnce)
{
    TraceRecorder host;
    SharedContext::ForThisThread().ParentMDIForm = &host;
    auto lang = Load(langEnglish,
                     "Key,English\n"
                     "dup,first\n"
                     "other,x\n"
                     "dup,second\n"
                     "DUP,third\n"
                     "twice,1\n"
                     "twice,2\n");
    EXPECT_EQ(host.lines, (QStringList{"Duplicate language key: dup", "Duplicate language key: twice"}))
        << "each duplicate key once, letter case ignored";

    struct Step {
        const char* key;
        const char* text;
    };
    // From the current row (included) forward, wrapping once to the first row.
    const Step steps[] = {
        {"dup", "first"}, {"dup", "first"}, {"other", "x"},   {"dup", "second"}, {"dup", "second"},
        {"DUP", "second"}, {"twice", "1"},  {"dup", "first"}, {"nothing", "-"},  {"dup", "first"},
        {"Dup", "first"},  {"twice", "1"},  {"other", "x"},   {"dup", "second"},
    };
    for (const Step& s : steps)
        EXPECT_EQ(lang->LGS(QString::fromLatin1(s.key), QStringLiteral("-")), QString::fromLatin1(s.text)) << s.key;
}

TEST_F(Language, SuffixesAndSubstitutions)
{
    auto lang = clsLanguage::Create();
    struct Row {
        const char* text;
        int suffix;
        const char* sub1;
        const char* sub2;
        const char* result;
        const char* reason;
    };
    const Row rows[] = {
        {"Name %1 of %2", tsColon, "a", "b", "Name a of b:", "both values, then the suffix"},
        {"Name", tsNone, "", "", "Name", ""},
        {"Name", tsColon, "", "", "Name:", ""},
        {"Name", tsEllipsis, "", "", "Name...", ""},
        {"Name", tsSpace, "", "", "Name ", ""},
        {"Name", 4, "", "", "Name", "an unknown suffix adds nothing"},
        {"Name", -1, "", "", "Name", ""},
        {"%1 and %2", tsNone, "", "b", "%1 and %2", "without a first value neither is replaced"},
        {"%1 and %2", tsNone, "a", "", "a and %2", "an empty second value leaves %2"},
        {"%1%1 %2%2", tsNone, "a", "b", "aa bb", "every occurrence"},
        {"%1", tsNone, "%2", "b", "b", "the first value is replaced before the second"},
        {"%11", tsNone, "a", "", "a1", "exact text %1"},
        {"", tsColon, "a", "", ":", "an empty default still takes the suffix"},
    };
    for (const Row& r : rows) {
        EXPECT_EQ(lang->LGS(QStringLiteral("unknown"), QString::fromLatin1(r.text), r.suffix, QString::fromLatin1(r.sub1),
                            QString::fromLatin1(r.sub2)),
                  QString::fromLatin1(r.result))
            << r.text << ": " << r.reason;
    }

    lang->LanguageInitialise(langEnglish, mFolder.Write(QStringLiteral("s.lng"), "Key,English\nk,Value of %1\n"));
    EXPECT_EQ(lang->LGS(QStringLiteral("k"), {}, tsEllipsis, QStringLiteral("x")), QStringLiteral("Value of x..."));
    EXPECT_EQ(test::ErrorOf([&] { lang->LGS(QStringLiteral("k"), {}, tsNone, {}, {}, 5); }), 3265)
        << "there is no Text5 field";
    EXPECT_EQ(lang->LGS(QStringLiteral("unknown"), QStringLiteral("d"), tsNone, {}, {}, 5), QStringLiteral("d"))
        << "the field is only read for a row found";
}

TEST_F(Language, IdentifiersWithApostrophesFindNothing)
{
    auto lang = Load(langEnglish, "Key,English\nit's,found\nits,plain\n");
    EXPECT_EQ(lang->LGS(QStringLiteral("it's"), QStringLiteral("d")), QStringLiteral("d"));
    EXPECT_EQ(lang->LGS(QStringLiteral("IT'S"), QStringLiteral("d")), QStringLiteral("d"));
    EXPECT_EQ(lang->LGS(QStringLiteral("its"), QStringLiteral("d")), QStringLiteral("plain"));
}

TEST_F(Language, WithoutAFileEveryLookupGivesItsDefault)
{
    auto lang = clsLanguage::Create();
    EXPECT_EQ(lang->ActiveLanguage(), -1);
    lang->LanguageInitialise(langFrench, QString());
    EXPECT_EQ(lang->ActiveLanguage(), langFrench);
    EXPECT_EQ(lang->LGS(QStringLiteral("MsgSaveChanges"), QStringLiteral("d")), QStringLiteral("d"));

    lang->LanguageInitialise(langEnglish, DemoLanguageFile);
    lang->LanguageInitialise(langGerman, QString());
    EXPECT_EQ(lang->LGS(QStringLiteral("MsgSaveChanges")), QStringLiteral("Do you want to save these changes?"))
        << "an empty path keeps the table that was loaded";
}

TEST_F(Language, BadFilesRaiseTheReadersErrors)
{
    auto lang = clsLanguage::Create();
    struct Row {
        const char* name;
        QByteArray bytes;  // empty name: the file is not written
        int number;
        const char* description;
    };
    const Row rows[] = {
        {"", {}, ObjectErrorBase + 6, "Unable to open CSV file:\r\nNo such file or directory"},
        {"empty.lng", {}, ObjectErrorBase + 5, "Attempted to move past EOF."},
        {"keys.lng", "Key\nfirst\nsecond\n", ObjectErrorBase + 4, "Invalid column reference."},
        {"junk.lng", QByteArray("\x01\x02\xFF\x00junk\n\x7F\x80\n", 12), ObjectErrorBase + 4, "Invalid column reference."},
    };
    for (const Row& r : rows) {
        const QString path = *r.name ? mFolder.Write(QString::fromLatin1(r.name), r.bytes)
                                     : mFolder.Path(QStringLiteral("missing.lng"));
        const auto error = RaisedError([&] { lang->LanguageInitialise(langGerman, path); });
        ASSERT_TRUE(error.has_value()) << r.name;
        EXPECT_EQ(error->Number(), r.number) << r.name;
        EXPECT_EQ(error->Description(), QString::fromLatin1(r.description)) << r.name;
        EXPECT_EQ(lang->ActiveLanguage(), -1) << "a failed load activates nothing";
        EXPECT_EQ(lang->LGS(QStringLiteral("first"), QStringLiteral("d")), QStringLiteral("d")) << r.name;
    }
}

TEST_F(Language, FirstLookupInitialisesFromTheEnvironment)
{
    EXPECT_EQ(LGS(QStringLiteral("MsgSaveChanges"), QStringLiteral("d"), tsColon),
              QStringLiteral("Run Application to initialise"))
        << "no language file named";
    EXPECT_EQ(clsLanguage::Current()->ActiveLanguage(), -1);

    qputenv("LanguageFile", QFile::encodeName(DemoLanguageFile));
    EXPECT_EQ(LGS(QStringLiteral("zqdd0001"), QStringLiteral("d"), tsColon), QStringLiteral("Sorted By:"))
        << "no Language variable means English";
    EXPECT_EQ(clsLanguage::Current()->ActiveLanguage(), langEnglish);

    struct Row {
        const char* language;
        const char* text;
    };
    const Row rows[] = {{"1", "Sortiert nach"}, {" 2 ", "Tri\u00E9 par"}, {"4", "Gesorteerd op"}, {"3", "Sorted By"}};
    for (const Row& r : rows) {
        SharedContext::ForThisThread().CurrentLanguage.reset();
        qputenv("Language", r.language);
        EXPECT_EQ(LGS(QStringLiteral("zqdd0001")), QString::fromUtf8(r.text)) << "Language=" << r.language;
    }

    SharedContext::ForThisThread().CurrentLanguage.reset();
    qputenv("Language", "German");
    EXPECT_EQ(test::ErrorOf([] { LGS(QStringLiteral("zqdd0001")); }), vbErrTypeMismatch)
        << "the variable holds a number, not a name";

    SharedContext::ForThisThread().CurrentLanguage.reset();
    qputenv("Language", "1");
    qputenv("LanguageFile", QFile::encodeName(mFolder.Path(QStringLiteral("gone.lng"))));
    EXPECT_EQ(test::ErrorOf([] { LGS(QStringLiteral("zqdd0001")); }), ObjectErrorBase + 6);
    EXPECT_EQ(test::ErrorOf([] { LGS(QStringLiteral("zqdd0001")); }), ObjectErrorBase + 6)
        << "every lookup tries again until a language is loaded";

    clsLanguage::Current()->LanguageInitialise(langGerman, DemoLanguageFile);
    EXPECT_EQ(LGS(QStringLiteral("zqdd0001")), QStringLiteral("Sortiert nach")) << "a host-initialised language is used as it is";
}

TEST_F(Language, InstancesRegisterAsCurrent)
{
    const std::shared_ptr<clsLanguage> implicit = clsLanguage::Current();
    ASSERT_TRUE(implicit) << "reading the current language creates one";
    EXPECT_EQ(clsLanguage::Current(), implicit);
    const auto created = clsLanguage::Create();
    EXPECT_EQ(clsLanguage::Current(), created) << "the last one created wins";

    clsLanguage& global = clsLanguage::Global();
    EXPECT_EQ(&global, &clsLanguage::Global());
    global.LanguageInitialise(langGerman, DemoLanguageFile);
    EXPECT_EQ(LGS(QStringLiteral("zqdd0001")), QStringLiteral("Sortiert nach"))
        << "the instance behind the class name became current when it was made";

    // The host reaches the members by name.
    QList<Variant> args{Variant("MsgSaveChanges"), Variant("d"), Variant(tsColon)};
    EXPECT_EQ(CStr(CallByName(&global, QStringLiteral("LGS"), VbMethod, args)),
              QStringLiteral("M\u00F6chten Sie diese \u00C4nderungen speichern?:"));
    EXPECT_EQ(CLng(GetProperty(&global, QStringLiteral("ActiveLanguage"))), langGerman);
}

TEST_F(Language, ColumnExpressionsPerLanguage)
{
    auto lang = clsLanguage::Create();
    lang->LanguageInitialise(langEnglish, QString());
    EXPECT_EQ(lang->LGSDB(QStringLiteral("Descr")), QStringLiteral("Descr_0 As Descr"));
    EXPECT_EQ(lang->LGSDB(QStringLiteral("Descr"), QStringLiteral("p")), QStringLiteral("p.Descr_0 As Descr"));
    lang->LanguageInitialise(langGerman, QString());
    EXPECT_EQ(lang->LGSDB(QStringLiteral("Descr"), QStringLiteral("p")),
              QStringLiteral("NVL(LTrim(p.Descr_1), p.Descr_0) As Descr"));
    lang->LanguageInitialise(langDutch, QString());
    EXPECT_EQ(lang->LGSDB(QStringLiteral("Name")), QStringLiteral("NVL(LTrim(Name_4), Name_0) As Name"));
}

TEST_F(Language, DateTextsInEnglishAndGerman)
{
    test::PinnedSettings settings;
    auto lang = clsLanguage::Create();
    lang->LanguageInitialise(langGerman, QString());
    const Variant monday(DateSerial(2009, 1, 5));
    struct Row {
        int language;
        bool incDay;
        const char* text;
    };
    const Row rows[] = {
        {langEnglish, true, "Monday, 5 January 2009"},
        {langGerman, false, "5 Januar 2009"},
        {langGerman, true, "Montag, 5 Januar 2009"},
        {-1, true, "Montag, 5 Januar 2009"},
        {langFrench, true, ", 5  2009"},
        {langDefault, false, "5  2009"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(lang->LongDate(monday, r.language, r.incDay), QString::fromUtf8(r.text)) << r.language;
    EXPECT_EQ(lang->LongDate(Variant(Date{DateSerial(2024, 3, 31).serial + 0.75}), langGerman),
              QStringLiteral("Sonntag, 31 M\u00E4rz 2024"))
        << "the time of day does not matter";
    EXPECT_EQ(lang->LongDate(Variant("2009-12-24"), langEnglish, false), QStringLiteral("24 December 2009"));

    const char* english[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    const char* german[] = {"Sonntag", "Montag", "Dienstag", "Mittwoch", "Donnerstag", "Freitag", "Samstag"};
    for (int day = 0; day < 7; ++day) {
        const Variant date(DateSerial(2009, 1, 4 + day));
        EXPECT_EQ(lang->WeekdayName(date, langEnglish), QString::fromLatin1(english[day]));
        EXPECT_EQ(lang->WeekdayName(date), QString::fromLatin1(german[day])) << "the active language";
        EXPECT_EQ(lang->WeekdayName(date, langDutch), QString());
    }
}

}  // namespace
}  // namespace korvex

#include "clsLanguageTest.moc"
