// ZqLine: where each style puts its lines, in pixels at two screen densities; flat thickness;
// the saved form keeping only what differs from the defaults.
#include "DisplayTestSupport.h"

#include "korvex/controls/display/ZqLine.h"
#include "korvex/platform/host/Line.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"

#include <QJsonObject>

#include <gtest/gtest.h>

namespace korvex {
namespace {

constexpr QRgb kDark = 0xC00000u;
constexpr QRgb kLight = 0x00C000u;
constexpr QRgb kWhite = 0xFFFFFFu;

struct LineTest : ::testing::Test {
    ZqLine* NewLine(int w, int h)
    {
        auto* line = static_cast<ZqLine*>(FormFile::AddNewControl(form, QStringLiteral("ZqLine"), QStringLiteral("linTest")));
        line->resize(w, h);
        line->SetColourDarkLine(RGB(0xC0, 0, 0));
        line->SetColourLightLine(RGB(0, 0xC0, 0));
        return line;
    }
    test::PinnedSettings pin;
    Form form;
};

TEST_F(LineTest, EachStylePutsItsLinesOnePixelApartAtEitherDensity)
{
    struct Row {
        int style;
        QRgb at0, at1;  // across the line: pixel 0 and pixel 1
        const char* why;
    };
    const Row rows[] = {
        {LS_Horizontal, kDark, kLight, "shadow above highlight: sunk"},
        {LS_HorizontalInverted, kLight, kDark, "highlight above shadow: raised"},
        {LS_HorizontalFlat, kDark, kWhite, "one line, no highlight"},
        {LS_Vertical, kDark, kLight, "shadow left of highlight"},
        {LS_VerticalInverted, kLight, kDark, "highlight left of shadow"},
        {LS_VerticalFlat, kDark, kWhite, "one line"},
    };
    for (double tpp : {15.0, 10.0}) {
        SetTwipsPerPixel(tpp, tpp);
        ZqLine* line = NewLine(40, 40);
        for (const Row& row : rows) {
            line->SetLineStyle(row.style);
            const bool vertical = row.style == LS_Vertical || row.style == LS_VerticalInverted || row.style == LS_VerticalFlat;
            const QImage image = test::RenderAt(line);
            const auto at = [&](int across, int along) { return vertical ? test::Rgb(image, across, along) : test::Rgb(image, along, across); };
            for (int along : {0, 20, 39}) {
                EXPECT_EQ(at(0, along), row.at0) << row.why << " at " << tpp << " twips a pixel, along " << along;
                EXPECT_EQ(at(1, along), row.at1) << row.why << " at " << tpp << " twips a pixel, along " << along;
            }
            EXPECT_EQ(at(2, 20), kWhite) << row.why;
        }
        delete line;
    }
}

TEST_F(LineTest, FlatThicknessAndTheWayBackToEngraved)
{
    ZqLine* line = NewLine(40, 10);
    line->SetFlatLineSize(4);
    EXPECT_EQ(line->DarkLine()->BorderWidth(), 1) << "the thickness matters only in the flat styles";
    line->SetLineStyle(LS_HorizontalFlat);
    EXPECT_EQ(line->DarkLine()->BorderWidth(), 4);
    EXPECT_FALSE(line->LightLine()->isVisibleTo(line));
    EXPECT_EQ(test::Rgb(test::RenderAt(line), 20, 1), kDark) << "a thick line covers the next pixel too";

    line->SetLineStyle(LS_Horizontal);
    EXPECT_TRUE(line->LightLine()->isVisibleTo(line)) << "both lines again";
    EXPECT_EQ(line->DarkLine()->BorderWidth(), 1);
    const QImage engraved = test::RenderAt(line);
    EXPECT_EQ(test::Rgb(engraved, 20, 0), kDark);
    EXPECT_EQ(test::Rgb(engraved, 20, 1), kLight);

    line->SetFlatLineSize(0);
    EXPECT_EQ(line->FlatLineSize(), 1) << "0 reads back as 1";
    line->SetLineStyle(LS_VerticalFlat);
    EXPECT_EQ(line->DarkLine()->BorderWidth(), 1);
    EXPECT_EQ(test::ErrorOf([&] { line->SetLineStyle(6); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(line->LineStyle(), LS_VerticalFlat);
}

TEST_F(LineTest, SavedFormKeepsWhatDiffersAndReadsItBack)
{
    auto* plain = static_cast<ZqLine*>(FormFile::AddNewControl(form, QStringLiteral("ZqLine"), QStringLiteral("linPlain")));
    PropertyBag bag;
    plain->WriteProperties(bag);
    EXPECT_TRUE(bag.Values().isEmpty()) << "a new line stores nothing";
    EXPECT_EQ(plain->ColourDarkLine(), vbButtonShadow);
    EXPECT_EQ(plain->ColourLightLine(), vb3DHighlight);

    ZqLine* line = NewLine(40, 10);
    line->SetLineStyle(LS_VerticalFlat);
    line->SetFlatLineSize(3);
    auto loaded = test::SavedAndLoaded(form);
    auto* back = qobject_cast<ZqLine*>(loaded->ControlByName(QStringLiteral("linTest")));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->LineStyle(), LS_VerticalFlat);
    EXPECT_EQ(back->FlatLineSize(), 3);
    EXPECT_EQ(back->DarkLine()->BorderWidth(), 3) << "the thickness read after the style still applies";
    EXPECT_EQ(back->ColourDarkLine(), RGB(0xC0, 0, 0));
    EXPECT_EQ(back->ColourLightLine(), RGB(0, 0xC0, 0));
}

}  // namespace
}  // namespace korvex
