// The library's label: one caption drawn into its own surface with horizontal and vertical
// alignment, word wrap, end or path ellipsis, automatic sizing to the text, a caption looked
// up by language identifier, and a hyperlink style that changes font and colour while the
// pointer is over it or pressed and raises Click with the button.
#pragma once

#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/platform/host/UserControl.h"

#include <QPointer>

#include <memory>
#include <vector>

namespace korvex {

enum ZqLabelStyles : int { lsNormal = 0, lsHyperlink = 1 };
enum ZqLabelEllipsisTypes : int { etNone = 0, etEnd = 1, etPath = 2 };

class ZqLabel : public UserControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Caption")
    Q_PROPERTY(bool Enabled READ Enabled WRITE SetEnabled)
    Q_PROPERTY(int AlignmentH READ AlignmentH WRITE SetAlignmentH)
    Q_PROPERTY(int AlignmentV READ AlignmentV WRITE SetAlignmentV)
    Q_PROPERTY(bool AutoSize READ AutoSize WRITE SetAutoSize)
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(int BackStyle READ BackStyle WRITE SetBackStyle)
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(QString CaptionLangId READ CaptionLangId WRITE SetCaptionLangId)
    Q_PROPERTY(int CaptionSuffix READ CaptionSuffix WRITE SetCaptionSuffix)
    Q_PROPERTY(int Ellipsis READ Ellipsis WRITE SetEllipsis)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFont)
    Q_PROPERTY(uint ForeColor READ ForeColor WRITE SetForeColor)
    Q_PROPERTY(int Style READ Style WRITE SetStyle)
    Q_PROPERTY(QObject* LinkClickFont READ LinkClickFontObject WRITE SetLinkClickFont)
    Q_PROPERTY(uint LinkClickForeColor READ LinkClickForeColor WRITE SetLinkClickForeColor)
    Q_PROPERTY(QObject* LinkHoverFont READ LinkHoverFontObject WRITE SetLinkHoverFont)
    Q_PROPERTY(uint LinkHoverForeColor READ LinkHoverForeColor WRITE SetLinkHoverForeColor)
    Q_PROPERTY(bool WordWrap READ WordWrap WRITE SetWordWrap)

public:
    explicit ZqLabel(QWidget* parent = nullptr);

    bool Enabled() const override { return mEnabled; }
    void SetEnabled(bool enabled) override;
    int AlignmentH() const noexcept { return mAlignmentH; }
    void SetAlignmentH(int alignment);
    int AlignmentV() const noexcept { return mAlignmentV; }
    void SetAlignmentV(int alignment);
    bool AutoSize() const noexcept { return mAutoSize; }
    void SetAutoSize(bool autoSize);
    OleColor BackColor() const noexcept { return mBackColor; }
    void SetBackColor(OleColor color);
    int BackStyle() const noexcept { return mBackStyle; }
    void SetBackStyle(int style);
    const QString& Caption() const noexcept { return mCaption; }
    // Raises ObjectErrorBase while CaptionLangId is set.
    void SetCaption(const QString& caption);
    const QString& CaptionLangId() const noexcept { return mCaptionLangId; }
    void SetCaptionLangId(const QString& id);
    int CaptionSuffix() const noexcept { return mCaptionSuffix; }
    void SetCaptionSuffix(int suffix);
    int Ellipsis() const noexcept { return mEllipsis; }
    void SetEllipsis(int ellipsis);
    StdFont* Font() const;
    QObject* FontObject() const { return Font(); }
    // Takes the font object as the label's font and as both link fonts.
    void SetFont(QObject* font);
    OleColor ForeColor() const noexcept { return mForeColor; }
    void SetForeColor(OleColor color);
    int Style() const noexcept { return mStyle; }
    void SetStyle(int style);
    StdFont* LinkClickFont() const;
    QObject* LinkClickFontObject() const { return LinkClickFont(); }
    void SetLinkClickFont(QObject* font);
    OleColor LinkClickForeColor() const noexcept { return mLinkClickForeColor; }
    void SetLinkClickForeColor(OleColor color);
    StdFont* LinkHoverFont() const;
    QObject* LinkHoverFontObject() const { return LinkHoverFont(); }
    void SetLinkHoverFont(QObject* font);
    OleColor LinkHoverForeColor() const noexcept { return mLinkHoverForeColor; }
    void SetLinkHoverForeColor(OleColor color);
    bool WordWrap() const noexcept { return mWordWrap; }
    void SetWordWrap(bool wrap);

    // Automatic sizing only, nothing drawn.
    Q_INVOKABLE void AutoSizeControl();
    // Automatic sizing, then the caption drawn.
    Q_INVOKABLE void Paint();

    // What the surface shows now: the font and colour chosen by the link appearance.
    const StdFont* SurfaceFont() const { return mSurfaceFont; }
    OleColor SurfaceForeColor() const noexcept { return mSurfaceForeColor; }
    bool Hovering() const noexcept { return mHovering; }

    void InitProperties() override;
    void ReadProperties(PropertyBag& bag) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void Click(short Button);
    void MouseHover();
    void MouseLeave();

protected:
    const PropertyList& PersistedProperties() const override;
    void Paint(QPainter& painter) override;
    void Resize() override;
    bool event(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    // The drawing procedure: automatic sizing when due; drawing unless sizeOnly. Returns false
    // when the size changed (nothing is drawn in that pass).
    bool Draw(QPainter* painter, bool sizeOnly);
    int TextFlags() const;
    QString ShownText(const QFontMetrics& metrics, const QRect& client) const;
    void Refresh();
    void Notify(const char* property);
    void SetState(bool hovering, bool pressed);
    void ApplyLinkAppearance();
    void MoveTo(const QPointF& position);
    void ScheduleContainerRepaint();
    StdFont* Adopt(QObject* font);
    StdFont* KeepFont(const Variant& font);
    void FinishInitialising();
    void ListenTo(StdFont* font);

    // The persisted settings take their defaults from the declaration when the label is built.
    bool mEnabled{};
    int mAlignmentH{};
    int mAlignmentV{};
    bool mAutoSize{};
    OleColor mBackColor{};
    int mBackStyle{};
    QString mCaption;
    QString mCaptionLangId;
    int mCaptionSuffix{};
    int mEllipsis{};
    OleColor mForeColor{};
    int mStyle{};
    OleColor mLinkClickForeColor{};
    OleColor mLinkHoverForeColor{};
    bool mWordWrap{};

    // Font references: the label shares font objects with whoever set them; a font read from a
    // form file, or the copy of the ambient font it starts with, is kept alive here.
    QPointer<StdFont> mFont;
    QPointer<StdFont> mLinkClickFont;
    QPointer<StdFont> mLinkHoverFont;
    std::vector<std::shared_ptr<QObject>> mKeptFonts;
    StdFont mFallbackFont;
    QPointer<StdFont> mListened;

    QPointer<StdFont> mSurfaceFont;
    OleColor mSurfaceForeColor = vbButtonText;

    bool mHovering = false;
    bool mPressed = false;
    bool mSizeValid = false;
    bool mInitialised = false;
    bool mShown = false;
};

}  // namespace korvex
