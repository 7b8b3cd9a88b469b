// ZqFormHeader: the parts are built as the design has them and laid out in twips on every
// resize; the right-hand parts are placed from the right edge leftwards.
#include "korvex/forms/ZqFormHeader.h"

#include "korvex/controls/display/ZqLine.h"
#include "korvex/controls/display/ZqSimpleButton.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Image.h"
#include "korvex/platform/host/Label.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Twips.h"

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqFormHeader);

namespace {

constexpr int kNewHeight = 855;
constexpr int kSeparatorHeight = 15;
constexpr int kSpacerHeight = 120;
constexpr OleColor kSeparatorColour = 0xD1B499;
constexpr OleColor kInactiveCaption = 0x80000003;

// The help glyph kept with the design: a blue disc with a white question mark.
const char* const kHelpIcon[] = {
    "16 16 4 1",
    ". c None",
    "o c #1F4E8C",
    "b c #2F6FC0",
    "w c #FFFFFF",
    ".......oo.......",
    "....ooobbooo....",
    "...obbbbbbbbo...",
    "..obbbwwwwbbbo..",
    ".obbbwwbbwwbbbo.",
    ".obbbbbbbwwbbbo.",
    ".obbbbbbwwbbbbo.",
    "obbbbbbwwbbbbbbo",
    "obbbbbbwwbbbbbbo",
    ".obbbbbbbbbbbbo.",
    ".obbbbbwwbbbbbo.",
    ".obbbbbwwbbbbbo.",
    "..obbbbbbbbbbo..",
    "...obbbbbbbbo...",
    "....ooobbooo....",
    ".......oo.......",
};

Variant DesignFont(const ZqFormHeader&)
{
    auto font = std::make_shared<StdFont>(QStringLiteral("Segoe UI Semibold"), 12);
    return Variant(std::static_pointer_cast<QObject>(font));
}

// The text as a label shows it: an "&" is doubled so that it is no access-key marker.
QString Shown(const QString& caption)
{
    QString shown = caption;
    shown.replace(QLatin1Char('&'), QStringLiteral("&&"));
    return Trim(shown);
}

ZqLine* NewLine(QWidget* parent, const char* name, short index, int style, OleColor dark, OleColor light, int heightTwips)
{
    auto* line = new ZqLine(parent);
    line->SetName(QString::fromLatin1(name));
    line->SetIndex(index);
    line->SetLineStyle(style);
    line->SetColourDarkLine(dark);
    line->SetColourLightLine(light);
    line->SetHeight(heightTwips);
    return line;
}

}  // namespace

ZqFormHeader::ZqFormHeader(QWidget* parent)
    : UserControl(parent), mFont(this, [this] { ApplyFontToCaptions(); }),
      zqlnSpacer(NewLine(this, "zqlnSpacer", -1, LS_Horizontal, vbButtonFace, vbButtonFace, kSpacerHeight)),
      imgHelp(new Image(this)), zqsbClose(new ZqSimpleButton(this))
{
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    for (short i = 0; i < 2; ++i) {
        auto* label = new Label(this);
        label->SetName(QStringLiteral("lblHeader"));
        label->SetIndex(i);
        label->SetBackStyle(0);
        label->SetAlignment(i == 0 ? 0 : 1);
        label->SetAutoSize(true);
        label->SetCaption(i == 0 ? QStringLiteral("HeaderLeft") : QStringLiteral("HeaderRight"));
        lblHeader[i] = label;
    }
    zqlnSep[0] = NewLine(this, "zqlnSep", 0, LS_HorizontalFlat, kSeparatorColour, vbButtonFace, kSeparatorHeight);
    zqlnSep[1] = NewLine(this, "zqlnSep", 1, LS_HorizontalFlat, kInactiveCaption, 0xFFFFFF, kSeparatorHeight);
    imgHelp->SetName(QStringLiteral("imgHelp"));
    imgHelp->SetPixmap(QPixmap(kHelpIcon));
    imgHelp->setCursor(Qt::PointingHandCursor);
    zqsbClose->SetName(QStringLiteral("zqsbClose"));
    zqsbClose->SetButtonStyle(sbsCloseButton);
    zqsbClose->Move(0, 0, 240, 240);
    // The buttons sit centred in the band above the separator and the spacer.
    const int band = kNewHeight - kSpacerHeight - kSeparatorHeight;
    zqsbClose->SetTop((band - zqsbClose->Height()) / 2);
    imgHelp->SetTop((band - imgHelp->Height()) / 2);
    connect(imgHelp, &Control::Click, this, GuardedSlot(this, [this] { emit HelpClicked(); }));
    connect(zqsbClose, &Control::Click, this, GuardedSlot(this, [this] { emit CloseClicked(); }));
    mIncludesSpacer = true;  // the design's state: reading it again changes no height
    LoadDeclaredDefaults();
    SetHeight(kNewHeight);
}

// Properties ------------------------------------------------------------------------------------

void ZqFormHeader::SetCaptionLeft(const QString& caption)
{
    mCaptionLeft = caption;
    lblHeader[0]->SetCaption(Shown(caption));
    Resize();
    PropertyChanged("CaptionLeft");
}

void ZqFormHeader::SetCaptionRight(const QString& caption)
{
    mCaptionRight = caption;
    lblHeader[1]->SetCaption(Shown(caption));
    Resize();
    PropertyChanged("CaptionRight");
}

void ZqFormHeader::SetCaptionColor(OleColor color)
{
    mCaptionColor = color;
    for (Label* label : lblHeader)
        label->SetForeColor(color);
    PropertyChanged("CaptionColor");
}

void ZqFormHeader::SetFont(QObject* font)
{
    mFont.Set(font, QStringLiteral("ZqFormHeader.Font"));
    PropertyChanged("Font");
}

void ZqFormHeader::LoadFont(const Variant& font)
{
    mFont.Load(font, QStringLiteral("ZqFormHeader.Font"));
}

void ZqFormHeader::ApplyFontToCaptions()
{
    setFont(mFont.ToQFont());
    for (Label* label : lblHeader) {
        label->SetFontObject(mFont.Get());
        label->SetCaption(label->Caption());  // sized to the text in the new font
    }
    Resize();
}

void ZqFormHeader::SetIncludesSpacer(bool includes)
{
    if (includes != mIncludesSpacer) {
        mIncludesSpacer = includes;
        const int spacer = zqlnSpacer->Height();
        SetHeight(std::max(0, Height() + (includes ? spacer : -spacer)));
    }
    zqlnSpacer->SetVisible(includes);
    Resize();
    PropertyChanged("IncludesSpacer");
}

bool ZqFormHeader::HelpButton() const
{
    return imgHelp->Visible();
}

void ZqFormHeader::SetHelpButton(bool shown)
{
    imgHelp->SetVisible(shown);
    Resize();
    PropertyChanged("HelpButton");
}

bool ZqFormHeader::CloseButton() const
{
    return zqsbClose->Visible();
}

void ZqFormHeader::SetCloseButton(bool shown)
{
    zqsbClose->SetVisible(shown);
    Resize();
    PropertyChanged("CloseButton");
}

const PropertyList& ZqFormHeader::PersistedProperties() const
{
    static const PropertyList list =
        Declare<ZqFormHeader>()
            .Stored("Font", &ZqFormHeader::FontValue, &ZqFormHeader::LoadFont, DesignFont)
            .Property("CaptionLeft", &ZqFormHeader::CaptionLeft, &ZqFormHeader::SetCaptionLeft, QStringLiteral("HeaderLeft"))
            .Property("CaptionRight", &ZqFormHeader::CaptionRight, &ZqFormHeader::SetCaptionRight, QStringLiteral("HeaderRight"))
            .Property("CaptionColor", &ZqFormHeader::CaptionColor, &ZqFormHeader::SetCaptionColor, vbButtonText)
            .Property("IncludesSpacer", &ZqFormHeader::IncludesSpacer, &ZqFormHeader::SetIncludesSpacer, true)
            .Property("HelpButton", &ZqFormHeader::HelpButton, &ZqFormHeader::SetHelpButton, false)
            .Property("CloseButton", &ZqFormHeader::CloseButton, &ZqFormHeader::SetCloseButton, false);
    return list;
}

void ZqFormHeader::InitProperties()
{
    // A new header: spacer flag set without the height change, docked along the top.
    mIncludesSpacer = true;
    UserControl::InitProperties();
    SetHeight(kNewHeight);
    SetAlign(vbAlignTop);
}

// Layout ----------------------------------------------------------------------------------------

void ZqFormHeader::Resize()
{
    const int w = ScaleWidth();
    const int h = ScaleHeight();
    const double pxX = TwipsPerPixelX();
    const double pxY = TwipsPerPixelY();
    int reserve = 0;
    if (mIncludesSpacer) {
        zqlnSpacer->Move(0, h - zqlnSpacer->Height(), w);
        reserve = RoundHalfEven(zqlnSpacer->Height() + pxY);
    } else {
        reserve = zqlnSep[0]->Height();
    }
    Label* left = lblHeader[0];
    left->Move(RoundHalfEven(8 * pxX), RoundHalfEven((h - reserve - left->Height()) / 2.0));
    zqlnSep[0]->Move(0, h - reserve, w);
    zqlnSep[1]->Move(0, 0, w);
    double right = w;
    if (CloseButton()) {
        zqsbClose->SetLeft(RoundHalfEven(right - (zqsbClose->Width() + pxX)));
        right = zqsbClose->Left() - 4 * pxX;
    }
    if (HelpButton()) {
        imgHelp->SetLeft(RoundHalfEven(right - (imgHelp->Width() + pxX)));
        right = imgHelp->Left() - 4 * pxX;
    }
    Label* rightLabel = lblHeader[1];
    rightLabel->Move(RoundHalfEven(right - rightLabel->Width() - 8 * pxX), left->Top());
}

}  // namespace korvex
