// ZqLabel: alignment, ellipsis and back style on rendered pixels; hover and click sequences;
// automatic sizing in twips at two screen densities; captions by language identifier; refused
// values.
#include "korvex/controls/display/ZqLabel.h"
#include "korvex/localisation/clsLanguage.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Error.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

// The extent of the dark pixels (the text) in a rendering.
QRect Ink(const QImage& image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qGray(image.pixel(x, y)) < 128)
                ink |= QRect(x, y, 1, 1);
    return ink;
}

struct LabelTest : ::testing::Test {
    void SetUp() override
    {
        form.Font()->SetName(QStringLiteral("DejaVu Sans"));
        form.Font()->SetSize(10);
        label = static_cast<ZqLabel*>(FormFile::AddNewControl(form, QStringLiteral("ZqLabel"), QStringLiteral("lblTest")));
        label->resize(200, 40);
        label->SetForeColor(RGB(0, 0, 0));
        label->SetBackStyle(bsOpaque);
        label->SetBackColor(RGB(255, 255, 255));
    }
    QRect Render() { return Ink(label->grab().toImage()); }
    void Move(QPointF p, Qt::MouseButtons held = Qt::NoButton)
    {
        QMouseEvent move(QEvent::MouseMove, p, label->mapToGlobal(p), Qt::NoButton, held, {});
        QApplication::sendEvent(label, &move);
    }

    test::PinnedSettings pin;
    Form form;
    ZqLabel* label = nullptr;
};

TEST_F(LabelTest, NewLabelShowsItsNameCentredLeftAndTransparent)
{
    ZqLabel* fresh = static_cast<ZqLabel*>(FormFile::AddNewControl(form, QStringLiteral("ZqLabel"), QStringLiteral("lblFresh")));
    EXPECT_EQ(fresh->Caption(), "lblFresh");
    EXPECT_EQ(fresh->AlignmentV(), vaCenter);
    EXPECT_EQ(fresh->AlignmentH(), 0);
    EXPECT_EQ(fresh->BackStyle(), bsTransparent);
    EXPECT_NE(fresh->Font(), form.Font()) << "a copy of the container's font, never the form's own object";
    EXPECT_TRUE(fresh->Font()->SameAs(*form.Font()));
    EXPECT_EQ(fresh->LinkHoverFont(), fresh->Font()) << "the link fonts are the same object";
    EXPECT_EQ(fresh->LinkClickFont(), fresh->Font());

    // Loaded without stored fonts, labels take copies too: bolding one touches nothing else.
    PropertyBag empty;
    label->ReadProperties(empty);
    auto* other = new ZqLabel(form.Client());
    other->ReadProperties(empty);
    label->Font()->SetBold(true);
    EXPECT_FALSE(form.Font()->Bold());
    EXPECT_FALSE(other->Font()->Bold());
    EXPECT_FALSE(fresh->Font()->Bold());
}

TEST_F(LabelTest, AlignmentPlacesTheTextInTheRectangle)
{
    label->SetCaption(QStringLiteral("Mg"));
    const QRect leftCentre = Render();
    EXPECT_LT(leftCentre.left(), 4);
    EXPECT_NEAR(leftCentre.center().y(), 20, 4) << "centred vertically by default";
    label->SetAlignmentH(1);
    EXPECT_GT(Render().right(), 195);
    label->SetAlignmentH(2);
    EXPECT_NEAR(Render().center().x(), 100, 4);
    label->SetAlignmentV(vaBottom);
    EXPECT_GT(Render().bottom(), 32);
    label->SetAlignmentV(vaTop);
    EXPECT_LT(Render().top(), 6);

    label->SetAlignmentV(vaBottom);
    label->SetWordWrap(true);
    EXPECT_LT(Render().top(), 6) << "with word wrap the text starts at the top";

    label->SetWordWrap(false);
    label->SetAlignmentH(0);
    label->resize(200, 60);
    label->SetCaption(QStringLiteral("Mg\r\nMg"));
    label->SetAlignmentV(vaTop);
    const int twoLines = Render().height();
    label->SetAlignmentV(vaCenter);
    EXPECT_GT(twoLines, Render().height() * 3 / 2) << "a line break makes two lines only at the top";
}

TEST_F(LabelTest, EllipsisKeepsLongTextInsideAndBackStyleShowsTheContainer)
{
    label->resize(150, 30);
    label->SetCaption(QStringLiteral("Reports\\Quarterly\\Summary for the board.pdf"));
    const QImage none = label->grab().toImage();
    label->SetEllipsis(etEnd);
    const QImage end = label->grab().toImage();
    label->SetEllipsis(etPath);
    const QImage path = label->grab().toImage();
    const QRect head(0, 0, 40, 30), tail(110, 0, 40, 30);
    EXPECT_EQ(none.copy(head), end.copy(head)) << "end ellipsis keeps the beginning";
    EXPECT_NE(none.copy(tail), end.copy(tail)) << "and replaces the end";
    EXPECT_NE(none.copy(head), path.copy(head)) << "path ellipsis gives up text before the file name";
    EXPECT_LE(Ink(end).right(), 149);
    EXPECT_LE(Ink(path).right(), 149);

    label->SetCaption(QString());
    QImage opaque = label->grab().toImage();
    EXPECT_EQ(opaque.pixel(5, 5) & 0xFFFFFF, 0xFFFFFFu);
    QPalette p = form.Client()->palette();
    p.setColor(QPalette::Window, QColor(10, 200, 10));
    form.Client()->setPalette(p);
    form.Client()->setAutoFillBackground(true);
    form.resize(300, 200);
    label->SetBackStyle(bsTransparent);
    const QImage behind = form.Client()->grab(label->geometry()).toImage();
    EXPECT_EQ(behind.pixel(5, 5) & 0xFFFFFF, qRgb(10, 200, 10) & 0xFFFFFFu) << "a transparent label shows what is behind it";
}

TEST_F(LabelTest, HyperlinkHoverPressAndClickSequences)
{
    label->SetStyle(lsHyperlink);
    label->SetLinkHoverForeColor(RGB(0, 0, 255));
    label->SetLinkClickForeColor(RGB(255, 0, 0));
    QSignalSpy clicks(label, qOverload<short>(&ZqLabel::Click));

    Move(QPointF(10, 10));
    EXPECT_TRUE(label->Hovering());
    EXPECT_EQ(label->SurfaceForeColor(), RGB(0, 0, 255));
    EXPECT_EQ(label->cursor().shape(), Qt::PointingHandCursor);
    QTest::mousePress(label, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_EQ(label->SurfaceForeColor(), RGB(255, 0, 0)) << "pressed while hovered";
    QTest::mouseRelease(label, Qt::LeftButton, {}, QPoint(10, 10));
    ASSERT_EQ(clicks.count(), 1);
    EXPECT_EQ(clicks[0][0].value<short>(), vbLeftButton);
    EXPECT_FALSE(label->Hovering()) << "a release ends the hover until the next move";

    Move(QPointF(10, 10));
    QTest::mousePress(label, Qt::RightButton, {}, QPoint(10, 10));
    Move(QPointF(250, 10), Qt::RightButton);  // the press grabs the mouse: the move outside still arrives
    EXPECT_EQ(label->SurfaceForeColor(), RGB(0, 0, 0)) << "outside: the normal colour";
    QTest::mouseRelease(label, Qt::RightButton, {}, QPoint(250, 10));
    EXPECT_EQ(clicks.count(), 1) << "pressed inside, released outside: no Click";

    Move(QPointF(10, 10));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(label, &leave);
    EXPECT_FALSE(label->Hovering()) << "leaving without a button ends the hover too";

    Move(QPointF(10, 10));
    label->SetStyle(lsNormal);
    EXPECT_EQ(label->SurfaceForeColor(), RGB(0, 0, 0)) << "back to normal at once";

    label->SetStyle(lsHyperlink);
    label->SetEnabled(false);
    const OleColor greyed = label->SurfaceForeColor();
    EXPECT_EQ(greyed, BlendColours(RGB(0, 0, 255), 25, SystemColorRGB(17)));
    Move(QPointF(10, 10));
    QTest::mouseClick(label, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_EQ(label->SurfaceForeColor(), greyed) << "a disabled link does not react";
    EXPECT_EQ(clicks.count(), 1);
}

TEST_F(LabelTest, AutoSizeInTwipsAtTwoDensities)
{
    label->SetBackStyle(bsTransparent);
    label->SetCaption(QStringLiteral("Automatic"));
    int widthAt96 = 0, widthAt144 = 0;
    for (double tpp : {15.0, 10.0}) {
        SetTwipsPerPixel(tpp, tpp);
        label->Move(0, 0, 3000, 450);
        const int heightBefore = label->Height();
        label->SetAutoSize(true);
        label->AutoSizeControl();
        (tpp == 15 ? widthAt96 : widthAt144) = label->Width();
        EXPECT_EQ(label->Height(), heightBefore) << "without word wrap only the width follows the text";
        EXPECT_EQ(label->Width() % static_cast<int>(tpp), 0) << "whole pixels";
        const int settled = label->Width();
        label->AutoSizeControl();
        EXPECT_EQ(label->Width(), settled) << "a second call with nothing changed does nothing";
        label->SetAutoSize(false);
    }
    EXPECT_EQ(widthAt144 * 15, widthAt96 * 10) << "the same pixels in the other ratio";

    SetTwipsPerPixel(15, 12);
    label->Move(0, 0, 1200, 300);
    label->SetWordWrap(true);
    label->SetCaption(QStringLiteral("A caption long enough to take several lines in a narrow label"));
    label->SetAutoSize(true);
    label->AutoSizeControl();
    EXPECT_EQ(label->Width(), 1200) << "with word wrap the width stays";
    EXPECT_GT(label->Height(), 300);
    EXPECT_EQ(label->Height() % 12, 0) << "the vertical ratio for heights";
}

TEST_F(LabelTest, CaptionsByLanguageIdentifierAndRefusedValues)
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("labels.lng"));
    QFile out(file);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    out.write("Key,English,German\nLitCustomer,Customer,Kunde\n");
    out.close();
    clsLanguage::Global().LanguageInitialise(1, file);

    label->SetCaptionLangId(QStringLiteral("LitCustomer"));
    EXPECT_EQ(label->Caption(), "Kunde");
    label->SetCaptionSuffix(tsColon);
    EXPECT_EQ(label->Caption(), "Kunde:") << "the suffix looks the caption up again";
    EXPECT_EQ(test::ErrorOf([&] { label->SetCaption(QStringLiteral("x")); }), ObjectErrorBase);
    EXPECT_EQ(label->Caption(), "Kunde:");
    label->SetCaptionLangId(QStringLiteral("LitNoSuchKey"));
    EXPECT_EQ(label->Caption(), ":") << "a missing identifier gives the empty default, with its suffix";

    ZqLabel* plain = static_cast<ZqLabel*>(FormFile::AddNewControl(form, QStringLiteral("ZqLabel"), QStringLiteral("lblPlain")));
    plain->SetCaption(QStringLiteral("Direct"));
    plain->SetCaptionSuffix(tsEllipsis);
    EXPECT_EQ(plain->Caption(), "Direct") << "a suffix does nothing to a caption set directly";

    EXPECT_EQ(test::ErrorOf([&] { plain->SetAlignmentH(3); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(test::ErrorOf([&] { plain->SetAlignmentV(-1); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(test::ErrorOf([&] { plain->SetEllipsis(9); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(test::ErrorOf([&] { plain->SetStyle(2); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(plain->AlignmentH(), 0) << "a refused value changes nothing";

    // Saved and loaded: the looked-up caption is stored, the identifier and suffix look it up again.
    const QByteArray saved = FormFile::ToJson(form);
    auto loaded = FormFile::FromJson(saved, QStringLiteral("labels"));
    auto* again = qobject_cast<ZqLabel*>(loaded->FindControl(QStringLiteral("lblTest")));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->Caption(), ":");
    EXPECT_EQ(FormFile::ToJson(*loaded), saved);
    clsLanguage::Global().LanguageInitialise(0, QString());
}

}  // namespace
}  // namespace korvex
