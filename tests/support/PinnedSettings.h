// Pins the machine-dependent settings a test relies on (regional settings, twips per pixel)
// and puts the previous ones back when it ends.
#pragma once

#include "korvex/runtime/RegionalSettings.h"
#include "korvex/runtime/Twips.h"

namespace korvex::test {

class PinnedSettings {
public:
    explicit PinnedSettings(const RegionalSettings& settings = RegionalSettings::EnglishUS(),
                            double twipsPerPixelX = 15, double twipsPerPixelY = 15)
        : mSettings(RegionalSettings::Current()), mTwipsX(TwipsPerPixelX()), mTwipsY(TwipsPerPixelY())
    {
        RegionalSettings::SetCurrent(settings);
        SetTwipsPerPixel(twipsPerPixelX, twipsPerPixelY);
    }
    ~PinnedSettings()
    {
        RegionalSettings::SetCurrent(mSettings);
        SetTwipsPerPixel(mTwipsX, mTwipsY);
    }
    PinnedSettings(const PinnedSettings&) = delete;
    PinnedSettings& operator=(const PinnedSettings&) = delete;

private:
    RegionalSettings mSettings;
    double mTwipsX;
    double mTwipsY;
};

}  // namespace korvex::test
