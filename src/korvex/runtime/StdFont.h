// The font object controls and containers exchange: name, size and style flags, with a
// notification on every change so that a control can redraw when the host edits its font in
// place. Controls copy fonts property by property (CopyFrom) rather than share them. The
// conversion to and from QFont lives with the drawing code, since this layer has no Gui.
#pragma once

#include <QObject>
#include <QString>

namespace korvex {

class StdFont : public QObject {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Name")
    Q_PROPERTY(QString Name READ Name WRITE SetName)
    Q_PROPERTY(double Size READ Size WRITE SetSize)
    Q_PROPERTY(bool Bold READ Bold WRITE SetBold)
    Q_PROPERTY(bool Italic READ Italic WRITE SetItalic)
    Q_PROPERTY(bool Underline READ Underline WRITE SetUnderline)
    Q_PROPERTY(bool Strikethrough READ Strikethrough WRITE SetStrikethrough)
    Q_PROPERTY(short Weight READ Weight WRITE SetWeight)
    Q_PROPERTY(short Charset READ Charset WRITE SetCharset)

public:
    explicit StdFont(QObject* parent = nullptr);
    StdFont(const QString& name, double size, QObject* parent = nullptr);

    const QString& Name() const noexcept { return mName; }
    double Size() const noexcept { return mSize; }
    bool Bold() const noexcept { return mWeight >= BoldThreshold; }
    bool Italic() const noexcept { return mItalic; }
    bool Underline() const noexcept { return mUnderline; }
    bool Strikethrough() const noexcept { return mStrikethrough; }
    short Weight() const noexcept { return mWeight; }
    short Charset() const noexcept { return mCharset; }

    // Raise 380 for an empty name, a size that is not positive and finite, a weight outside
    // 0..1000.
    void SetName(const QString& name);
    void SetSize(double points);
    void SetBold(bool bold);
    void SetItalic(bool italic);
    void SetUnderline(bool underline);
    void SetStrikethrough(bool strikethrough);
    void SetWeight(short weight);
    void SetCharset(short charset);

    // Copies every attribute of `other`; one FontChanged per attribute that differed.
    void CopyFrom(const StdFont& other);
    bool SameAs(const StdFont& other) const noexcept;

    static constexpr short NormalWeight = 400;
    static constexpr short BoldWeight = 700;

signals:
    void FontChanged(const QString& PropertyName);

private:
    static constexpr short BoldThreshold = 550;

    QString mName = QStringLiteral("MS Sans Serif");
    double mSize = 8.25;
    bool mItalic = false;
    bool mUnderline = false;
    bool mStrikethrough = false;
    short mWeight = NormalWeight;
    short mCharset = 0;
};

}  // namespace korvex
