// ZqFormHeader: a new header docked along the top, captions as labels show them, the layout
// from the right edge rendered at two screen densities, the spacer's height, the two events,
// and a saved form keeping only what differs.
#include "korvex/forms/ZqFormHeader.h"

#include "korvex/controls/display/ZqLine.h"
#include "korvex/controls/display/ZqSimpleButton.h"
#include "korvex/platform/host/Image.h"
#include "korvex/platform/host/Label.h"
#include "tests/controls/display/DisplayTestSupport.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

constexpr QRgb kSeparator = 0x99B4D1u;  // 0xD1B499 with red in the low byte
constexpr QRgb kHelpBlue = 0x2F6FC0u;

struct HeaderTest : ::testing::Test {
    ZqFormHeader* NewHeader()
    {
        form.resize(640, 400);
        form.show();
        auto* header = static_cast<ZqFormHeader*>(FormFile::AddNewControl(form, QStringLiteral("ZqFormHeader"), QStringLiteral("zqhHeader")));
        QApplication::processEvents();
        return header;
    }
    test::PinnedSettings pin;
    Form form;
};

int RightOf(const QWidget* w)
{
    return w->x() + w->width();
}

TEST_F(HeaderTest, ANewHeaderIsDockedAlongTheTopWithItsPlaceholders)
{
    ZqFormHeader* header = NewHeader();
    EXPECT_EQ(header->Height(), 855);
    EXPECT_EQ(header->Align(), vbAlignTop);
    EXPECT_EQ(header->geometry(), QRect(0, 0, form.Client()->width(), 57));
    EXPECT_EQ(header->CaptionLabel(0)->ShownText(), "HeaderLeft");
    EXPECT_EQ(header->CaptionLabel(1)->ShownText(), "HeaderRight");
    EXPECT_EQ(header->CaptionColor(), vbButtonText);
    EXPECT_TRUE(header->IncludesSpacer());
    EXPECT_FALSE(header->HelpIcon()->isVisibleTo(header));
    EXPECT_FALSE(header->CloseBox()->isVisibleTo(header));

    form.resize(500, 300);
    QApplication::processEvents();
    EXPECT_EQ(header->width(), form.Client()->width()) << "the header follows its container";
    EXPECT_EQ(header->y(), 0);
    header->SetTop(600);
    EXPECT_EQ(header->y(), 0) << "a docked control stays at its edge";

    header->SetCaptionLeft(QStringLiteral("  R&D orders"));
    EXPECT_EQ(header->CaptionLeft(), "  R&D orders") << "the text as given";
    EXPECT_EQ(header->CaptionLabel(0)->Caption(), "R&&D orders");
    EXPECT_EQ(header->CaptionLabel(0)->ShownText(), "R&D orders") << "one ampersand shows, no leading spaces";
    header->SetCaptionColor(0x0000C0);
    EXPECT_EQ(header->CaptionLabel(1)->ForeColor(), 0x0000C0u);
}

TEST_F(HeaderTest, TheRightHandPartsArePlacedFromTheEdgeAtEitherDensity)
{
    for (double tpp : {15.0, 12.0}) {
        SetTwipsPerPixel(tpp, tpp);
        ZqFormHeader* header = NewHeader();
        header->SetCaptionRight(QStringLiteral("Order 17"));
        const int w = header->width();
        const Label* right = header->CaptionLabel(1);
        const Label* left = header->CaptionLabel(0);
        EXPECT_EQ(RightOf(right), w - 8) << "8 px from the edge with no buttons, at " << tpp;
        EXPECT_EQ(left->x(), 8) << tpp;

        header->SetHelpButton(true);
        header->SetCloseButton(true);
        const QWidget* help = header->HelpIcon();
        const QWidget* close = header->CloseBox();
        // Each right-hand part keeps 1 px to its right and leaves 4 px before the next; the
        // caption keeps its 8 px on top of those 4.
        EXPECT_EQ(RightOf(close), w - 1) << tpp;
        EXPECT_EQ(RightOf(help), close->x() - 4 - 1) << tpp;
        EXPECT_EQ(RightOf(right), help->x() - 4 - 8) << tpp;
        EXPECT_EQ(right->y(), left->y()) << "both captions on one line";

        // Separator above the spacer, which takes its height and one pixel more.
        const int spacer = TwipsToPixelsY(header->Spacer()->Height());
        const int separatorRow = header->height() - spacer - 1;
        EXPECT_EQ(header->Separator(0)->y(), separatorRow) << tpp;
        EXPECT_EQ(header->Separator(1)->y(), 0);

        const QImage image = test::RenderAt(header);
        const QRgb background = test::Rgb(image, w / 2, 4);
        EXPECT_EQ(test::Rgb(image, w / 2, separatorRow), kSeparator) << "the separator line, at " << tpp;
        EXPECT_EQ(test::Rgb(image, help->x() + 2, help->y() + 8), kHelpBlue) << "the help glyph, at " << tpp;
        EXPECT_NE(test::Rgb(image, close->x() + close->width() / 2, close->y() + close->height() / 2), background)
            << "the close cross";
        bool captionDrawn = false;
        for (int x = right->x(); x < RightOf(right); ++x) {
            for (int y = right->y(); y < right->y() + right->height(); ++y)
                captionDrawn = captionDrawn || test::Rgb(image, x, y) != background;
        }
        EXPECT_TRUE(captionDrawn) << "the right caption shows, at " << tpp;
        for (int x = RightOf(right); x < help->x(); ++x) {
            for (int y = right->y(); y < right->y() + right->height(); ++y)
                ASSERT_EQ(test::Rgb(image, x, y), background) << "nothing between caption and icon at " << x << "," << y;
        }
        if (::testing::Test::HasFailure())
            image.save(QStringLiteral("header-%1.png").arg(tpp));
        delete header;
    }
}

TEST_F(HeaderTest, TheSpacerAddsItsHeightAndTheClicksReachTheForm)
{
    ZqFormHeader* header = NewHeader();
    const int h = header->Height();
    const int spacer = header->Spacer()->Height();
    header->SetIncludesSpacer(false);
    EXPECT_EQ(header->Height(), h - spacer);
    EXPECT_FALSE(header->Spacer()->isVisibleTo(header));
    EXPECT_EQ(header->Separator(0)->y() + header->Separator(0)->height(), header->height()) << "the separator at the bottom";
    header->SetIncludesSpacer(false);
    EXPECT_EQ(header->Height(), h - spacer) << "no change, no height change";
    header->SetIncludesSpacer(true);
    EXPECT_EQ(header->Height(), h);

    header->SetHelpButton(true);
    header->SetCloseButton(true);
    QSignalSpy help(header, &ZqFormHeader::HelpClicked);
    QSignalSpy close(header, &ZqFormHeader::CloseClicked);
    QTest::mouseClick(header->HelpIcon(), Qt::LeftButton, {}, QPoint(8, 8));
    EXPECT_EQ(help.count(), 1);
    EXPECT_EQ(close.count(), 0);
    QTest::mouseClick(header->CloseBox(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(close.count(), 1);
    EXPECT_EQ(help.count(), 1);
}

TEST_F(HeaderTest, ASavedFormKeepsWhatDiffers)
{
    ZqFormHeader* header = NewHeader();
    QByteArray text;
    auto plain = test::SavedAndLoaded(form, &text);
    EXPECT_FALSE(text.contains("CaptionLeft")) << text.constData();
    EXPECT_FALSE(text.contains("\"Font\"")) << "the design font is the default";
    EXPECT_TRUE(text.contains("\"Align\": 1")) << text.constData();

    header->SetCaptionLeft(QStringLiteral("Orders"));
    header->SetCloseButton(true);
    header->SetIncludesSpacer(false);
    header->Font()->SetSize(14);
    auto loaded = test::SavedAndLoaded(form, &text);
    auto* copy = static_cast<ZqFormHeader*>(loaded->FindControl(QStringLiteral("zqhHeader")));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->CaptionLeft(), "Orders");
    EXPECT_EQ(copy->CaptionRight(), "HeaderRight");
    EXPECT_TRUE(copy->CloseButton());
    EXPECT_FALSE(copy->HelpButton());
    EXPECT_FALSE(copy->IncludesSpacer());
    EXPECT_EQ(copy->Height(), header->Height());
    EXPECT_EQ(copy->Font()->Size(), 14);
    EXPECT_EQ(copy->Align(), vbAlignTop);
    EXPECT_EQ(copy->CaptionLabel(0)->Font()->Size(), 14) << "the captions take the header's font";
}

}  // namespace
}  // namespace korvex
