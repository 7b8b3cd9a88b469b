// SurfaceFont: one font object by reference, with its change notification passed on.
#include "korvex/controls/display/SurfaceFont.h"

#include "korvex/platform/desktop/FontConversion.h"
#include "korvex/runtime/Error.h"

namespace korvex {

SurfaceFont::SurfaceFont(QObject* owner, std::function<void()> changed) : mOwner(owner), mChanged(std::move(changed)) {}

StdFont* SurfaceFont::Get() const
{
    return mFont ? mFont.data() : const_cast<StdFont*>(&mFallback);
}

void SurfaceFont::Set(QObject* font, const QString& where)
{
    auto* f = qobject_cast<StdFont*>(font);
    if (!f)
        Raise(vbErrTypeMismatch, where);
    QObject::disconnect(mListening);
    mFont = f;
    mListening = QObject::connect(f, &StdFont::FontChanged, mOwner, [this] {
        if (mChanged)
            mChanged();
    });
    if (mChanged)
        mChanged();
}

void SurfaceFont::Load(const Variant& font, const QString& where)
{
    if (auto shared = font.SharedObject())
        mKept.push_back(shared);
    Set(font.Object(), where);
}

QFont SurfaceFont::ToQFont() const
{
    return korvex::ToQFont(*Get());
}

}  // namespace korvex
