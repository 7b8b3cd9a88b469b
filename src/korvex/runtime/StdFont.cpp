// StdFont setters: check, compare, store, notify.
#include "korvex/runtime/StdFont.h"

#include "korvex/runtime/Error.h"

#include <cmath>

namespace korvex {

StdFont::StdFont(QObject* parent) : QObject(parent) {}

StdFont::StdFont(const QString& name, double size, QObject* parent) : QObject(parent)
{
    SetName(name);
    SetSize(size);
}

void StdFont::SetName(const QString& name)
{
    if (name.trimmed().isEmpty())
        Raise(vbErrInvalidPropertyValue, QStringLiteral("StdFont.Name"));
    if (name == mName)
        return;
    mName = name;
    emit FontChanged(QStringLiteral("Name"));
}

void StdFont::SetSize(double points)
{
    if (!std::isfinite(points) || points <= 0 || points > 2160)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("StdFont.Size"));
    // Sizes are kept to four decimals, as the host's currency-typed size is.
    points = std::nearbyint(points * 10000.0) / 10000.0;
    if (points == mSize)
        return;
    mSize = points;
    emit FontChanged(QStringLiteral("Size"));
}

void StdFont::SetBold(bool bold)
{
    SetWeight(bold ? BoldWeight : NormalWeight);
}

void StdFont::SetItalic(bool italic)
{
    if (italic == mItalic)
        return;
    mItalic = italic;
    emit FontChanged(QStringLiteral("Italic"));
}

void StdFont::SetUnderline(bool underline)
{
    if (underline == mUnderline)
        return;
    mUnderline = underline;
    emit FontChanged(QStringLiteral("Underline"));
}

void StdFont::SetStrikethrough(bool strikethrough)
{
    if (strikethrough == mStrikethrough)
        return;
    mStrikethrough = strikethrough;
    emit FontChanged(QStringLiteral("Strikethrough"));
}

void StdFont::SetWeight(short weight)
{
    if (weight < 0 || weight > 1000)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("StdFont.Weight"));
    if (weight == mWeight)
        return;
    const bool wasBold = Bold();
    mWeight = weight;
    emit FontChanged(QStringLiteral("Weight"));
    if (wasBold != Bold())
        emit FontChanged(QStringLiteral("Bold"));
}

void StdFont::SetCharset(short charset)
{
    if (charset == mCharset)
        return;
    mCharset = charset;
    emit FontChanged(QStringLiteral("Charset"));
}

void StdFont::CopyFrom(const StdFont& other)
{
    SetName(other.mName);
    SetSize(other.mSize);
    SetWeight(other.mWeight);
    SetItalic(other.mItalic);
    SetUnderline(other.mUnderline);
    SetStrikethrough(other.mStrikethrough);
    SetCharset(other.mCharset);
}

bool StdFont::SameAs(const StdFont& other) const noexcept
{
    return mName == other.mName && mSize == other.mSize && mWeight == other.mWeight && mItalic == other.mItalic &&
           mUnderline == other.mUnderline && mStrikethrough == other.mStrikethrough && mCharset == other.mCharset;
}

}  // namespace korvex
