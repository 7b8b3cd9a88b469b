// The small value types: Variant identity and its bridge to QVariant, Windows-1252, twips,
// OLE colours and StdFont.
#include "korvex/runtime/Error.h"
#include "korvex/runtime/OleColor.h"
#include "korvex/runtime/StdFont.h"
#include "korvex/runtime/Twips.h"
#include "korvex/runtime/Variant.h"
#include "korvex/runtime/Windows1252.h"
#include "tests/support/Printers.h"

#include <QSignalSpy>
#include <QDateTime>

#include <limits>

#include <gtest/gtest.h>

namespace korvex {
namespace {

TEST(Values, VariantKeepsTypesApartAndBridgesToQVariant)
{
    EXPECT_NE(Variant(), Null) << "Empty and Null are distinct";
    EXPECT_NE(Variant(std::int16_t{5}), Variant(5)) << "Integer and Long are distinct types";
    EXPECT_NE(Variant(""), Variant()) << "the empty text is not Empty";
    EXPECT_EQ(Variant::Array({1, "a"}), Variant::Array({1, "a"})) << "arrays compare by content";

    struct Row {
        QVariant in;
        Variant out;
    };
    const Row rows[] = {
        {QVariant(), Variant()},
        {QVariant(QMetaType::fromType<int>()), Null},  // a database NULL arrives as a null QVariant
        {QVariant(QString()), Variant("")},            // but a null QString is just empty text
        {QVariant(7), Variant(7)},
        {QVariant(qlonglong(1) << 40), Variant(double(qlonglong(1) << 40))},
        {QVariant(true), Variant(true)},
        {QVariant(QDateTime(QDate(2009, 1, 5), QTime(18, 0))), Variant(Date{39818.75})},
        {QVariant::fromValue(Variant(Currency::FromScaled(5))), Variant(Currency::FromScaled(5))},
    };
    for (const Row& r : rows)
        EXPECT_EQ(Variant::FromQVariant(r.in), r.out) << r.in.typeName();
    EXPECT_EQ(Variant::FromQVariant(Variant(Null).ToQVariant()), Null) << "a round trip keeps Null";
}

TEST(Values, CurrencyTextIsInvariantBothWays)
{
    for (std::int64_t scaled : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{12345000}, std::numeric_limits<std::int64_t>::min(),
                                std::numeric_limits<std::int64_t>::max()}) {
        const Currency c = Currency::FromScaled(scaled);
        EXPECT_EQ(Currency::FromInvariantString(c.ToInvariantString()), c) << c.ToInvariantString().toStdString();
    }
    EXPECT_EQ(Currency::FromInvariantString(u"1.00005"), Currency::FromScaled(10000)) << "halves to even";
    EXPECT_EQ(Currency::FromInvariantString(u"-.5"), Currency::FromScaled(-5000));
    for (const char16_t* text : {u"", u"-", u"1,5", u"1.2.3", u" 1", u"922337203685478"})
        EXPECT_FALSE(Currency::FromInvariantString(text)) << QString::fromUtf16(text).toStdString();
}

TEST(Values, Windows1252RoundTripsEveryByte)
{
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(static_cast<char>(b));
    const QString text = FromWindows1252(all);
    EXPECT_EQ(text[0x80], QChar(0x20AC)) << "0x80 is the euro sign";
    EXPECT_EQ(text[0x92], QChar(0x2019));
    EXPECT_EQ(text[0x81], QChar(0x81)) << "an undefined byte keeps its number";
    EXPECT_EQ(text[0xE9], QChar(0xE9));
    EXPECT_EQ(ToWindows1252(text), all);
    EXPECT_EQ(ToWindows1252(u"Ł€"), QByteArray("?\x80")) << "characters the code page lacks become ?";

    // Texts of every length up to three blocks of 16 or of 32 (as wide as the processor goes),
    // with bytes of 0x80 to 0x9F falling on every place of a block and of its last block, read
    // as their bytes one by one.
    for (qsizetype n = 0; n <= 96; ++n) {
        for (int shift = 0; shift < 8; ++shift) {
            QByteArray bytes(n, Qt::Uninitialized);
            for (qsizetype i = 0; i < n; ++i)
                bytes[i] = static_cast<char>((i * 29 + shift * 7 + 0x80) % 256);
            QString expected;
            for (char b : bytes)
                expected += FromWindows1252(QByteArray(1, b));
            ASSERT_EQ(FromWindows1252(bytes), expected) << n << " bytes, shift " << shift;
        }
    }
}

TEST(Values, TwipsRoundHalvesToEvenWithSeparateRatios)
{
    SetTwipsPerPixel(15, 10);
    EXPECT_EQ(PixelsToTwipsX(3), 45);
    EXPECT_EQ(PixelsToTwipsY(3), 30);
    EXPECT_EQ(TwipsToPixelsX(22.5), 2) << "1.5 pixels rounds to the even 2";
    EXPECT_EQ(TwipsToPixelsX(37.5), 2) << "2.5 pixels rounds to the even 2";
    EXPECT_EQ(TwipsToPixelsY(25), 2) << "2.5 pixels rounds to the even 2";
    EXPECT_EQ(TwipsToPixelsY(35), 4) << "3.5 pixels rounds to the even 4";
    SetTwipsPerPixel(0, -1);
    EXPECT_EQ(TwipsPerPixelX(), 15) << "nonsense ratios are ignored";
    SetTwipsPerPixel(15, 15);
}

TEST(Values, OleColoursResolveThroughTheSystemLookup)
{
    EXPECT_EQ(RGB(255, 0, 0), 0x0000FFu) << "red in the low byte";
    EXPECT_EQ(RGB(300, -5, 16), 0x1000FFu) << "components are clamped";
    EXPECT_EQ(ResolveColor(0x12345678), 0x345678u) << "an RGB colour loses its top byte";
    EXPECT_EQ(ResolveColor(vbWindowBackground), RGB(255, 255, 255)) << "fixed default before any lookup";
    SetSystemColorLookup([](int index) { return static_cast<OleColor>(index * 0x010101); });
    EXPECT_EQ(ResolveColor(vbButtonFace), 0x0F0F0Fu);
    SetSystemColorLookup({});
    EXPECT_EQ(ResolveColor(vbButtonFace), RGB(240, 240, 240));
}

TEST(Values, StdFontNotifiesEachChangeAndRefusesNonsense)
{
    StdFont font(QStringLiteral("Tahoma"), 8);
    QSignalSpy spy(&font, &StdFont::FontChanged);
    font.SetBold(true);
    EXPECT_EQ(font.Weight(), StdFont::BoldWeight);
    font.SetWeight(600);
    EXPECT_TRUE(font.Bold()) << "heavier than 550 is bold";
    font.SetSize(8.123456);
    EXPECT_DOUBLE_EQ(font.Size(), 8.1235) << "sizes keep four decimals";
    font.SetItalic(false);  // unchanged: no notification
    QStringList names;
    for (const auto& args : spy)
        names << args.at(0).toString();
    EXPECT_EQ(names, (QStringList{"Weight", "Bold", "Weight", "Size"}));

    EXPECT_THROW(font.SetSize(0), Error);
    EXPECT_THROW(font.SetName(QStringLiteral("  ")), Error);
    EXPECT_THROW(font.SetWeight(1001), Error);
    EXPECT_EQ(font.Name(), "Tahoma") << "a refused value changes nothing";

    StdFont copy;
    copy.CopyFrom(font);
    EXPECT_TRUE(copy.SameAs(font));
}

}  // namespace
}  // namespace korvex
