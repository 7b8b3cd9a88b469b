// The font of a control's own surface, held by reference as the host's font objects are: the
// object set is the object used, and an edit made to it in place reaches the control. A font
// read from a form file, or the copy of the container's font a new control starts with, is
// kept alive here for as long as the control.
#pragma once

#include "korvex/runtime/StdFont.h"
#include "korvex/runtime/Variant.h"

#include <QFont>
#include <QPointer>

#include <functional>
#include <memory>
#include <vector>

namespace korvex {

class SurfaceFont {
public:
    // `changed` runs after the font is replaced and after every edit of the present font.
    explicit SurfaceFont(QObject* owner, std::function<void()> changed = {});

    StdFont* Get() const;
    QObject* Object() const { return Get(); }
    // Takes the object as the font; raises 13 for anything that is not a font. `where` names
    // the property in the error.
    void Set(QObject* font, const QString& where);
    // Takes a loaded or defaulted font and keeps it alive.
    void Load(const Variant& font, const QString& where);
    QFont ToQFont() const;

private:
    QObject* mOwner;
    std::function<void()> mChanged;
    QPointer<StdFont> mFont;
    std::vector<std::shared_ptr<QObject>> mKept;
    StdFont mFallback;
    QMetaObject::Connection mListening;
};

}  // namespace korvex
