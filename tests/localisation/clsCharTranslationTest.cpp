// Character translation between the Windows code page and Roman-9: both byte tables against
// each other, the known one-way cases, the modes and the Variant rules.
#include "korvex/core/SharedContext.h"
#include "korvex/localisation/clsCharTranslation.h"
#include "korvex/runtime/Windows1252.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace korvex {
namespace {

QString Byte(int b)
{
    return FromWindows1252(QByteArray(1, static_cast<char>(b)));
}

int ByteOf(const QString& text)
{
    const QByteArray bytes = ToWindows1252(text);
    return bytes.size() == 1 ? static_cast<unsigned char>(bytes[0]) : -1;
}

TEST(CharTranslation, EveryMappedByteComesBack)
{
    auto ct = clsCharTranslation::Create();
    int savedChanged = 0;
    int readChanged = 0;
    for (int b = 0; b < 256; ++b) {
        const int saved = ByteOf(ct->CharTranslateStr(Byte(b), true));
        ASSERT_NE(saved, -1) << b;
        if (saved != b) {
            ++savedChanged;
            EXPECT_GE(b, 0x80) << "only bytes from 0x80 up are translated when saving";
            EXPECT_EQ(ByteOf(ct->CharTranslateStr(Byte(saved), false)), b) << "saved " << b << " as " << saved;
        }
        const int read = ByteOf(ct->CharTranslateStr(Byte(b), false));
        if (read != b) {
            ++readChanged;
            EXPECT_GE(b, 0xA1) << "only bytes from 0xA1 up are translated when reading";
            EXPECT_EQ(ByteOf(ct->CharTranslateStr(Byte(read), true)), b) << "read " << b << " as " << read;
        }
    }
    EXPECT_EQ(savedChanged, 59);
    EXPECT_EQ(readChanged, 59);
}

TEST(CharTranslation, TextsBothWays)
{
    auto ct = clsCharTranslation::Create();
    struct Row {
        QString ansi;
        QByteArray roman9;
        const char* reason;
    };
    const Row rows[] = {
        {QStringLiteral("M\u00FCller"), "M\xCFller", "u umlaut is 0xCF in Roman-9"},
        {QStringLiteral("\u20AC 5"), "\xBA 5", "the euro sign"},
        {QStringLiteral("\u00C9t\u00E9 \u00E0 Z\u00FCrich"), "\xDCt\xC5 \xC8 Z\xCFrich", ""},
        {QStringLiteral("plain ASCII, 123"), "plain ASCII, 123", "ASCII passes"},
    };
    for (const Row& r : rows) {
        const QString saved = ct->CharTranslateStr(r.ansi, true);
        EXPECT_EQ(ToWindows1252(saved), r.roman9) << r.reason;
        EXPECT_EQ(ct->CharTranslateStr(saved), r.ansi) << r.reason << ": reading gives the text back";
        EXPECT_EQ(ct->CharTranslateStr(saved, false), r.ansi);
    }

    EXPECT_EQ(ToWindows1252(ct->CharTranslateStr(Byte(0xDE), true)), QByteArray("\xDE")) << "0xDE is not translated when saving";
    EXPECT_EQ(ct->CharTranslateStr(Byte(0xDE), false), Byte(0xDF)) << "but reads back as 0xDF";
    EXPECT_EQ(ct->CharTranslateStr(Byte(0x82), true), Byte(0x82)) << "0x81 to 0x9F pass when saving";
    EXPECT_EQ(ct->CharTranslateStr(Byte(0xA0), false), Byte(0xA0)) << "up to 0xA0 passes when reading";
    EXPECT_EQ(ct->CharTranslateStr(QStringLiteral("\u0141x"), true), QStringLiteral("?x"))
        << "a character outside the code page becomes ?";
}

TEST(CharTranslation, ModesAndVariants)
{
    auto ct = clsCharTranslation::Create();
    const QString text = QStringLiteral("M\u00FCller");
    EXPECT_EQ(ct->CharTranslateStr(QString(), true), QString());

    ct->CharTranslateSetMode(ctmNoTranslation);
    EXPECT_EQ(ct->CharTranslateStr(text, true), text);
    EXPECT_EQ(ct->CharTranslateVar(Variant(text), true), Variant(text));
    ct->CharTranslateSetMode(7);
    EXPECT_EQ(ct->CharTranslateStr(text, true), QString()) << "an unknown mode gives nothing";
    ct->CharTranslateSetMode(ctmANSItoRoman9);

    struct Row {
        Variant in;
        Variant out;
        const char* reason;
    };
    const Row rows[] = {
        {Null, Null, "Null stays Null"},
        {Empty, Empty, "Empty stays Empty"},
        {Variant(12), Variant(12), "numbers are not text"},
        {Variant(Date{39818}), Variant(Date{39818}), "nor are dates"},
        {Variant("   "), Variant("   "), "blank text is returned as it is"},
        {Variant(""), Variant(""), ""},
        {Variant(text), Variant(QStringLiteral("M\u00CFller")), "text is translated"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(ct->CharTranslateVar(r.in, true), r.out) << r.reason;
}

TEST(CharTranslation, CurrentIsTheLastInstanceCreated)
{
    SharedContext::ForThisThread().CurrentCharTranslation.reset();
    EXPECT_EQ(clsCharTranslation::Current(), nullptr) << "no instance yet: Nothing";
    const auto first = clsCharTranslation::Create();
    EXPECT_EQ(clsCharTranslation::Current(), first);
    const auto second = clsCharTranslation::Create();
    EXPECT_EQ(clsCharTranslation::Current(), second);

    clsCharTranslation& global = clsCharTranslation::Global();
    EXPECT_EQ(clsCharTranslation::Current().get(), &global);
    EXPECT_EQ(&clsCharTranslation::Global(), &global);
}

}  // namespace
}  // namespace korvex
