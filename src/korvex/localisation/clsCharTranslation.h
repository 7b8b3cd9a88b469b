// clsCharTranslation: converts text between the Windows code page the client works in and the
// Roman-9 character set kept in the database, towards Roman-9 when saving and back when
// reading. The binding engine and the list controls use the current instance.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QObject>
#include <QString>

#include <array>
#include <cstdint>
#include <memory>

namespace korvex {

enum CharTranslationModes : int {
    ctmNoTranslation = 0,
    ctmANSItoRoman9 = 1,
};

enum HostTypes : int {
    HOST_MPEIX = 0,
    HOST_HPUX = 1,
};

class clsCharTranslation : public QObject {
    Q_OBJECT

public:
    // A new instance (mode ctmANSItoRoman9); it becomes this thread's current one.
    static std::shared_ptr<clsCharTranslation> Create();
    // The instance the host reaches through the class name without creating one (one per
    // thread, made on first use).
    static clsCharTranslation& Global();
    // The last instance created on this thread; nullptr when there is none.
    static const std::shared_ptr<clsCharTranslation>& Current();

    Q_INVOKABLE void CharTranslateSetMode(int ctsMode) { mMode = ctsMode; }
    // Empty text stays empty; ctmNoTranslation returns the text, an unknown mode "".
    Q_INVOKABLE QString CharTranslateStr(const QString& Data, bool SavingToDB = false) const;
    // Strings are translated unless blank; Null, Empty and every other type pass unchanged.
    Q_INVOKABLE korvex::Variant CharTranslateVar(const korvex::Variant& Data, bool SavingToDB = false) const;

private:
    clsCharTranslation();

    int mMode = ctmANSItoRoman9;
    // Byte for byte over the whole code page; bytes outside the translated ranges map to
    // themselves.
    std::array<std::uint8_t, 256> mSaving{};
    std::array<std::uint8_t, 256> mReading{};
};

}  // namespace korvex
