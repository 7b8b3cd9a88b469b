// A progress bar with a caption written across it: the filled part shows the caption in the
// highlight colours, the rest in the button colours, so the text stays readable where the bar
// passes under it. A value step redraws only the strip between the old and the new end of the
// bar; the picture is kept in the control's own surface, from which Qt's paints are served.
#pragma once

#include "korvex/controls/display/SurfaceFont.h"
#include "korvex/platform/host/UserControl.h"

#include <QPixmap>

namespace korvex {

class ZqProgress : public UserControl {
    Q_OBJECT
    Q_PROPERTY(int Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(uint ButtonFace READ ButtonFace WRITE SetButtonFace)
    Q_PROPERTY(uint ButtonText READ ButtonText WRITE SetButtonText)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFont)
    Q_PROPERTY(uint HighlightBackground READ HighlightBackground WRITE SetHighlightBackground)
    Q_PROPERTY(uint HighlightText READ HighlightText WRITE SetHighlightText)
    Q_PROPERTY(int Max READ Max WRITE SetMax)
    Q_PROPERTY(int Value READ Value WRITE SetValue)

public:
    explicit ZqProgress(QWidget* parent = nullptr);

    int Alignment() const noexcept { return mAlignment; }
    void SetAlignment(int alignment);
    const QString& Caption() const noexcept { return mCaption; }
    void SetCaption(const QString& caption);
    OleColor ButtonFace() const noexcept { return mButtonFace; }
    void SetButtonFace(OleColor color);
    OleColor ButtonText() const noexcept { return mButtonText; }
    void SetButtonText(OleColor color);
    StdFont* Font() const { return mFont.Get(); }
    QObject* FontObject() const { return mFont.Get(); }
    Variant FontValue() const { return Variant(FontObject()); }
    void SetFont(QObject* font);
    OleColor HighlightBackground() const noexcept { return mHighlightBackground; }
    void SetHighlightBackground(OleColor color);
    OleColor HighlightText() const noexcept { return mHighlightText; }
    void SetHighlightText(OleColor color);
    int Max() const noexcept { return mMax; }
    void SetMax(int max);
    int Value() const noexcept { return mValue; }
    // Redraws only the strip the bar's end moved over.
    void SetValue(int value);

    // Pixels drawn into the surface since the control was made, and the strips of the last
    // drawing: what a value step costs.
    qint64 PixelsDrawn() const noexcept { return mPixelsDrawn; }
    const QList<QRect>& LastStrips() const noexcept { return mLastStrips; }

    QSize sizeHint() const override { return {200, 20}; }
    QSize minimumSizeHint() const override { return {10, 6}; }

protected:
    const PropertyList& PersistedProperties() const override;
    void Paint(QPainter& painter) override;
    void Resize() override;
    bool event(QEvent* event) override;

private:
    // Draws onto the surface while the control is shown; errors leave the picture as it was.
    void Draw(bool incremental);
    // The drawing itself; returns the area drawn.
    QRegion Render(bool incremental);
    void Strip(QPainter& painter, int from, int to, OleColor back, OleColor text);
    void DrawAndNotify(const char* name, bool incremental = false);

    int mAlignment = 0;
    QString mCaption;
    OleColor mButtonFace = vbButtonFace;
    OleColor mButtonText = vbButtonText;
    OleColor mHighlightBackground = vbHighlight;
    OleColor mHighlightText = vbHighlightText;
    int mMax = 100;
    int mValue = 0;
    SurfaceFont mFont;

    QPixmap mSurface;
    bool mSurfaceValid = false;
    int mCaptionX = 0;
    int mCaptionY = 0;
    int mLastBarEnd = 0;
    bool mShown = false;
    qint64 mPixelsDrawn = 0;
    QList<QRect> mLastStrips;
};

}  // namespace korvex
